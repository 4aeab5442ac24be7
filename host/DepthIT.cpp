#include "host/DepthIT.h"

#include <cmath>

#include "effect/DepthLensVZ.h"
#include "effect/FocusPickVZ.h"
#include "effect/Lumenveil.h"
#include "generic/library/HostLinearFrame.h"
#include "generic/library/HostPixelFormat.h"
#include "host/DepthProperties.h"
#include "hostsdk/CDSPropertyPage.h"
#include "hostsdk/IDSImage.h"
#include "hostsdk/depth_input.h"

namespace {

// The depth image's sample under frame pixel (column, row), rows from the top; a status.
HRESULT depthSample(IDSImage* image, int32_t column, int32_t row, float* depth)
{
    void* pixels = nullptr;
    GUID format{};
    int32_t width = 0, height = 0;
    image->GetPixels(&pixels);
    image->GetPixelFormat(&format);
    image->GetDimensions(&width, &height);
    LinearFrameVZ pixel(1, 1);
    if (!pixel.pixels)
        return E_OUTOFMEMORY;
    // NaN and infinity read as 0: at infinity, as the render takes them.
    if (hostToLinearFrame(pixels, width, height, 1, 1, column, row, pickHostFormat(format), 0, &pixel) < 0)
        return E_INVALIDARG;
    *depth = pixel.pixels[0];
    return S_OK;
}

}  // namespace

HRESULT DepthIT::OnOnTimeChange(double time)
{
    currentTime = time;
    return IT::OnOnTimeChange(time);
}

bool DepthIT::overlayShown() const { return lumenveil && lumenveil->shape.value == SHAPE_IMAGE; }

bool DepthIT::overlayTookPress() const
{
    if (!overlayShown())
        return false;
    const OverlayControlVZ* items[] = {&lumenveil->crosshair, &lumenveil->innerCircle, &lumenveil->outerCircle};
    for (const OverlayControlVZ* item : items)
        if (item->activeHandle)
            return true;
    return false;
}

HRESULT DepthIT::OnBeginInteraction(const tagVWPENEVENT* event)
{
    // Handles not drawn take no press: the overlay hears of it only while it shows.
    const HRESULT status =
        overlayShown() ? IT::OnBeginInteraction(event) : CDSInteractiveTool::OnBeginInteraction(event);
    if (FAILED(status) || overlayTookPress())
        return status;
    return PickFocus(event);
}

HRESULT DepthIT::PickFocus(const tagVWPENEVENT* event)
{
    if (!event)
        return E_POINTER;
    ComRef<IUnknown> fetched;
    const HRESULT fetch = vwFetchInput(Viewer(), DS_INPUT_DEPTH, currentTime, reinterpret_cast<IUnknown**>(fetched.out()));
    if (FAILED(fetch))
        return fetch;
    const ComRef<IDSImage> image = ComRef<IDSImage>::Query(fetched.get(), IID_IDSImage);
    int32_t width = 0, height = 0;
    if (!image || FAILED(image->GetDimensions(&width, &height)))
        return E_INVALIDARG;
    // The pen's y counts from the bottom, stretched by the pixel aspect as the
    // plain tool stretches it; frame rows count from the top.
    const double stretch = event->pixelAspect * AspectFactor(event->pixelAspect);
    const double column = std::floor(event->x), fromBottom = std::floor(event->y * stretch);
    if (!(column >= 0.0 && column < width && fromBottom >= 0.0 && fromBottom < height))
        return S_FALSE;
    float depth = 0.0f;
    const HRESULT read = depthSample(image.get(), static_cast<int32_t>(column),
                                     height - 1 - static_cast<int32_t>(fromBottom), &depth);
    if (FAILED(read))
        return read;
    VARIANT kind;
    VariantInit(&kind);
    kind.vt = VT_I4;
    if (FAILED(GetAnimatedProperty(PROPID_DepthKind, &kind, nullptr, -1.0)))
        kind.lVal = DEPTH_DISTANCE;
    const FocusPickVZ pick{kFocusLowest, kFocusHighest, kind.lVal};
    VARIANT focus = VariantReal(pick.FocusOf(depth));
    const HRESULT status = SetAnimatedProperty(PROPID_Focus, &focus, nullptr, UNDO_STYLE, -1.0);
    // The page's Focus control follows, as it follows a dragged handle.
    if (SUCCEEDED(status) && lumenveil && lumenveil->shape.page)
        lumenveil->shape.page->SetControlFromProperty(PROPID_Focus, nullptr);
    return status;
}
