#include <cstring>
#include <new>

#include "hostsdk/IDSImage.h"
#include "hostsdk/image_format_geometry.h"

MemoryImage* MemoryImage::Create(const GUID& formatId, int32_t w, int32_t h, void* pixels)
{
    const int32_t formatCode = hostFormatCodeOf(formatId);
    const size_t size = hostBufferBytes(formatCode, w, h);
    if (size == 0)
        return nullptr;
    MemoryImage* image = new (std::nothrow) MemoryImage();
    if (!image)
        return nullptr;
    image->format = formatId;
    image->code = formatCode;
    image->width = w;
    image->height = h;
    image->bytes = size;
    if (pixels) {
        image->data = static_cast<uint8_t*>(pixels);
    } else {
        image->owned.reset(new (std::nothrow) uint8_t[size]);
        if (!image->owned) {
            delete image;
            return nullptr;
        }
        image->data = image->owned.get();
        std::memset(image->data, 0, size);
    }
    return image;
}

MemoryImage::~MemoryImage() = default;

void* MemoryImage::FindInterface(const GUID& iid)
{
    return IsEqualGUID(iid, IID_IDSImage) ? static_cast<IDSImage*>(this) : nullptr;
}

HRESULT MemoryImage::GetPixelFormat(GUID* out)
{
    if (!out)
        return E_POINTER;
    *out = format;
    return S_OK;
}

HRESULT MemoryImage::GetDimensions(int32_t* w, int32_t* h)
{
    if (!w || !h)
        return E_POINTER;
    *w = width;
    *h = height;
    return S_OK;
}

HRESULT MemoryImage::GetOrigin(double* x, double* y)
{
    if (!x || !y)
        return E_POINTER;
    *x = originX;
    *y = originY;
    return S_OK;
}

HRESULT MemoryImage::GetPixels(void** pixels)
{
    if (!pixels)
        return E_POINTER;
    *pixels = data;
    return S_OK;
}

void MemoryImage::SetOrigin(double x, double y)
{
    originX = x;
    originY = y;
}
