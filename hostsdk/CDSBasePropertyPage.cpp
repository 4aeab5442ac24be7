#include "hostsdk/CDSBasePropertyPage.h"

#include <cstring>

namespace {

bool sameGuid(const GUID& a, const GUID& b) { return std::memcmp(&a, &b, sizeof(GUID)) == 0; }

}  // namespace

HWND CDSBasePropertyPage::AddControl(uint32_t id)
{
    auto& slot = widgets[id];
    if (!slot) {
        slot = std::make_unique<PageWidget>();
        slot->id = id;
    }
    return slot.get();
}

HWND CDSBasePropertyPage::GetHwndControl(uint32_t id) const
{
    auto it = widgets.find(id);
    return it == widgets.end() ? nullptr : it->second.get();
}

VARIANT* CDSBasePropertyPage::find(const GUID& guid)
{
    for (auto& [key, value] : properties)
        if (sameGuid(key, guid))
            return &value;
    return nullptr;
}

void CDSBasePropertyPage::SetProperty(const GUID& guid, const VARIANT& value)
{
    if (VARIANT* held = find(guid))
        *held = value;
    else
        properties.emplace_back(guid, value);
}

void CDSBasePropertyPage::Bind(const GUID& guid, uint32_t id) { bindings.emplace_back(guid, id); }

HRESULT CDSBasePropertyPage::GetAnimatedProperty(const GUID& guid, VARIANT* value, void* params, double time)
{
    if (inspected)
        return inspected->GetAnimatedProperty(guid, value, params, time);
    const VARIANT* held = find(guid);
    if (!value || !held)
        return E_INVALIDARG;
    if (value->vt != VT_I4)
        value->vt = VT_R8;
    VariantFromNumber(value, VariantNumber(*held));
    return S_OK;
}

HRESULT CDSBasePropertyPage::SetAnimatedProperty(const GUID& guid, VARIANT* value, void* params, int undoStyle,
                                                 double time)
{
    if (!value)
        return E_POINTER;
    if (inspected) {
        const HRESULT status = inspected->SetAnimatedProperty(guid, value, params, undoStyle, time);
        if (SUCCEEDED(status))
            writes.push_back({guid, *value, undoStyle, time});
        return status;
    }
    SetProperty(guid, *value);
    writes.push_back({guid, *value, undoStyle, time});
    return S_OK;
}

HRESULT CDSBasePropertyPage::SetControlValue(uint32_t id, VARIANT* value)
{
    HWND widget = GetHwndControl(id);
    if (!widget || !value)
        return E_INVALIDARG;
    widget->value = *value;
    return S_OK;
}

HRESULT CDSBasePropertyPage::SetControlFromProperty(const GUID& guid, void* params)
{
    VARIANT held;
    VariantInit(&held);
    held.vt = VT_R8;
    if (FAILED(GetAnimatedProperty(guid, &held, params, -1.0)))
        return E_INVALIDARG;
    for (const auto& [key, id] : bindings)
        if (sameGuid(key, guid))
            if (HWND widget = GetHwndControl(id))
                widget->value = held;
    return S_OK;
}
