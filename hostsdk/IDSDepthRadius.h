// IDSDepthRadius: what a depth-of-field effect tells a host of its circles of
// confusion: the blur radius of each pixel of the last frame, and the radius
// its properties give a depth, so that a host can show the blur or pick the
// focus without rendering.
#pragma once

#include <cstdint>

#include "hostsdk/com.h"

inline constexpr GUID IID_IDSDepthRadius = {0xDD8340B0, 0x753F, 0x433B, {0xB9, 0x74, 0x70, 0x64, 0x0B, 0xAE, 0x5C, 0x77}};

struct IDSDepthRadius : IUnknown {
    // The signed blur radius in pixels of each pixel of the last frame
    // rendered (negative in front of the focus, positive behind it), width x
    // height floats row by row, valid until the effect's next Execute. E_FAIL
    // before any frame.
    virtual HRESULT GetRadiusPlane(int32_t* width, int32_t* height, const float** radii) = 0;
    // The signed blur radius in pixels of a pixel of depth `depth` in a frame
    // `width` pixels wide, by the properties at `time`.
    virtual HRESULT RadiusOfDepth(double depth, int32_t width, double time, double* radius) = 0;
};
