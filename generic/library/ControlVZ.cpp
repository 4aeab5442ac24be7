#include "generic/library/ControlVZ.h"

#include "hostsdk/CDSBasePropertyPage.h"
#include "hostsdk/variant.h"
#include "hostsdk/window.h"

namespace {

// Reads a VARIANT of `type` from the page's animated property at host time.
template <typename T>
void readAnimated(CDSBasePropertyPage* page, const GUID* guid, VARTYPE type, double time, T* out)
{
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = type;
    page->GetAnimatedProperty(*guid, &variant, nullptr, time);
    if (type == VT_R8)
        *out = static_cast<T>(variant.dblVal);
    else
        *out = static_cast<T>(variant.lVal);
    VariantClear(&variant);
}

}  // namespace

ControlVZ::ControlVZ()
    : page(nullptr),
      controlId(0),
      valuePointer(nullptr),
      propertyGuid(nullptr),
      timeScale(nullptr),
      disabled(0),
      hidden(0),
      ignoreNextChange(0),
      active(1)
{
}

void ControlVZ::Reserved0() {}
void ControlVZ::Reserved3() {}
void ControlVZ::Reserved4() {}

void ControlVZ::SetDisabled(bool isDisabled)
{
    if (page)
        for (int i = 0; i < widgetCount(); ++i)
            if (HWND window = page->GetHwndControl(controlId + static_cast<uint32_t>(i)))
                EnableWindow(window, !isDisabled);
    disabled = isDisabled ? 1 : 0;
}

void ControlVZ::SetHidden(bool isHidden)
{
    if (page)
        for (int i = 0; i < widgetCount(); ++i)
            if (HWND window = page->GetHwndControl(controlId + static_cast<uint32_t>(i)))
                ShowWindow(window, isHidden ? SW_HIDE : SW_SHOWNORMAL);
    hidden = isHidden ? 1 : 0;
}

double ControlVZ::hostTime(double time) const { return time == -1.0 ? time : time / *timeScale; }

IntegerControlVZ::IntegerControlVZ() : value(0) {}

void IntegerControlVZ::GetValue(double time, int32_t* out) const
{
    if (page)
        readAnimated(page, propertyGuid, VT_I4, hostTime(time), out);
}

CheckboxControlVZ::CheckboxControlVZ() : value(0) {}

void CheckboxControlVZ::GetValue(double, int32_t* out)
{
    if (valuePointer)
        *out = *static_cast<const int32_t*>(valuePointer);
    HWND window = page ? page->GetHwndControl(controlId) : nullptr;
    if (!window) {
        *out = value;
        return;
    }
    value = SendMessage(window, BM_GETCHECK, 0, 0) == BST_CHECKED ? 1 : 0;
    *out = value;
}

ListControlVZ::ListControlVZ() : value(1) {}

void ListControlVZ::GetValue(double, int32_t* out) const
{
    if (valuePointer)
        *out = *static_cast<const int32_t*>(valuePointer);
    HWND window = page ? page->GetHwndControl(controlId) : nullptr;
    if (!window) {
        *out = value;
        return;
    }
    *out = static_cast<int32_t>(SendMessage(window, CB_GETCURSEL, 0, 0)) + 1;
}

FloatControlVZ::FloatControlVZ() : value(0.0) {}

void FloatControlVZ::GetValue(double time, double* out) const
{
    if (page)
        readAnimated(page, propertyGuid, VT_R8, hostTime(time), out);
}

PositionControlVZ::PositionControlVZ() : valuePointerY(nullptr), propertyGuidY(nullptr), x(0.0), y(0.0) {}

void PositionControlVZ::GetValue(double time, double* outX, double* outY) const
{
    if (!page)
        return;
    const double at = hostTime(time);
    readAnimated(page, propertyGuid, VT_R8, at, outX);
    readAnimated(page, propertyGuidY, VT_R8, at, outY);
}
