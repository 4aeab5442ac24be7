#include "hostsdk/content.h"

#include <cwchar>
#include <map>
#include <mutex>
#include <string>

namespace {

struct Project {
    std::mutex lock;
    std::map<std::wstring, double> values{{kProjectFrameWidth, 720.0}, {kProjectFrameHeight, 486.0}};
};

Project& project()
{
    static Project instance;
    return instance;
}

}  // namespace

HRESULT DSContentGetProperty(const wchar_t* name, VARIANT* value)
{
    if (!name || !value)
        return E_POINTER;
    Project& p = project();
    std::lock_guard<std::mutex> guard(p.lock);
    auto it = p.values.find(name);
    if (it == p.values.end())
        return E_INVALIDARG;
    value->vt = VT_R8;
    value->dblVal = it->second;
    return S_OK;
}

HRESULT DSContentSetProperty(const wchar_t* name, double value)
{
    if (!name)
        return E_POINTER;
    Project& p = project();
    std::lock_guard<std::mutex> guard(p.lock);
    p.values[name] = value;
    return S_OK;
}
