#include "embed/point_spread.h"

#include <algorithm>

#include "embed/errors.h"
#include "hostsdk/IDSPointSpread.h"

GreyPicture pointSpreadPicture(IUnknown* effect)
{
    const ComRef<IDSPointSpread> spread = ComRef<IDSPointSpread>::Query(effect, IID_IDSPointSpread);
    int32_t width = 0, height = 0, rowBytes = 0;
    const uint8_t* pixels = nullptr;
    if (!spread || FAILED(spread->GetPointSpreadImage(&width, &height, &rowBytes, &pixels)))
        throw Failure("the effect has no point-spread picture to give");
    GreyPicture picture{width, height, std::vector<uint8_t>(static_cast<size_t>(width) * height)};
    for (int32_t y = 0; y < height; ++y) {
        const uint8_t* row = pixels + static_cast<size_t>(y) * rowBytes;
        std::copy(row, row + width, picture.pixels.begin() + static_cast<ptrdiff_t>(y) * width);
    }
    return picture;
}
