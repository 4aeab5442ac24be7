// The scene-linear side of a render: whether frames go to the effect as
// premultiplied light (the effect's Linear property), the exposure applied on
// the way in and undone on the way out, and each file's alpha convention.
// Rows of RGBA floats pass through here between the files and the frames.
#pragma once

#include <cstddef>
#include <string>

#include "embed/effect_instance.h"
#include "tools/lumenveil/alpha_convention.h"
#include "tools/lumenveil/parameter_options.h"
#include "tools/lumenveil/render_request.h"

// The colour scale of `stops` of exposure, 2^stops, from the text of
// --exposure; UsageError when it is not a finite number, or when it is given
// without `linear`. An empty text is 0 stops.
double exposureScale(const std::string& text, bool linear);

class LightPath {
public:
    // The 16-bit road: unassociated frames, no exposure, EXR by its convention.
    LightPath() : LightPath(false, 1.0, false) {}
    // `linear`: the frames hold premultiplied light; `exposure`: the colour
    // scale on the way in (its inverse on the way out); `unassociatedExr`:
    // OpenEXR files are taken as unassociated.
    LightPath(bool linear, double exposure, bool unassociatedExr);

    bool Linear() const { return linear; }
    // Rows read from a file of `fileFormat` (OpenImageIO's name) made into
    // the frame's convention, and scaled by the exposure.
    void ToFrame(float* rgba, size_t pixels, const std::string& fileFormat) const;
    // Rows of the frame made into the convention of a file of `fileFormat`,
    // the exposure undone first.
    void ToFile(float* rgba, size_t pixels, const std::string& fileFormat) const;

private:
    bool linear;
    float scaleIn;
    float scaleOut;
    bool unassociatedExr;
    AlphaConvention frame;
};

// The light path of a render, read off the effect once its preset, options
// and keys are set: a scene-linear render when its Linear property is on.
// Such a render needs a fast engine: an effect on the faithful one is put on
// `fast` unless --engine asked for faithful. UsageError for --engine
// faithful, a host format other than MFIF_RGBA_FLOAT, or --bright-emphasis
// (option or key) with a scene-linear render, and for --exposure without one.
LightPath chooseLightPath(EffectInstance& effect, const RenderRequest& request, const ParameterOptions& options);
