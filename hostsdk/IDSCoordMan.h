// IDSCoordMan: maps the host's coordinates to image pixels; CoordMan does so
// for pixels `pixelAspect` times as wide as high.
#pragma once

#include "hostsdk/hresult.h"

struct IDSCoordMan {
    virtual ~IDSCoordMan() = default;
    virtual HRESULT MapPoint(double x, double y, double* outX, double* outY) = 0;
    // The pixel extent of the vector (x, y).
    virtual HRESULT MapVector(double x, double y, double* outX, double* outY) = 0;
};

class CoordMan : public IDSCoordMan {
public:
    explicit CoordMan(double aspect = 1.0) : pixelAspect(aspect) {}
    // (x * pixelAspect, y): a unit vector spans pixelAspect pixels across.
    HRESULT MapPoint(double x, double y, double* outX, double* outY) override;
    HRESULT MapVector(double x, double y, double* outX, double* outY) override;
    double pixelAspect;
};
