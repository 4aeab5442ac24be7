// COM basics of the host: IUnknown, IClassFactory, their interface
// identifiers, ComRef (an owned reference), a free-threaded marshaler,
// interlocked counters, and CoCreateInstance over in-process servers
// registered with this library.
#pragma once

#include <cstdint>
#include <utility>

#include "hostsdk/guid.h"
#include "hostsdk/hresult.h"

inline constexpr GUID IID_IUnknown = {0x00000000, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr GUID IID_IClassFactory = {0x00000001, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr GUID IID_IMarshal = {0x00000003, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

// True when the 16 bytes of a and b are equal.
bool IsEqualGUID(const GUID& a, const GUID& b);

// The root interface: a counted reference and interface queries. An object
// deletes itself when its count falls to zero.
struct IUnknown {
    // Sets *out to the interface `iid` with one more reference, or to null with
    // E_NOINTERFACE; E_POINTER when `out` is null.
    virtual HRESULT QueryInterface(const GUID& iid, void** out) = 0;
    virtual uint32_t AddRef() = 0;
    virtual uint32_t Release() = 0;

protected:
    virtual ~IUnknown() = default;
};

// ComRef: one counted reference to a COM object, released when it goes.
template <typename T> class ComRef {
public:
    ComRef() = default;
    // Takes over the reference that `object` holds (it is not added to).
    explicit ComRef(T* object) : p(object) {}
    ~ComRef() { reset(); }
    ComRef(const ComRef&) = delete;
    ComRef& operator=(const ComRef&) = delete;
    ComRef(ComRef&& other) noexcept : p(std::exchange(other.p, nullptr)) {}
    ComRef& operator=(ComRef&& other) noexcept
    {
        if (this != &other) {
            reset();
            p = std::exchange(other.p, nullptr);
        }
        return *this;
    }

    // Releases the reference held, if any.
    void reset()
    {
        if (p)
            p->Release();
        p = nullptr;
    }
    T* get() const { return p; }
    T* operator->() const { return p; }
    explicit operator bool() const { return p != nullptr; }
    // Where an interface query or factory writes the new reference.
    void** out()
    {
        reset();
        return reinterpret_cast<void**>(&p);
    }
    // The reference asked of `object` for interface `iid` (null when it has none).
    template <typename From> static ComRef Query(From* object, const GUID& iid)
    {
        ComRef ref;
        if (object)
            object->QueryInterface(iid, ref.out());
        return ref;
    }

private:
    T* p = nullptr;
};

// Makes objects of one class.
struct IClassFactory : IUnknown {
    // A new object queried for `iid`; CLASS_E_NOAGGREGATION with an outer unknown.
    virtual HRESULT CreateInstance(IUnknown* outer, const GUID& iid, void** out) = 0;
    // Counts the server up (true) or down (false).
    virtual HRESULT LockServer(bool lock) = 0;
};

// Interlocked counters; they return the new value.
int32_t InterlockedIncrement(volatile int32_t* value);
int32_t InterlockedDecrement(volatile int32_t* value);

// A free-threaded marshaler aggregated by `outer`: it answers IID_IMarshal and
// hands every other query to `outer`. The caller owns the one reference in
// *marshaler.
HRESULT CoCreateFreeThreadedMarshaler(IUnknown* outer, IUnknown** marshaler);

// A module's class-object entry point.
typedef HRESULT (*ClassObjectGetter)(const GUID& clsid, const GUID& iid, void** out);

// Makes the classes of an in-process server known to CoCreateInstance (a
// server registered twice is kept once); CoRevokeInProcessServer forgets it.
void CoRegisterInProcessServer(ClassObjectGetter getter);
void CoRevokeInProcessServer(ClassObjectGetter getter);

// Context value for in-process servers.
inline constexpr uint32_t CLSCTX_INPROC_SERVER = 1;

// Creates an object of class `clsid` through the class factory of the first
// registered server that knows it; CLASS_E_CLASSNOTAVAILABLE when none does.
HRESULT CoCreateInstance(const GUID& clsid, IUnknown* outer, uint32_t context, const GUID& iid, void** out);
