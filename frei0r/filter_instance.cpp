#include "frei0r/filter_instance.h"

extern "C" {
#include <frei0r.h>
}

#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>

#include "embed/errors.h"

namespace {

// The whole text of the preset at `path`; Failure when it cannot be read.
std::string presetText(const std::string& path)
{
    std::ifstream file(path);
    std::ostringstream text;
    if (!file || !(text << file.rdbuf()))
        throw Failure("cannot read the preset " + path + ": " + std::strerror(errno));
    return text.str();
}

}  // namespace

FilterInstance::FilterInstance(const FilterModule& filterModule, int32_t w, int32_t h)
    : module(filterModule), width(w), height(h)
{
    for (const FilterParameter& p : module.Parameters()) {
        Value v;
        v.x = p.mapped ? frei0rValueOf(p, p.defaultValue) : p.defaultValue;
        v.y = p.defaultY;
        v.text = p.defaultText;
        values.push_back(v);
    }
}

void FilterInstance::SetParameter(int index, const void* value)
{
    std::lock_guard<std::mutex> guard(lock);
    if (!value || index < 0 || index >= static_cast<int>(values.size()))
        return;
    const int type = module.Parameters()[index].type;
    Value v = values[index];
    if (type == F0R_PARAM_STRING) {
        const char* text = *static_cast<const char* const*>(value);
        v.text = text ? text : "";
    } else if (type == F0R_PARAM_POSITION) {
        const auto* at = static_cast<const f0r_param_position_t*>(value);
        v.x = at->x;
        v.y = at->y;
    } else {
        v.x = *static_cast<const double*>(value);
    }
    v.given = true;
    Value& old = values[index];
    // Hosts that animate set every value before every frame: only a change
    // reaches the effect.
    if (!old.given || old.x != v.x || old.y != v.y || old.text != v.text)
        changed = true;
    old = v;
}

void FilterInstance::GetParameter(int index, void* value)
{
    std::lock_guard<std::mutex> guard(lock);
    if (!value || index < 0 || index >= static_cast<int>(values.size()))
        return;
    const Value& v = values[index];
    const int type = module.Parameters()[index].type;
    if (type == F0R_PARAM_STRING)
        *static_cast<f0r_param_string*>(value) = const_cast<char*>(v.text.c_str());
    else if (type == F0R_PARAM_POSITION)
        *static_cast<f0r_param_position_t*>(value) = f0r_param_position_t{v.x, v.y};
    else
        *static_cast<double*>(value) = v.x;
}

void FilterInstance::startEffect(const std::string& preset)
{
    effect.reset();
    auto fresh = std::make_unique<EmbeddedEffect>(*module.Module());
    const Parameter& engine = fresh->Find("engine");
    fresh->Instance().Set(engine, parseParameterValue(engine, kFilterEngine, "engine"));
    if (!preset.empty())
        fresh->Instance().LoadPreset(presetText(preset), preset);
    effect = std::move(fresh);
}

void FilterInstance::applyValue(const FilterParameter& p, const Value& v)
{
    EffectInstance& fx = effect->Instance();
    switch (p.setting) {
    case FilterSetting::Preset:
        return;
    case FilterSetting::Spread:
        if (v.text != spreadPath || (!spread && !v.text.empty())) {
            spread.reset();
            spreadPath = v.text;
            if (!v.text.empty())
                spread = std::make_unique<SpreadPicture>(v.text, width, height);
        }
        return;
    case FilterSetting::PixelAspect:
        effect->Host().SetPixelAspect(settingValueOf(p, v.x));
        return;
    case FilterSetting::Property:
        break;
    }
    if (p.type == F0R_PARAM_STRING)
        fx.Set(*p.property, parseParameterValue(*p.property, v.text, p.name));
    else if (p.type == F0R_PARAM_BOOL)
        fx.Set(*p.property, v.x >= 0.5 ? 1.0 : 0.0);
    else
        fx.Set(*p.property, settingValueOf(p, v.x));
    if (p.type == F0R_PARAM_POSITION)
        fx.Set(*p.propertyY, settingValueOf(p, v.y));
}

std::string FilterInstance::apply()
{
    if (!module.Module())
        return module.Problem();
    const std::vector<FilterParameter>& parameters = module.Parameters();
    try {
        for (size_t i = 0; i < parameters.size(); ++i)
            if (parameters[i].setting == FilterSetting::Preset) {
                const std::string preset = values[i].given ? values[i].text : "";
                if (!effect || preset != presetApplied) {
                    startEffect(preset);
                    presetApplied = preset;
                }
            }
        for (size_t i = 0; i < parameters.size(); ++i)
            if (values[i].given)
                applyValue(parameters[i], values[i]);
    } catch (const std::exception& e) {
        // A refused preset leaves no effect, and the next change starts again.
        return e.what();
    }
    return "";
}

void FilterInstance::report(const std::string& why)
{
    if (reported.insert(why).second)
        std::fprintf(stderr, "lumenveil: %s; the frame is left as it is\n", why.c_str());
}

void FilterInstance::Update(double time, const uint32_t* in, uint32_t* out)
{
    std::lock_guard<std::mutex> guard(lock);
    if (!in || !out)
        return;
    if (changed) {
        problem = apply();
        changed = false;
    }
    if (problem.empty()) {
        const ptrdiff_t rowBytes = static_cast<ptrdiff_t>(width) * 4;
        const FrameView input{const_cast<uint32_t*>(in), rowBytes, width, height, 4, SampleType::U8};
        const FrameView output{out, rowBytes, width, height, 4, SampleType::U8};
        try {
            FrameView spreadFrame = spread ? spread->View() : FrameView{};
            effect->Render(input, output, time, spread ? &spreadFrame : nullptr);
            return;
        } catch (const std::exception& e) {
            report(e.what());
        }
    } else {
        report(problem);
    }
    if (in != out)
        std::memcpy(out, in, static_cast<size_t>(width) * height * 4);
}
