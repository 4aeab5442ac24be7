#include "hostsdk/registration.h"

#include <algorithm>
#include <mutex>

namespace {

struct Registry {
    std::mutex lock;
    std::vector<RegisteredEffect> effects;
    std::vector<RegisteredFamilies> families;
};

Registry& registry()
{
    static Registry instance;
    return instance;
}

template <typename Entry>
typename std::vector<Entry>::iterator findClass(std::vector<Entry>& entries, const GUID& clsid)
{
    return std::find_if(entries.begin(), entries.end(), [&clsid](const Entry& e) { return e.clsid == clsid; });
}

}  // namespace

HRESULT DSRegisterCOMEffect(const GUID& clsid, void* instance, const char* name)
{
    if (!name)
        return E_POINTER;
    Registry& r = registry();
    std::lock_guard<std::mutex> guard(r.lock);
    const auto found = findClass(r.effects, clsid);
    if (found == r.effects.end())
        r.effects.push_back({clsid, instance, name});
    else
        *found = {clsid, instance, name};
    return S_OK;
}

HRESULT DSUnregisterCOMEffect(const GUID& clsid)
{
    Registry& r = registry();
    std::lock_guard<std::mutex> guard(r.lock);
    const auto found = findClass(r.effects, clsid);
    if (found == r.effects.end())
        return S_FALSE;
    r.effects.erase(found);
    return S_OK;
}

HRESULT DSRegisterObjectFamilies(const GUID& clsid, uint32_t count, const GUID* families, int32_t flags,
                                 const char* name, void* instance)
{
    if (count == 0)
        return E_INVALIDARG;
    if (!families || !name)
        return E_POINTER;
    Registry& r = registry();
    std::lock_guard<std::mutex> guard(r.lock);
    auto found = findClass(r.families, clsid);
    if (found == r.families.end()) {
        r.families.push_back({clsid, {}, flags, name, instance});
        found = r.families.end() - 1;
    } else {
        found->flags = flags;
        found->name = name;
        found->instance = instance;
    }
    std::vector<GUID>& list = found->families;
    for (uint32_t k = 0; k < count; ++k)
        if (std::find(list.begin(), list.end(), families[k]) == list.end())
            list.push_back(families[k]);
    return S_OK;
}

HRESULT DSUnregisterObjectFamilies(const GUID& clsid, uint32_t count, const GUID* families, void*)
{
    if (count == 0)
        return E_INVALIDARG;
    if (!families)
        return E_POINTER;
    Registry& r = registry();
    std::lock_guard<std::mutex> guard(r.lock);
    const auto found = findClass(r.families, clsid);
    if (found == r.families.end())
        return S_FALSE;
    std::vector<GUID>& list = found->families;
    const std::size_t before = list.size();
    for (uint32_t k = 0; k < count; ++k)
        list.erase(std::remove(list.begin(), list.end(), families[k]), list.end());
    const bool removedAny = list.size() != before;
    if (list.empty())
        r.families.erase(found);
    return removedAny ? S_OK : S_FALSE;
}

std::vector<RegisteredEffect> DSListRegisteredEffects()
{
    Registry& r = registry();
    std::lock_guard<std::mutex> guard(r.lock);
    return r.effects;
}

std::vector<RegisteredFamilies> DSListRegisteredFamilies()
{
    Registry& r = registry();
    std::lock_guard<std::mutex> guard(r.lock);
    return r.families;
}
