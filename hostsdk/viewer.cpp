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
