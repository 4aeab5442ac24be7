// IDSImage: a host image, a pixel buffer in one of the sixteen MFIF_ formats;
// and MemoryImage, an image over a block of memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "hostsdk/com.h"
#include "hostsdk/com_object.h"

inline constexpr GUID IID_IDSImage = {0x4c560201, 0x6d66, 0x4966, {0x8a, 0x21, 0x49, 0x4d, 0x41, 0x47, 0x45, 0x01}};

struct IDSImage : IUnknown {
    virtual HRESULT GetPixelFormat(GUID* format) = 0;
    // Buffer size in pixels; the width is also the row stride.
    virtual HRESULT GetDimensions(int32_t* width, int32_t* height) = 0;
    // Position of the buffer in the host's coordinates.
    virtual HRESULT GetOrigin(double* x, double* y) = 0;
    virtual HRESULT GetPixels(void** pixels) = 0;
};

// An image over memory. With `pixels` null it allocates and clears a buffer of
// the format's size and owns it; otherwise it borrows the caller's block, which
// must hold hostBufferBytes(format, width, height) bytes. The creator holds the
// one reference.
class MemoryImage : public CDSComObject<IDSImage> {
public:
    // Null for a format outside the sixteen, a size below 1, or no memory.
    static MemoryImage* Create(const GUID& format, int32_t width, int32_t height, void* pixels = nullptr);

    HRESULT GetPixelFormat(GUID* format) override;
    HRESULT GetDimensions(int32_t* width, int32_t* height) override;
    HRESULT GetOrigin(double* x, double* y) override;
    HRESULT GetPixels(void** pixels) override;

    // Bytes of the whole buffer, colour and alpha planes together.
    size_t Bytes() const { return bytes; }
    uint8_t* Data() const { return data; }
    int32_t Code() const { return code; }
    void SetOrigin(double x, double y);

private:
    MemoryImage() = default;
    ~MemoryImage() override;
    void* FindInterface(const GUID& iid) override;

    GUID format{};
    int32_t code = 0;
    int32_t width = 0;
    int32_t height = 0;
    double originX = 0.0;
    double originY = 0.0;
    size_t bytes = 0;
    uint8_t* data = nullptr;
    std::unique_ptr<uint8_t[]> owned;
};
