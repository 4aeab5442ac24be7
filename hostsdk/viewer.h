// The viewer's side of an interactive tool: pen events, the surface a tool
// draws on, and the viewer's viewport information.
//
// A viewer surface owns a DrawingSurface. Between vwSurfaceBeginRenderOpenGL
// and vwSurfaceEndRenderOpenGL that drawing surface is current on the calling
// thread, so the gl* calls of a tool land in it (and Rasterise shows them).
#pragma once

#include <cstdint>

#include "hostsdk/IDSImageEffectHost.h"
#include "hostsdk/gl.h"
#include "hostsdk/hresult.h"

// The pen's left button; other values name other buttons.
inline constexpr int32_t VW_PEN_BUTTON_LEFT = 1;

// One pen event.
struct tagVWPENEVENT {
    int32_t button = 0;        // VW_PEN_BUTTON_LEFT or another button
    double x = 0.0;            // position in image pixels, y as the viewer gives it
    double y = 0.0;
    double pixelAspect = 1.0;  // the image's pixel aspect (width / height of a pixel)
};

// What a tool learns of the surface when it starts drawing.
struct tagVWOPENGLSURFACE {
    int32_t width = 0;         // drawing area in window pixels
    int32_t height = 0;
    double viewLeft = 0.0;     // viewing rectangle in image pixels: the part of the
    double viewBottom = 0.0;   // image shown, as left, bottom, width, height
    double viewWidth = 0.0;
    double viewHeight = 0.0;
    int32_t imageWidth = 0;    // the image in pixels
    int32_t imageHeight = 0;
    double pixelAspect = 1.0;
};

// A viewer's drawing surface, owned by the host.
struct VWSurface {
    tagVWOPENGLSURFACE geometry;  // what Begin reports
    DrawingSurface drawing;       // what tools drew
    bool available = true;        // false: the viewer cannot render now, Begin fails
    bool rendering = false;       // between Begin and End
    DrawingSurface* previous = nullptr;  // the thread's current surface before Begin
};

// Two values that a viewer reports about its viewport; their meaning is the
// viewer's own, tools keep them.
struct tagVWVIEWPORTINFO {
    double a = 0.0;
    double b = 0.0;
};

// A viewer, owned by the host.
struct VWViewer {
    tagVWVIEWPORTINFO viewport;
    // The inputs of the effect the viewer shows (its host link), for a tool
    // that reads them, as a depth-of-field effect's focus picker reads its
    // Depth input; null when the viewer offers none. Not owned.
    IDSImageEffectHost* inputs = nullptr;
};

// Starts drawing on `surface`: copies its geometry into `glSurface` and makes
// its drawing surface current on this thread. E_POINTER for a null argument,
// E_FAIL if the surface is not available, E_UNEXPECTED if drawing has already
// begun.
HRESULT vwSurfaceBeginRenderOpenGL(VWSurface* surface, tagVWOPENGLSURFACE* glSurface);
// Ends drawing on `surface` and makes current again what was current before
// Begin. E_POINTER for null, E_UNEXPECTED if drawing had not begun.
HRESULT vwSurfaceEndRenderOpenGL(VWSurface* surface);
// Copies the viewer's viewport information into `info`. E_POINTER for null.
HRESULT vwGetViewportInfo(VWViewer* viewer, tagVWVIEWPORTINFO* info);
// A counted reference to the image of input `index` (as the effect's input
// table numbers it) of the effect the viewer shows, at `time` seconds, into
// `image`. E_POINTER for a null argument; E_NOTIMPL, with `image` null, when
// the viewer offers no inputs; otherwise the host link's answer (E_FAIL for an
// input that is not connected).
HRESULT vwFetchInput(VWViewer* viewer, int32_t index, double time, IUnknown** image);
