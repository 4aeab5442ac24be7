// CDSComObject: the reference count and interface queries of a COM object,
// written once for every object of the host stand-in and its modules.
//
// A class derives from CDSComObject<I1, I2, ...> in place of its interfaces.
// The count starts at 1 (the creator's reference), AddRef and Release are
// interlocked, and the object deletes itself when the count falls to 0.
// QueryInterface answers IID_IUnknown with the first interface and every
// other identifier through FindInterface, adding one reference.
#pragma once

#include <cstdint>

#include "hostsdk/com.h"

template <class First, class... Others> class CDSComObject : public First, public Others... {
public:
    // E_POINTER for a null `out`; otherwise *out is the interface, or null
    // with E_NOINTERFACE.
    HRESULT QueryInterface(const GUID& iid, void** out) override
    {
        if (!out)
            return E_POINTER;
        *out = IsEqualGUID(iid, IID_IUnknown) ? static_cast<First*>(this) : FindInterface(iid);
        if (!*out)
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    uint32_t AddRef() override { return static_cast<uint32_t>(InterlockedIncrement(&references)); }
    uint32_t Release() override
    {
        const int32_t left = InterlockedDecrement(&references);
        if (left == 0)
            delete this;
        return static_cast<uint32_t>(left);
    }

protected:
    CDSComObject() = default;
    // A copy is a new object: it starts with a count of its own.
    CDSComObject(const CDSComObject& other) : First(other), Others(other)... {}
    CDSComObject& operator=(const CDSComObject&) = delete;
    virtual ~CDSComObject() = default;

    // The interface this object shows for `iid` (not IID_IUnknown), or null.
    virtual void* FindInterface(const GUID& iid) = 0;

private:
    volatile int32_t references = 1;
};
