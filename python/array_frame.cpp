#include "python/array_frame.h"

#include <cstdint>
#include <limits>
#include <string>

namespace py = pybind11;

namespace {

// The frame's sample type for the array's dtype; TypeError for others.
SampleType sampleTypeOf(const py::array& a, const char* what)
{
    if (py::isinstance<py::array_t<uint8_t>>(a))
        return SampleType::U8;
    if (py::isinstance<py::array_t<uint16_t>>(a))
        return SampleType::U16;
    if (py::isinstance<py::array_t<float>>(a))
        return SampleType::Float;
    throw py::type_error(std::string(what) + " has dtype " + py::str(a.dtype()).cast<std::string>() +
                         "; uint8, uint16 and float32 are taken");
}

int32_t sizeOf(py::ssize_t n, const char* what)
{
    if (n > std::numeric_limits<int32_t>::max())
        throw py::value_error(std::string(what) + " is too large: " + std::to_string(n) + " pixels along an axis");
    return static_cast<int32_t>(n);
}

// Whether the samples of each row lie packed, pixel after pixel (rows may
// lie anywhere).
bool rowsPacked(const py::array& a, int32_t channels)
{
    const py::ssize_t item = a.itemsize();
    if (a.ndim() == 3 && a.shape(2) > 1 && a.strides(2) != item)
        return false;
    return a.shape(1) == 1 || a.strides(1) == item * channels;
}

FrameView viewOf(py::array& a, SampleType type, int32_t channels)
{
    return FrameView{a.mutable_data(), static_cast<ptrdiff_t>(a.strides(0)), static_cast<int32_t>(a.shape(1)),
                     static_cast<int32_t>(a.shape(0)), channels, type};
}

}  // namespace

ArrayFrame arrayFrame(const py::handle& object, const char* what)
{
    if (!py::isinstance<py::array>(object))
        throw py::type_error(std::string(what) + " must be a NumPy array, not " +
                             py::str(py::type::of(object).attr("__name__")).cast<std::string>());
    py::array a = py::reinterpret_borrow<py::array>(object);
    const SampleType type = sampleTypeOf(a, what);
    const bool layered = a.ndim() == 3 && a.shape(2) >= 1 && a.shape(2) <= 4;
    if (a.ndim() != 2 && !layered)
        throw py::value_error(std::string(what) + " has shape " + py::str(py::tuple(a.attr("shape"))).cast<std::string>() +
                              "; H x W (grey), H x W x 3 (RGB) and H x W x 4 (RGBA) are taken, or H x W x 1 or 2");
    const int32_t channels = layered ? static_cast<int32_t>(a.shape(2)) : 1;
    sizeOf(a.shape(0), what);
    sizeOf(a.shape(1), what);
    if (!rowsPacked(a, channels) || !a.attr("flags").attr("aligned").cast<bool>())
        a = py::module_::import("numpy").attr("ascontiguousarray")(a);
    // The view is only read from: a read-only array is as good as any.
    return ArrayFrame{a, FrameView{const_cast<void*>(a.data()), static_cast<ptrdiff_t>(a.strides(0)),
                                   static_cast<int32_t>(a.shape(1)), static_cast<int32_t>(a.shape(0)), channels,
                                   type}};
}

ArrayFrame newArrayFrame(const FrameView& like, bool grey)
{
    std::vector<py::ssize_t> shape{like.height, like.width};
    if (!grey)
        shape.push_back(like.channels);
    const py::dtype dtype = like.type == SampleType::U8    ? py::dtype::of<uint8_t>()
                            : like.type == SampleType::U16 ? py::dtype::of<uint16_t>()
                                                           : py::dtype::of<float>();
    py::array a(dtype, shape);
    return ArrayFrame{a, viewOf(a, like.type, like.channels)};
}

ArrayFrame ownedCopy(const ArrayFrame& frame)
{
    ArrayFrame copy = newArrayFrame(frame.view, frame.array.ndim() == 2);
    copy.array[py::ellipsis()] = frame.array;
    return copy;
}
