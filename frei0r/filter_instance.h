// FilterInstance: one frei0r instance, one effect object (EmbeddedEffect)
// whose kernel cache lasts from frame to frame. The host's values are kept as
// the host sets them and handed to the effect before the next frame: a
// preset first, then every parameter the host has set over it. A frame the
// effect cannot render (a bad preset or Spread path, a frame too large for
// the transform, no module) comes out as it went in, and its reason is
// printed on stderr once for this instance. Calls are taken one at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "embed/embedded_effect.h"
#include "frei0r/filter_module.h"
#include "frei0r/spread_picture.h"

class FilterInstance {
public:
    FilterInstance(const FilterModule& module, int32_t width, int32_t height);

    // frei0r's set and get of parameter `index`: a double, position or string
    // as its type says. Indices outside the list are ignored.
    void SetParameter(int index, const void* value);
    void GetParameter(int index, void* value);
    // Renders `in` into `out`, packed R G B A bytes, at `time`.
    void Update(double time, const uint32_t* in, uint32_t* out);

private:
    // One parameter's value as the host set it.
    struct Value {
        double x = 0.0, y = 0.0;
        std::string text;
        bool given = false;
    };

    // The values handed to the effect; "" when all went, else why not.
    std::string apply();
    // A new effect with the filter's engine and the preset; none when the
    // preset is refused (the exception says why).
    void startEffect(const std::string& preset);
    void applyValue(const FilterParameter& p, const Value& v);
    // Prints `problem` once for this instance.
    void report(const std::string& problem);

    std::mutex lock;
    const FilterModule& module;
    int32_t width, height;
    std::vector<Value> values;
    std::unique_ptr<EmbeddedEffect> effect;
    bool changed = true;
    std::string problem;  // of the values as last applied
    std::string presetApplied;
    std::string spreadPath;
    std::unique_ptr<SpreadPicture> spread;
    std::set<std::string> reported;
};
