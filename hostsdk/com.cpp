#include "hostsdk/com.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <mutex>
#include <new>
#include <vector>

#include "hostsdk/com_object.h"

bool IsEqualGUID(const GUID& a, const GUID& b) { return a == b; }

int32_t InterlockedIncrement(volatile int32_t* value)
{
    return std::atomic_ref<int32_t>(*const_cast<int32_t*>(value)).fetch_add(1) + 1;
}

int32_t InterlockedDecrement(volatile int32_t* value)
{
    return std::atomic_ref<int32_t>(*const_cast<int32_t*>(value)).fetch_sub(1) - 1;
}

namespace {

// Answers IID_IMarshal for its outer object and delegates everything else.
// Marshalling itself never happens in one process, so it has no other duty.
class FreeThreadedMarshaler : public CDSComObject<IUnknown> {
public:
    explicit FreeThreadedMarshaler(IUnknown* outerObject) : outer(outerObject) {}
    HRESULT QueryInterface(const GUID& iid, void** out) override
    {
        if (!out || IsEqualGUID(iid, IID_IMarshal))
            return CDSComObject::QueryInterface(iid, out);
        *out = nullptr;
        return outer->QueryInterface(iid, out);
    }

protected:
    void* FindInterface(const GUID& iid) override
    {
        return IsEqualGUID(iid, IID_IMarshal) ? static_cast<IUnknown*>(this) : nullptr;
    }

private:
    IUnknown* outer;
};

struct ServerList {
    std::mutex lock;
    std::vector<ClassObjectGetter> getters;
};

ServerList& servers()
{
    static ServerList list;
    return list;
}

}  // namespace

HRESULT CoCreateFreeThreadedMarshaler(IUnknown* outer, IUnknown** marshaler)
{
    if (!marshaler)
        return E_POINTER;
    *marshaler = nullptr;
    if (!outer)
        return E_INVALIDARG;
    *marshaler = new (std::nothrow) FreeThreadedMarshaler(outer);
    return *marshaler ? S_OK : E_OUTOFMEMORY;
}

void CoRegisterInProcessServer(ClassObjectGetter getter)
{
    ServerList& list = servers();
    std::lock_guard<std::mutex> guard(list.lock);
    if (getter && std::find(list.getters.begin(), list.getters.end(), getter) == list.getters.end())
        list.getters.push_back(getter);
}

void CoRevokeInProcessServer(ClassObjectGetter getter)
{
    ServerList& list = servers();
    std::lock_guard<std::mutex> guard(list.lock);
    list.getters.erase(std::remove(list.getters.begin(), list.getters.end(), getter), list.getters.end());
}

HRESULT CoCreateInstance(const GUID& clsid, IUnknown* outer, uint32_t, const GUID& iid, void** out)
{
    if (!out)
        return E_POINTER;
    *out = nullptr;
    std::vector<ClassObjectGetter> getters;
    {
        ServerList& list = servers();
        std::lock_guard<std::mutex> guard(list.lock);
        getters = list.getters;
    }
    for (ClassObjectGetter getter : getters) {
        IClassFactory* factory = nullptr;
        if (FAILED(getter(clsid, IID_IClassFactory, reinterpret_cast<void**>(&factory))) || !factory)
            continue;
        const HRESULT status = factory->CreateInstance(outer, iid, out);
        factory->Release();
        return status;
    }
    return CLASS_E_CLASSNOTAVAILABLE;
}
