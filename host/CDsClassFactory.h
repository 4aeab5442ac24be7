// CDsClassFactory<T>: the class factory of one of the module's classes. It
// holds a count of the server lock while it lives, admits one caller at a time
// into CreateInstance, and offers a free-threaded marshaler.
#pragma once

#include <mutex>
#include <new>

#include "host/Plug.h"
#include "hostsdk/com.h"

template <typename T, int A = 0, int B = 0> class CDsClassFactory : public IClassFactory {
public:
    explicit CDsClassFactory(volatile int32_t* lockCount)
    {
        if (!serverLock)
            serverLock = lockCount;
        if (serverLock)
            InterlockedIncrement(serverLock);
    }

    HRESULT QueryInterface(const GUID& iid, void** out) override
    {
        if (!out)
            return E_POINTER;
        *out = nullptr;
        if (IsEqualGUID(iid, IID_IUnknown) || IsEqualGUID(iid, IID_IClassFactory)) {
            AddRef();
            *out = static_cast<IClassFactory*>(this);
            return S_OK;
        }
        if (IsEqualGUID(iid, IID_IMarshal)) {
            if (!marshaler && FAILED(CoCreateFreeThreadedMarshaler(this, &marshaler)))
                return E_NOINTERFACE;
            return marshaler->QueryInterface(iid, out);
        }
        return E_NOINTERFACE;
    }
    uint32_t AddRef() override { return static_cast<uint32_t>(InterlockedIncrement(&refCount)); }
    uint32_t Release() override
    {
        const int32_t left = InterlockedDecrement(&refCount);
        if (left == 0)
            delete this;
        return static_cast<uint32_t>(left);
    }

    HRESULT CreateInstance(IUnknown* outer, const GUID& iid, void** out) override
    {
        if (!out)
            return E_POINTER;
        std::lock_guard<std::mutex> guard(lock);
        *out = nullptr;
        T* object = nullptr;
        CreateObject(&object);
        if (!object)
            return E_OUTOFMEMORY;
        if (outer) {
            object->Release();
            return CLASS_E_NOAGGREGATION;
        }
        const HRESULT status = object->QueryInterface(iid, out);
        object->Release();
        return status;
    }

    HRESULT LockServer(bool lockIt) override
    {
        if (serverLock) {
            if (lockIt)
                InterlockedIncrement(serverLock);
            else
                InterlockedDecrement(serverLock);
        }
        return S_OK;
    }

    virtual HRESULT CreateObject(T** out)
    {
        *out = new (std::nothrow) T();
        return S_OK;
    }

    // The server lock count of this kind of factory, set by the first one.
    static inline volatile int32_t* serverLock = nullptr;

protected:
    ~CDsClassFactory() override
    {
        if (marshaler)
            marshaler->Release();
        if (serverLock)
            InterlockedDecrement(serverLock);
    }

private:
    volatile int32_t refCount = 1;
    std::mutex lock;
    IUnknown* marshaler = nullptr;
};
