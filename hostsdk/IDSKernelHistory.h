// IDSKernelHistory: lets a host that starts rendering at a later frame of a
// sequence bring the effect to where a render from the sequence's first frame
// would stand. An effect keeps its kernel from frame to frame while the values
// that shape it stay close, and each kernel it builds keeps a trace of the one
// before; a render that starts late has neither. The host walks the frames
// before its first with TrackKernel, which tells at which of them a render
// would have built a kernel, builds the last of those with BuildKernel (as
// many as it takes for the traces they keep to fade; ForgetKernel before it
// builds them again from further back), and tracks the frame before its
// first once more.
#pragma once

#include <cstdint>

#include "hostsdk/com.h"

inline constexpr GUID IID_IDSKernelHistory = {0x4c560208, 0x6d66, 0x4966, {0x8a, 0x28, 0x4b, 0x48, 0x49, 0x53, 0x01, 0x08}};

struct IDSKernelHistory : IUnknown {
    // What Execute at `time` would decide with the images set now, without
    // rendering or building anything: *builds is 1 when it would build the
    // kernel anew, else 0. The effect keeps the frame's values for the next
    // frame's comparison, as Execute does. E_POINTER for a null `builds`;
    // E_FAIL without images or a host link.
    virtual HRESULT TrackKernel(double time, int32_t* builds) = 0;
    // Builds the kernel of the frame at `time` from the images set now (the
    // Image aperture cuts it from the Spread input or the frame), as Execute
    // would when it builds, and renders nothing: the output image is not
    // touched. *trace is the weight of the previous kernel's trace in the one
    // built (1 when none was built): how much of what came before reaches
    // the next frame. E_POINTER for a null `trace`; otherwise the result and
    // the render status are Execute's.
    virtual HRESULT BuildKernel(double time, double* trace) = 0;
    // Drops the kernel and every trace of it: the next build is as the
    // effect's first.
    virtual HRESULT ForgetKernel() = 0;
};
