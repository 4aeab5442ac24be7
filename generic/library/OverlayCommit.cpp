#include "generic/library/OverlayCommit.h"

#include "generic/library/ControlVZ.h"
#include "hostsdk/CDSBasePropertyPage.h"
#include "hostsdk/variant.h"

namespace {

constexpr int kUndoStyle = 1;
constexpr double kCurrentTime = -1.0;

VARIANT realVariant(double value)
{
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_R8;
    variant.dblVal = value;
    return variant;
}

}  // namespace

void overlayShowValue(const ControlVZ* control, uint32_t widgetId, double value)
{
    VARIANT variant = realVariant(value);
    control->page->SetControlValue(widgetId, &variant);
    VariantClear(&variant);
}

void overlayCommitValue(const ControlVZ* control, const GUID* guid, double value)
{
    VARIANT variant = realVariant(value);
    control->page->SetAnimatedProperty(*guid, &variant, nullptr, kUndoStyle, kCurrentTime);
    VariantClear(&variant);
    control->page->SetControlFromProperty(*guid, nullptr);
}
