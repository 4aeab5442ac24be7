// IDSRenderStatus: what an effect's last Execute came to. Execute returns
// S_OK in cases where no picture was made (the engine could not allocate its
// planes, a kernel could not be built, the host asked it to stop), so a host
// that must know whether the output holds the frame's render asks here after
// each Execute.
#pragma once

#include "hostsdk/com.h"

inline constexpr GUID IID_IDSRenderStatus = {0x4c560207, 0x6d66, 0x4966, {0x8a, 0x27, 0x52, 0x53, 0x54, 0x41, 0x01, 0x07}};

struct IDSRenderStatus : IUnknown {
    // In `status`, S_OK when the last Execute rendered its frame into the
    // output image; otherwise a failure code (E_OUTOFMEMORY, E_INVALIDARG,
    // E_ABORT when the host stopped it, E_FAIL) with one line in `reason`
    // saying why, valid until the next Execute or Release. Before the first
    // Execute: E_FAIL, "no frame has been rendered". E_POINTER for a null
    // argument.
    virtual HRESULT GetRenderStatus(HRESULT* status, const char** reason) = 0;
};
