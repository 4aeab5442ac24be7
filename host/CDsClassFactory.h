// CDsClassFactory<T>: the class factory of one of the module's classes. It
// holds a count of the server lock while it lives, admits one caller at a time
// into CreateInstance, and offers a free-threaded marshaler.
#pragma once

#include <atomic>
#include <mutex>
#include <new>

#include "host/Plug.h"
#include "hostsdk/com_object.h"

template <typename T, int A = 0, int B = 0> class CDsClassFactory : public CDSComObject<IClassFactory> {
public:
    explicit CDsClassFactory(volatile int32_t* lockCount)
    {
        // The first factory made sets the lock; factories may be made on
        // several threads at once.
        volatile int32_t* unset = nullptr;
        serverLock.compare_exchange_strong(unset, lockCount);
        if (volatile int32_t* count = serverLock.load())
            InterlockedIncrement(count);
    }

    // IID_IUnknown and IID_IClassFactory; IID_IMarshal through the
    // free-threaded marshaler, made on first use.
    HRESULT QueryInterface(const GUID& iid, void** out) override
    {
        if (!out || !IsEqualGUID(iid, IID_IMarshal))
            return CDSComObject::QueryInterface(iid, out);
        *out = nullptr;
        if (!marshaler && FAILED(CoCreateFreeThreadedMarshaler(this, &marshaler)))
            return E_NOINTERFACE;
        return marshaler->QueryInterface(iid, out);
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
    static inline std::atomic<volatile int32_t*> serverLock{nullptr};

protected:
    void* FindInterface(const GUID& iid) override
    {
        return IsEqualGUID(iid, IID_IClassFactory) ? static_cast<IClassFactory*>(this) : nullptr;
    }
    ~CDsClassFactory() override
    {
        if (marshaler)
            marshaler->Release();
        if (serverLock)
            InterlockedDecrement(serverLock);
    }

private:
    std::mutex lock;
    IUnknown* marshaler = nullptr;
};
