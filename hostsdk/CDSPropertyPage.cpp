#include "hostsdk/CDSPropertyPage.h"

#include <cstdio>
#include <cstring>

CDSPropertyPage::CDSPropertyPage(uint32_t dialog, uint32_t title) : dialogId(dialog), titleId(title) {}

CDSPropertyPage::~CDSPropertyPage() { Close(); }

namespace {

// A value as its widget shows it: a list's selection, a box's check, or the
// value itself.
void showOnWidget(HWND widget, double number, const VARIANT& value)
{
    if (widget->className == "combobox")
        widget->selection = static_cast<int32_t>(number);
    else if (widget->className == "checkbox")
        widget->checkState = number != 0.0 ? BST_CHECKED : BST_UNCHECKED;
    else
        widget->value = value;
}

}  // namespace

HRESULT CDSPropertyPage::Open(IUnknown* inspected, const DSDialogTemplate* description)
{
    if (!inspected || !description)
        return E_POINTER;
    Close();
    inspected->AddRef();
    object = inspected;
    properties = std::make_unique<PropertiesOperator>(inspected);
    SetOperator(properties.get());
    dialog = description;
    for (int i = 0; i < description->controlCount; ++i) {
        const DSDialogControl& c = description->controls[i];
        HWND widget = AddControl(c.id);
        widget->className = c.className;
        widget->text = c.text ? c.text : "";
        widget->x = c.x;
        widget->y = c.y;
        widget->width = c.width;
        widget->height = c.height;
    }
    if (CDSPPGControlMap* map = GetControlMap())
        for (const CDSPPGControlMapEntry* e = map->Entries(); e && e->property; ++e)
            if (e->control != DS_PPG_NONE)
                Bind(*e->property, e->control);
    const HRESULT status = OnInitPage();
    visible = true;
    UpdateUI(nullptr, object, nullptr, 0);
    return status;
}

HRESULT CDSPropertyPage::OpenOn(IUnknown*) { return E_NOTIMPL; }

void CDSPropertyPage::Close()
{
    SetOperator(nullptr);
    properties.reset();
    if (object)
        object->Release();
    object = nullptr;
    visible = false;
}

HRESULT CDSPropertyPage::Show(bool show)
{
    visible = show;
    return S_OK;
}

HRESULT CDSPropertyPage::Help(const wchar_t*) { return S_OK; }
HRESULT CDSPropertyPage::OnInitPage() { return S_OK; }

HRESULT CDSPropertyPage::UpdateUI(const GUID* property, void*, void*, uint32_t)
{
    CDSPPGControlMap* map = GetControlMap();
    if (!map)
        return S_OK;
    for (const CDSPPGControlMapEntry* e = map->Entries(); e && e->property; ++e) {
        if (e->propertyType == VT_EMPTY || (property && !(*property == *e->property)))
            continue;
        VARIANT value;
        VariantInit(&value);
        value.vt = VT_R8;
        if (FAILED(GetAnimatedProperty(*e->property, &value, nullptr, -1.0)))
            continue;
        const double number = value.dblVal;
        if (e->field)
            WriteTypedNumber(e->field(this), e->fieldType, number);
        HWND widget = e->control != DS_PPG_NONE ? GetHwndControl(e->control) : nullptr;
        if (!widget)
            continue;
        showOnWidget(widget, number, value);
    }
    return S_OK;
}

HRESULT CDSPropertyPage::TransportNotify(int32_t, double, CDSTime time)
{
    if (properties)
        properties->SetCurrentTime(time.seconds);
    return S_OK;
}

HRESULT CDSPropertyPage::UserChange(uint32_t id, double number)
{
    CDSPPGControlMap* map = GetControlMap();
    const CDSPPGControlMapEntry* e = map ? map->ForControl(id) : nullptr;
    HWND widget = GetHwndControl(id);
    if (!e || !widget || e->propertyType == VT_EMPTY)
        return E_INVALIDARG;
    VARIANT value;
    VariantInit(&value);
    value.vt = e->propertyType;
    VariantFromNumber(&value, number);
    showOnWidget(widget, number, value);
    const HRESULT status = SetAnimatedProperty(*e->property, &value, nullptr, UNDO_STYLE, -1.0);
    if (FAILED(status))
        return status;
    if (e->handler)
        e->handler(this);
    return S_OK;
}

HRESULT CDSPropertyPage::UserClick(uint32_t id)
{
    CDSPPGControlMap* map = GetControlMap();
    const CDSPPGControlMapEntry* e = map ? map->ForControl(id) : nullptr;
    if (!e || !e->handler)
        return E_INVALIDARG;
    e->handler(this);
    return S_OK;
}

HRESULT CDSPropertyPage::SetBoundVariableFromProperty(const GUID& guid, void*)
{
    CDSPPGControlMap* map = GetControlMap();
    const CDSPPGControlMapEntry* e = map ? map->ForProperty(guid) : nullptr;
    if (!e || !e->field)
        return E_INVALIDARG;
    VARIANT value;
    VariantInit(&value);
    value.vt = e->fieldType;
    const HRESULT status = GetPlainProperty(guid, &value, object);
    if (FAILED(status))
        return status;
    // 64-bit handles travel whole, not through a double.
    if (e->fieldType == VT_UI8 && value.vt == VT_UI8)
        *static_cast<uint64_t*>(e->field(this)) = value.ullVal;
    else
        WriteTypedNumber(e->field(this), e->fieldType, VariantNumber(value));
    return S_OK;
}

HRESULT CDSPropertyPage::GetPlainProperty(const GUID& guid, VARIANT* value, void*)
{
    if (!properties)
        return E_UNEXPECTED;
    return properties->GetPlainProperty(guid, value);
}

CDSTime CDSPropertyPage::ConvertToLocalTime(CDSTime time, void*) const { return time; }

std::string CDSPropertyPage::DescribeState() const
{
    std::string text;
    char line[512];
    for (int i = 0; dialog && i < dialog->controlCount; ++i) {
        const PageWidget* w = GetHwndControl(dialog->controls[i].id);
        if (!w || w->className == "static")
            continue;
        // A value control is named by the static text that follows it in the
        // dialog; a check box or button by its own text.
        const PageWidget* next = i + 1 < dialog->controlCount ? GetHwndControl(dialog->controls[i + 1].id) : nullptr;
        const bool labelled = next && next->className == "static" && (w->className == "number" || w->className == "combobox");
        const std::string& label = labelled ? next->text : w->text;
        std::snprintf(line, sizeof line, "%-18s %-9s %s%s", label.c_str(), w->className.c_str(),
                      w->shown ? "shown" : "hidden", w->enabled ? "" : " disabled");
        text += line;
        if (w->className == "number") {
            std::snprintf(line, sizeof line, " value=%g range=%g..%g", VariantNumber(w->value), w->rangeLow,
                          w->rangeHigh);
            text += line;
        } else if (w->className == "checkbox") {
            text += w->checkState == BST_CHECKED ? " checked" : " clear";
        } else if (w->className == "combobox") {
            const bool chosen = w->selection >= 0 && static_cast<size_t>(w->selection) < w->listEntries.size();
            text += " selection=" + (chosen ? w->listEntries[static_cast<size_t>(w->selection)] : std::string("none")) +
                    " entries=";
            for (size_t e = 0; e < w->listEntries.size(); ++e)
                text += (e ? "|" : "") + w->listEntries[e];
        }
        std::snprintf(line, sizeof line, " (control %u)\n", w->id);
        text += line;
    }
    return text;
}
