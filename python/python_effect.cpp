#include "python/python_effect.h"

#include <vector>

#include "embed/errors.h"
#include "python/process_module.h"

namespace py = pybind11;

const std::vector<Keyword>& PythonEffect::Keywords()
{
    static const std::vector<Keyword> table = keywordTable(ProcessModule::Get().Properties());
    return table;
}

PythonEffect::PythonEffect(const py::kwargs& values) : effect(ProcessModule::Get().Module())
{
    const Parameter& engine = effect.Find("engine");
    effect.Instance().Set(engine, parseParameterValue(engine, kPythonEngine, "engine"));
    apply(readValues(Keywords(), values));
}

std::unique_lock<std::mutex> PythonEffect::hold()
{
    std::unique_lock<std::mutex> guard(lock, std::try_to_lock);
    if (!guard.owns_lock()) {
        py::gil_scoped_release released;
        guard.lock();
    }
    return guard;
}

void PythonEffect::apply(const EffectValues& values)
{
    if (values.presetText) {
        try {
            effect.Instance().LoadPreset(*values.presetText, *values.presetPath);
        } catch (const Failure& refused) {
            throw UsageError(refused.what());
        }
    }
    for (const auto& [property, value] : values.properties)
        effect.Instance().Set(*property, value);
    if (values.pixelAspect)
        effect.Host().SetPixelAspect(*values.pixelAspect);
    if (values.apertureGiven)
        aperture = values.aperture;
}

void PythonEffect::Set(const py::kwargs& values)
{
    const EffectValues read = readValues(Keywords(), values);
    auto guard = hold();
    apply(read);
}

py::object PythonEffect::Get(const std::string& name, std::optional<double> time)
{
    auto guard = hold();
    const Parameter& p = effect.Find(canonicalKeyword(name));
    return pythonValue(p, effect.Get(p.name, time ? *time : -1.0));
}

void PythonEffect::SetKey(const std::string& name, double time, const py::handle& value)
{
    auto guard = hold();
    const Parameter& p = effect.Find(canonicalKeyword(name));
    effect.SetKey(p.name, time, propertyValue(p, value, name));
}

void PythonEffect::LoadPreset(const py::handle& path)
{
    py::dict keywords;
    keywords["preset"] = path;
    Set(keywords);
}

void PythonEffect::SavePreset(const py::handle& path)
{
    std::string text;
    {
        auto guard = hold();
        text = effect.Instance().SavePreset();
    }
    writeTextFile(path, text);
}

void PythonEffect::render(const FrameView& input, const FrameView& output, double time)
{
    auto guard = hold();
    const FrameView* spread = aperture ? &aperture->view : nullptr;
    py::gil_scoped_release released;
    effect.Render(input, output, time, spread);
}

py::array PythonEffect::Render(const py::handle& image, std::optional<double> time)
{
    const ArrayFrame input = arrayFrame(image, "image");
    ArrayFrame output = newArrayFrame(input.view, input.array.ndim() == 2);
    render(input.view, output.view, time ? *time : 0.0);
    return output.array;
}

py::array PythonEffect::PointSpread(int64_t width, int64_t height, std::optional<double> time)
{
    if (width < 1 || height < 1 || width > INT32_MAX || height > INT32_MAX)
        throw UsageError("psf: a frame of " + std::to_string(width) + " x " + std::to_string(height) +
                         " pixels has no point-spread picture");
    // A black frame of that size: the kernel depends on its size, not its pixels.
    std::vector<uint8_t> black(static_cast<size_t>(width) * height), output(black.size());
    const FrameView frame{black.data(), static_cast<ptrdiff_t>(width), static_cast<int32_t>(width),
                          static_cast<int32_t>(height), 1, SampleType::U8};
    FrameView out = frame;
    out.pixels = output.data();
    render(frame, out, time ? *time : 0.0);
    GreyPicture picture;
    {
        auto guard = hold();
        picture = effect.PointSpread();
    }
    py::array_t<float> result({static_cast<py::ssize_t>(picture.height), static_cast<py::ssize_t>(picture.width)});
    float* samples = result.mutable_data();
    for (size_t i = 0; i < picture.pixels.size(); ++i)
        samples[i] = picture.pixels[i] / 255.0f;
    return result;
}

double PythonEffect::ExecuteSeconds()
{
    auto guard = hold();
    return effect.LastExecuteSeconds();
}
