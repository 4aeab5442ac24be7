// The viewer overlay of the effect, drawn by the module's interactive tool
// over a rendered frame, as a viewer would show it.
#pragma once

#include <memory>

#include "hostsdk/CDSInteractiveTool.h"
#include "hostsdk/PropertiesOperator.h"
#include "hostsdk/rgba_image.h"
#include "hostsdk/viewer.h"
#include "hostsdk/com.h"
#include "embed/effect_instance.h"
#include "embed/effect_module.h"

class OverlayPainter {
public:
    // Makes the module's interactive tool and links it to `effect` and a
    // viewer. Failure when the module does not serve the tool.
    OverlayPainter(const EffectModule& module, EffectInstance& effect);
    ~OverlayPainter();
    OverlayPainter(const OverlayPainter&) = delete;
    OverlayPainter& operator=(const OverlayPainter&) = delete;

    // The tool's layer for a width x height frame at `time` seconds, rows top-down.
    RgbaImage Draw(int width, int height, double pixelAspect, double time);

private:
    ComRef<IUnknown> object;
    CDSInteractiveTool* tool = nullptr;  // the tool part of `object`
    ComRef<IUnknown> toolReference;      // the reference that `tool` came with
    std::unique_ptr<PropertiesOperator> linkedOperator;
    VWViewer viewer;
};

// Lays `overlay` over rows top to top + count - 1 of a frame `width` pixels
// wide, four floats a pixel in `rgba` (alpha blending, top-left aligned).
void compositeOverlay(float* rgba, int width, int top, int count, const RgbaImage& overlay);
