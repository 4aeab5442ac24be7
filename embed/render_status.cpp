#include "embed/render_status.h"

#include <cstdio>

#include "hostsdk/IDSRenderStatus.h"

namespace {

RenderFailure::Cause causeOf(HRESULT status)
{
    if (status == E_OUTOFMEMORY)
        return RenderFailure::Cause::Memory;
    if (status == E_INVALIDARG)
        return RenderFailure::Cause::Value;
    return RenderFailure::Cause::Other;
}

}  // namespace

void requireRendered(IDSImageEffect* effect, HRESULT executed, const std::string& what)
{
    HRESULT status = executed;
    const char* reason = nullptr;
    const auto report = ComRef<IDSRenderStatus>::Query(effect, IID_IDSRenderStatus);
    if (report && FAILED(report->GetRenderStatus(&status, &reason)))
        status = executed, reason = nullptr;
    if (SUCCEEDED(status))
        return;
    std::string why;
    if (reason && *reason) {
        why = reason;
    } else {
        char code[48];
        std::snprintf(code, sizeof code, "the effect failed (0x%08X)", static_cast<unsigned>(status));
        why = code;
    }
    throw RenderFailure(causeOf(status), what + ": " + why);
}
