// The Python module `lumenveil`: `defocus` for one picture, `Effect` for a
// sequence, `parameters` for what they take. Arrays in and out; names,
// defaults and ranges from the effect module's property map.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include "embed/errors.h"
#include "python/keyword_docs.h"
#include "python/process_module.h"
#include "python/python_effect.h"

namespace py = pybind11;

namespace {

const char* const kModuleDoc = R"(Lumenveil, a lens-defocus effect, for NumPy arrays.

An image is blurred as a lens out of focus would blur it: convolved with the
image of one point of light through the aperture (a circle, an ellipse, a
polygon, or a shape cut from a picture), with highlights weighing more in the
blur than their pixel values say, so that they bloom into the aperture's
shape. Every picture is the one the `lumenveil render` tool makes of the same
image with the same values and engine.

defocus(image, **values)   one image
Effect(**values)           an effect kept for a sequence: its kernel is reused
parameters()               the keywords, their defaults and ranges

Radii are fractions of the image width (radius_x=0.05 on a 1920-wide image is
a 48-pixel radius), positions fractions of width and height, angles degrees.
Images are H x W (grey), H x W x 3 (RGB) or H x W x 4 (RGBA) arrays of uint8,
uint16 or float32 (0.0 to 1.0; above 1 with linear=True); results have the
image's shape and dtype.
)";

const char* const kParametersDoc = R"(parameters()
--

The keywords `defocus` and `Effect` take, read from the effect module.

Returns
-------
dict
    {name: {"default", "minimum", "maximum", "choices", "animated",
    "property", "description"}} in the order of the effect's properties,
    then the host's settings (pixel_aspect, aperture, preset). "minimum" and
    "maximum" bound numbers, "choices" names a list's entries, "animated"
    says whether Effect.set_key takes the parameter, and "property" is the
    effect's own name for it.

Examples
--------
>>> lumenveil.parameters()["radius_x"]["maximum"]
0.3
)";

std::string defocusDoc(const std::vector<Keyword>& table)
{
    return "defocus(image, *, " + keywordSignature(table) + R"()
--

Blur an image as a lens out of focus would.

One effect is made for the call; `Effect` keeps one for a sequence.

Parameters
----------
image : ndarray
    H x W (grey), H x W x 3 (RGB) or H x W x 4 (RGBA), also H x W x 1 or
    H x W x 2 (grey and alpha), of uint8, uint16 or float32. Any strides; it
    is never written to.
)" + keywordEntries(table) + R"(
Returns
-------
ndarray
    A new C-contiguous array of the image's shape and dtype.

Raises
------
TypeError
    An image or aperture that is no array of uint8, uint16 or float32, an
    unknown keyword, or a value of the wrong kind.
ValueError
    An image of another shape, a value outside its range, an aperture of
    another size than the image, or a preset the effect refuses.
OSError
    A preset file that cannot be read.
RuntimeError
    The effect could not render the image (it is too large for the
    transform at that radius, for one).

Examples
--------
>>> soft = lumenveil.defocus(photo, radius_x=0.02)
>>> hexagon = lumenveil.defocus(photo, shape="polygon", sides=6, rotation=15,
...                             radius_x=0.03, bright_emphasis=80)
)";
}

std::string effectDoc(const std::vector<Keyword>& table)
{
    return R"(Effect(**values)

One effect for a sequence of images: values, keys and presets as a host
keeps them, and the kernel kept from frame to frame while the values and the
frame size stay. Calling it renders; several Effects render at once on
several threads (the GIL is released while rendering), calls on one Effect
wait for each other.

Parameters
----------
)" + keywordEntries(table) + R"(
Examples
--------
>>> fx = lumenveil.Effect(shape="polygon", sides=5, radius_x=0.01)
>>> fx.set_key("radius_x", 4.0, 0.06)    # seconds, value
>>> frames = [fx(frame, time=i / 25) for i, frame in enumerate(clip)]
)";
}

const char* const kCallDoc = R"(__call__($self, image, time=None)
--

Render `image` at `time` seconds (keys are interpolated to it; default 0).

Parameters
----------
image : ndarray
    As `defocus` takes it.
time : float, optional

Returns
-------
ndarray
    A new C-contiguous array of the image's shape and dtype.
)";

const char* const kSetDoc = R"(set($self, **values)
--

Set values, as `Effect` takes them, over the current ones. Nothing changes
when one of them is refused.
)";

const char* const kGetDoc = R"(get($self, name, time=None)
--

The value of the parameter `name` ("radius_x", "shape"; also the effect's
property names, "RadiusX"): at `time` seconds, or the stored value.
)";

const char* const kSetKeyDoc = R"(set_key($self, name, time, value)
--

Add a key: `name` (an animated parameter; centre_x and centre_y for the
centre) takes `value` at `time` seconds. Between keys values are
interpolated linearly; before the first and after the last they stay.
)";

const char* const kLoadPresetDoc = R"(load_preset($self, path)
--

Load the effect's values and keys from a JSON preset. OSError when the file
cannot be read; ValueError with the effect's reason when it refuses the
preset, the effect then unchanged.
)";

const char* const kSavePresetDoc = R"(save_preset($self, path)
--

Save the effect's values and keys as a JSON preset (the `lumenveil` tool's
--preset takes it). Written through a temporary file, so that a failure
leaves no partial file; OSError when it cannot be written.
)";

const char* const kPsfDoc = R"(psf($self, width, height, time=None)
--

The aperture's point-spread picture for a width x height image at `time`
seconds: the image of one point of light through the aperture, as the
effect draws it, in floats of 0 to 1 (its 8-bit samples over 255). Its
height is that of the frame handed to the effect, rounded up to a multiple
of four rows. Made by rendering a black image of that size (with the
Effect's aperture picture, which must then have that size).

Returns
-------
ndarray
    float32, H x W.
)";

}  // namespace

PYBIND11_MODULE(lumenveil, m)
{
    py::options options;
    options.disable_function_signatures();
    py::register_exception_translator([](std::exception_ptr p) {
        try {
            if (p)
                std::rethrow_exception(p);
        } catch (const UsageError& e) {
            PyErr_SetString(PyExc_ValueError, e.what());
        } catch (const RenderFailure& e) {
            PyErr_SetString(e.cause == RenderFailure::Cause::Memory  ? PyExc_MemoryError
                            : e.cause == RenderFailure::Cause::Value ? PyExc_ValueError
                                                                     : PyExc_RuntimeError,
                            e.what());
        } catch (const Failure& e) {
            PyErr_SetString(PyExc_RuntimeError, e.what());
        }
    });
    const std::vector<Keyword>* table = nullptr;
    try {
        table = &PythonEffect::Keywords();
    } catch (const std::exception& e) {
        throw py::import_error(e.what());
    }
    // Docstrings outlive the module's objects.
    static const std::string defocusText = defocusDoc(*table), effectText = effectDoc(*table);
    m.doc() = kModuleDoc;
    m.attr("module_path") = ProcessModule::Get().Module().Path();
    m.def("parameters", [table] { return describeKeywords(*table); }, kParametersDoc);
    m.def(
        "defocus",
        [](const py::handle& image, const py::kwargs& values) { return PythonEffect(values).Render(image, 0.0); },
        defocusText.c_str(), py::arg("image"));
    py::class_<PythonEffect>(m, "Effect", effectText.c_str())
        .def(py::init([](const py::kwargs& values) { return std::make_unique<PythonEffect>(values); }))
        .def("__call__", &PythonEffect::Render, kCallDoc, py::arg("image"), py::arg("time") = py::none())
        .def("set", &PythonEffect::Set, kSetDoc)
        .def("get", &PythonEffect::Get, kGetDoc, py::arg("name"), py::arg("time") = py::none())
        .def("set_key", &PythonEffect::SetKey, kSetKeyDoc, py::arg("name"), py::arg("time"), py::arg("value"))
        .def("load_preset", &PythonEffect::LoadPreset, kLoadPresetDoc, py::arg("path"))
        .def("save_preset", &PythonEffect::SavePreset, kSavePresetDoc, py::arg("path"))
        .def("psf", &PythonEffect::PointSpread, kPsfDoc, py::arg("width"), py::arg("height"),
             py::arg("time") = py::none())
        .def_property_readonly("execute_seconds", &PythonEffect::ExecuteSeconds,
                               "Seconds the effect's own Execute took in the last render (0.0 before any), "
                               "apart from handing the image over and back.");
}
