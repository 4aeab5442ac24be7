#include "generic/library/OverlayCommit.h"

#include "generic/library/ControlVZ.h"
#include "hostsdk/CDSBasePropertyPage.h"
#include "hostsdk/variant.h"

namespace {

constexpr int kUndoStyle = 1;
constexpr double kCurrentTime = -1.0;


}  // namespace

void overlayShowValue(const ControlVZ* control, uint32_t widgetId, double value)
{
    VARIANT variant = VariantReal(value);
    control->page->SetControlValue(widgetId, &variant);
    VariantClear(&variant);
}

void overlayCommitValue(const ControlVZ* control, const GUID* guid, double value)
{
    VARIANT variant = VariantReal(value);
    control->page->SetAnimatedProperty(*guid, &variant, nullptr, kUndoStyle, kCurrentTime);
    VariantClear(&variant);
    control->page->SetControlFromProperty(*guid, nullptr);
}
