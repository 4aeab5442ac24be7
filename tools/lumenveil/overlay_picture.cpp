#include "tools/lumenveil/overlay_picture.h"

#include <algorithm>
#include <cstdio>

#include "tools/lumenveil/cli_error.h"

OverlayPainter::OverlayPainter(const EffectModule& module, EffectInstance& effect)
{
    HRESULT status = S_OK;
    object = module.CreateObject(kToolClassId, &status);
    if (object)
        status = object->QueryInterface(IID_IDSInteractiveTool, reinterpret_cast<void**>(&tool));
    if (tool)
        toolReference = ComRef<IUnknown>(object.get());  // the reference the query added
    if (!tool) {
        char code[16];
        std::snprintf(code, sizeof code, "0x%08X", static_cast<unsigned>(status));
        throw Failure("--overlay: the effect module has no interactive tool to draw the overlay (class " +
                      FormatGuid(kToolClassId) + " not available, " + code + ")");
    }
    linkedOperator = std::make_unique<PropertiesOperator>(effect.Object());
    tool->OnLinkToOperator(linkedOperator.get());
    tool->OnLinkToViewer(&viewer);
}

OverlayPainter::~OverlayPainter()
{
    if (tool) {
        tool->OnLinkToViewer(nullptr);
        tool->OnLinkToOperator(nullptr);
    }
}

RgbaImage OverlayPainter::Draw(int width, int height, double pixelAspect, double time)
{
    VWSurface surface;
    surface.geometry.width = width;
    surface.geometry.height = height;
    surface.geometry.viewLeft = 0.0;
    surface.geometry.viewBottom = 0.0;
    surface.geometry.viewWidth = width;
    surface.geometry.viewHeight = height;
    surface.geometry.imageWidth = width;
    surface.geometry.imageHeight = height;
    surface.geometry.pixelAspect = pixelAspect;
    surface.available = true;
    linkedOperator->SetCurrentTime(time);
    tool->OnOnTimeChange(time);
    tool->OnRender(&surface);
    // The viewer's y runs down the image as the effect's rows do (CentreY 0 is
    // the top row), so the drawing's first row is the picture's top row.
    return surface.drawing.Rasterise(RowOrder::BOTTOM_UP);
}

void compositeOverlay(float* rgba, int width, int top, int count, const RgbaImage& overlay)
{
    const int w = std::min(width, overlay.Width());
    const int bottom = std::min(top + count, overlay.Height());
    for (int y = top; y < bottom; ++y)
        for (int x = 0; x < w; ++x) {
            const uint8_t* o = overlay.Pixel(x, y);
            const float a = o[3] / 255.0f;
            float* p = rgba + (static_cast<size_t>(y - top) * width + x) * 4;
            for (int c = 0; c < 3; ++c)
                p[c] = o[c] / 255.0f * a + p[c] * (1.0f - a);
            p[3] = a + p[3] * (1.0f - a);
        }
}
