#include "hostsdk/IDSCoordMan.h"

HRESULT CoordMan::MapPoint(double x, double y, double* outX, double* outY)
{
    return MapVector(x, y, outX, outY);
}

HRESULT CoordMan::MapVector(double x, double y, double* outX, double* outY)
{
    if (!outX || !outY)
        return E_POINTER;
    *outX = x * pixelAspect;
    *outY = y;
    return S_OK;
}
