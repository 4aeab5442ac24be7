// How an overlay item writes a dragged value: to the page's number control
// while the drag lasts, to the host's animated property at release.
#pragma once

#include <cstdint>

#include "hostsdk/guid.h"

class ControlVZ;

// Shows `value` in widget `widgetId` of the control's page.
void overlayShowValue(const ControlVZ* control, uint32_t widgetId, double value);
// Writes `value` to the property `guid` at the current time with undo style 1,
// then refreshes the page's widget from the property.
void overlayCommitValue(const ControlVZ* control, const GUID* guid, double value);
