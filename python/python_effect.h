// PythonEffect: the object behind `lumenveil.Effect`. One effect of the
// module (EmbeddedEffect) with its kernel kept from frame to frame, its
// values set by keywords, and the aperture picture it keeps a copy of.
// Renders release the GIL, so effects render on several Python threads at
// once; calls on one object wait for each other.
#pragma once

#include <mutex>
#include <optional>
#include <string>

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include "embed/embedded_effect.h"
#include "python/keyword_values.h"

class PythonEffect {
public:
    // A new effect with the Python module's engine, then `values` over it.
    explicit PythonEffect(const pybind11::kwargs& values);

    // Keyword values over the current ones; nothing changes when one is refused.
    void Set(const pybind11::kwargs& values);
    // A value by keyword or property name, at `time` seconds, or the stored one.
    pybind11::object Get(const std::string& name, std::optional<double> time);
    void SetKey(const std::string& name, double time, const pybind11::handle& value);
    void LoadPreset(const pybind11::handle& path);
    void SavePreset(const pybind11::handle& path);

    // `image` rendered at `time` seconds (0 when not given) into a new array.
    pybind11::array Render(const pybind11::handle& image, std::optional<double> time);
    // The point-spread picture of a width x height frame at `time`, floats of 0 to 1.
    pybind11::array PointSpread(int64_t width, int64_t height, std::optional<double> time);
    // Seconds the effect's Execute took in the last render.
    double ExecuteSeconds();

    // The keywords effects take.
    static const std::vector<Keyword>& Keywords();

private:
    // The object's lock, taken with the GIL released while waiting for it.
    std::unique_lock<std::mutex> hold();
    void apply(const EffectValues& values);
    void render(const FrameView& input, const FrameView& output, double time);

    std::mutex lock;
    EmbeddedEffect effect;
    std::optional<ArrayFrame> aperture;
};
