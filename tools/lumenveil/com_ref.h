// ComRef: one counted reference to a COM object, released when it goes.
#pragma once

#include <utility>

template <typename T> class ComRef {
public:
    ComRef() = default;
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

private:
    T* p = nullptr;
};
