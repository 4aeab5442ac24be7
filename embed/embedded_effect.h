// EmbeddedEffect: one effect of the module as a host embeds it. It holds the
// effect object (its parameters, values, keys and presets, EffectInstance),
// a host of its own (EffectHost), and renders frames that the caller holds in
// memory: 8-bit, 16-bit or float samples, one to four channels, any row
// stride. Frames go to the effect as a host hands them over: 8-bit frames in
// MFIF_RGBA_RAW_32, deeper ones in MFIF_RGBA_FLOAT, padded to whole row
// slices (host_frame.h), as the lumenveil tool hands over the same picture.
//
// One call at a time on an object; objects are independent of each other and
// may render on different threads at once.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "embed/effect_host.h"
#include "embed/effect_instance.h"
#include "embed/effect_module.h"
#include "embed/frame_view.h"
#include "embed/point_spread.h"
#include "hostsdk/IDSImage.h"

class EmbeddedEffect {
public:
    // A new effect of `module` (which must outlive it), connected to a host
    // of its own. Failure when the module makes none.
    explicit EmbeddedEffect(const EffectModule& module, const HostSettings& settings = {});
    ~EmbeddedEffect();
    EmbeddedEffect(const EmbeddedEffect&) = delete;
    EmbeddedEffect& operator=(const EmbeddedEffect&) = delete;

    // Parameters, values, keys and presets.
    EffectInstance& Instance() { return instance; }
    const EffectInstance& Instance() const { return instance; }
    const std::vector<Parameter>& Parameters() const { return instance.Parameters(); }
    EffectHost& Host() { return host; }

    // The parameter named `name` (its property or option name, any case);
    // UsageError when there is none.
    const Parameter& Find(const std::string& name) const;
    // Stored value, key at `time` seconds, value at `time` (-1.0: stored),
    // by name; UsageError for a value outside the parameter's range.
    void Set(const std::string& name, double value);
    void SetKey(const std::string& name, double time, double value);
    double Get(const std::string& name, double time = -1.0) const;

    // Renders `input` into `output` (the same size, channels and type; they
    // may be the same memory) at `time` seconds, through the effect's
    // Execute. With the effect's Linear property on, float samples go over
    // as they are (premultiplied light, not limited to 1). `spread`, when
    // given, is the picture the Image shape cuts its aperture from: the
    // input's size, any channels and type; without it the aperture is cut
    // from the input. UsageError for frames that break these
    // rules; Failure with the reason when the effect cannot render the frame,
    // `output` then untouched.
    void Render(const FrameView& input, const FrameView& output, double time, const FrameView* spread = nullptr);

    // The point-spread picture the last render used; Failure before any.
    GreyPicture PointSpread() const { return pointSpreadPicture(instance.Object()); }

    // Seconds the effect's Execute took in the last render (0 before any):
    // the effect's own time, apart from handing the frame over and back.
    double LastExecuteSeconds() const { return executeSeconds; }

private:
    // A host image of the frame's size in `format`, kept from frame to frame.
    MemoryImage* hostImage(ComRef<MemoryImage>& image, const HostFormatGeometry& format, int32_t width,
                           int32_t rows);

    EffectInstance instance;
    EffectHost host;
    ComRef<MemoryImage> inputImage, outputImage, spreadImage;
    double executeSeconds = 0.0;
};
