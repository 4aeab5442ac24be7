#include "hostsdk/viewer.h"

HRESULT vwSurfaceBeginRenderOpenGL(VWSurface* surface, tagVWOPENGLSURFACE* glSurface)
{
    if (!surface || !glSurface)
        return E_POINTER;
    if (!surface->available)
        return E_FAIL;
    if (surface->rendering)
        return E_UNEXPECTED;
    *glSurface = surface->geometry;
    surface->previous = drawingCurrent();
    drawingMakeCurrent(&surface->drawing);
    surface->rendering = true;
    return S_OK;
}

HRESULT vwSurfaceEndRenderOpenGL(VWSurface* surface)
{
    if (!surface)
        return E_POINTER;
    if (!surface->rendering)
        return E_UNEXPECTED;
    drawingMakeCurrent(surface->previous);
    surface->previous = nullptr;
    surface->rendering = false;
    return S_OK;
}

HRESULT vwGetViewportInfo(VWViewer* viewer, tagVWVIEWPORTINFO* info)
{
    if (!viewer || !info)
        return E_POINTER;
    *info = viewer->viewport;
    return S_OK;
}

HRESULT vwFetchInput(VWViewer* viewer, int32_t index, double time, IUnknown** image)
{
    if (!viewer || !image)
        return E_POINTER;
    *image = nullptr;
    if (!viewer->inputs)
        return E_NOTIMPL;
    // A viewer shows one execution at a time: no execute context of its own.
    return viewer->inputs->FetchInput(index, time, 0, image);
}
