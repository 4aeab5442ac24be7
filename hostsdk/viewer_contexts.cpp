#include "hostsdk/viewer_contexts.h"

#include <algorithm>
#include <mutex>

namespace {

struct ContextStack {
    std::mutex lock;
    std::vector<VWContext> contexts;
    uint32_t lastId = 0;
};

ContextStack& stack()
{
    static ContextStack instance;
    return instance;
}

}  // namespace

HRESULT VWControllerPushContext(int32_t kind, CDSInteractiveTool* tool, void* object, void* paramsA, void* paramsB,
                                double value, uint32_t* context)
{
    if (!context)
        return E_POINTER;
    *context = 0;
    if (!tool)
        return E_INVALIDARG;
    ContextStack& s = stack();
    std::lock_guard<std::mutex> guard(s.lock);
    if (++s.lastId == 0)
        ++s.lastId;
    s.contexts.push_back({s.lastId, kind, tool, object, paramsA, paramsB, value});
    *context = s.lastId;
    return S_OK;
}

HRESULT VWControllerRemoveContext(uint32_t context)
{
    ContextStack& s = stack();
    std::lock_guard<std::mutex> guard(s.lock);
    const auto found =
        std::find_if(s.contexts.begin(), s.contexts.end(), [context](const VWContext& c) { return c.id == context; });
    if (found == s.contexts.end())
        return E_INVALIDARG;
    s.contexts.erase(found);
    return S_OK;
}

std::vector<VWContext> VWControllerListContexts()
{
    ContextStack& s = stack();
    std::lock_guard<std::mutex> guard(s.lock);
    return s.contexts;
}
