// FocusPickVZ: the focus that puts a picked depth sample in focus. The focus
// is on the depth's own scale (distance, or normalised depth), so a sample
// that has a distance gives itself; a sample at infinity (0, negative, NaN,
// infinity) gives the far end of the focus range, its largest distance or its
// smallest normalised depth. The result lies within the range.
#pragma once

#include <cstdint>

class FocusPickVZ {
public:
    double lowest = 0.0;   // the focus range
    double highest = 0.0;
    int32_t kind = 0;      // a DepthKind

    double FocusOf(float depth) const;
};
