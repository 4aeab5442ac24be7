#include "generic/library/HostBufferLayout.h"

#include "generic/library/HostFormatTables.h"
#include "hostsdk/image_format_geometry.h"

bool hostBufferLayout(int32_t code, int32_t bufferWidth, int32_t bufferHeight, int32_t roiWidth, int32_t roiHeight,
                      int32_t roiX, int32_t roiY, HostBufferLayout* layout)
{
    const HostFormatGeometry* format = hostFormatGeometry(code);
    if (!format || !layout)
        return false;
    if (bufferWidth < 1 || bufferHeight < 1 || roiWidth < 1 || roiHeight < 1 || roiX < 0 || roiY < 0)
        return false;
    if (static_cast<int64_t>(roiX) + roiWidth > bufferWidth || static_cast<int64_t>(roiY) + roiHeight > bufferHeight)
        return false;
    layout->code = code;
    layout->family = hostColourFamily[code];
    layout->alphaPlane = format->alphaPlane;
    layout->bottomUp = format->bottomUp;
    layout->sampleBytes = format->sampleBytes;
    layout->bytesPerPixel = format->samplesPerPixel * format->sampleBytes;
    layout->bufferWidth = bufferWidth;
    layout->bufferHeight = bufferHeight;
    layout->roiWidth = roiWidth;
    layout->roiHeight = roiHeight;
    layout->roiX = roiX;
    layout->roiY = roiY;
    layout->colourPlaneBytes = hostColourPlaneBytes(code, bufferWidth, bufferHeight);
    return true;
}
