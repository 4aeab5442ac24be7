// The sixteen host formats' geometry, and images over owned or borrowed memory.
#include <gtest/gtest.h>

#include <vector>

#include "hostsdk/IDSImage.h"
#include "hostsdk/image_format_geometry.h"
#include "hostsdk/image_formats.h"

namespace {

TEST(FormatGeometry, SixteenFormatsAsPublished)
{
    // Code, identifier (and its name), alpha plane, bottom up, samples, bytes.
#define FORMAT(code, id, ...) {code, #id, &id, __VA_ARGS__}
    const struct {
        int32_t code;
        const char* name;
        const GUID* guid;
        bool alpha, bottomUp;
        int32_t samples, bytes;
    } formats[] = {FORMAT(1, MFIF_RGBA_RAW_32, 0, 0, 4, 1),         FORMAT(2, MFIF_BGRA_RAW_32_VIDEO, 0, 1, 4, 1),
                   FORMAT(3, MFIF_CbYCrY_16, 0, 1, 2, 1),           FORMAT(4, MFIF_CbYCrY709_16, 0, 1, 2, 1),
                   FORMAT(5, MFIF_CbYCrYA_24, 1, 1, 2, 1),          FORMAT(6, MFIF_CbYCrY709A_24, 1, 1, 2, 1),
                   FORMAT(7, MFIF_RGBA_S2_14, 0, 1, 4, 2),          FORMAT(8, MFIF_CbYCrY_S2_14, 0, 1, 2, 2),
                   FORMAT(9, MFIF_CbYCrY709_S2_14, 0, 1, 2, 2),     FORMAT(10, MFIF_CbYCrYA_S2_14, 1, 1, 2, 2),
                   FORMAT(11, MFIF_CbYCrY709A_S2_14, 1, 1, 2, 2),   FORMAT(12, MFIF_RGBA_FLOAT, 0, 1, 4, 4),
                   FORMAT(13, MFIF_CbYCrY_FLOAT, 0, 1, 2, 4),       FORMAT(14, MFIF_CbYCrY709_FLOAT, 0, 1, 2, 4),
                   FORMAT(15, MFIF_CbYCrYA_FLOAT, 1, 1, 2, 4),      FORMAT(16, MFIF_CbYCrY709A_FLOAT, 1, 1, 2, 4)};
#undef FORMAT
    for (const auto& f : formats) {
        const HostFormatGeometry* g = hostFormatGeometry(f.code);
        ASSERT_NE(g, nullptr);
        EXPECT_EQ(std::tuple(g->code, std::string(g->name), g->guid, g->alphaPlane, g->bottomUp),
                  std::tuple(f.code, std::string(f.name), f.guid, f.alpha, f.bottomUp));
        EXPECT_EQ(std::tuple(g->samplesPerPixel, g->sampleBytes, g->pairs),
                  std::tuple(f.samples, f.bytes, f.samples == 2));
        EXPECT_EQ(hostFormatCodeOf(*f.guid), f.code);
        // 5 x 3 pixels: the colour plane, then one alpha sample a pixel.
        EXPECT_EQ(hostBufferBytes(f.code, 5, 3), size_t(15 * f.samples * f.bytes + (f.alpha ? 15 * f.bytes : 0)));
        EXPECT_EQ(hostBufferRow(f.code, 10, 3), f.bottomUp ? 6 : 3) << f.name;
    }
    GUID near = MFIF_RGBA_FLOAT;
    near.Data4[7] ^= 0x40;
    EXPECT_EQ(hostFormatCodeOf(near) + hostFormatCodeOf(IID_IUnknown), 0);
    EXPECT_EQ(hostBufferBytes(1, 0, 2) + hostBufferBytes(1, 2, -1) + hostBufferBytes(1, -2, 2) + hostBufferBytes(17, 2, 2), 0u);
}

// Owned buffers are cleared and of the format's size; a borrowed one is used as given.
TEST(MemoryImage, OwnsAClearedBufferOfTheFormatsSizeOrBorrowsOne)
{
    EXPECT_EQ(MemoryImage::Create(IID_IUnknown, 4, 4), nullptr);
    EXPECT_EQ(MemoryImage::Create(MFIF_RGBA_RAW_32, 0, 4), nullptr);
    EXPECT_EQ(MemoryImage::Create(MFIF_RGBA_RAW_32, 4, -1), nullptr);
    const struct {
        const GUID* format;
        int32_t width, height;
        size_t bytes;
    } cases[] = {{&MFIF_CbYCrYA_24, 6, 5, 6 * 5 * 2 + 6 * 5},
                 {&MFIF_RGBA_FLOAT, 7, 3, 7 * 3 * 16},
                 {&MFIF_CbYCrY709A_S2_14, 40, 30, 40 * 30 * 4 + 40 * 30 * 2}};
    for (const auto& c : cases) {
        MemoryImage* image = MemoryImage::Create(*c.format, c.width, c.height);
        ASSERT_NE(image, nullptr);
        EXPECT_EQ(std::vector<uint8_t>(image->Data(), image->Data() + image->Bytes()), std::vector<uint8_t>(c.bytes));
        EXPECT_EQ(image->Release(), 0u);
    }
    std::vector<uint8_t> block(8 * 2 * 4, 7);
    MemoryImage* image = MemoryImage::Create(MFIF_BGRA_RAW_32_VIDEO, 8, 2, block.data());
    void* out = nullptr;
    ASSERT_EQ(image->GetPixels(&out), S_OK);
    EXPECT_EQ(out, block.data());
    EXPECT_EQ(block, std::vector<uint8_t>(block.size(), 7));
    // Two interfaces on one count.
    ASSERT_EQ(image->QueryInterface(IID_IDSImage, &out), S_OK);
    EXPECT_EQ(out, static_cast<IDSImage*>(image));
    ASSERT_EQ(image->QueryInterface(IID_IUnknown, &out), S_OK);
    EXPECT_EQ(out, static_cast<IUnknown*>(image));
    EXPECT_EQ(image->QueryInterface(IID_IMarshal, &out), E_NOINTERFACE);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(image->QueryInterface(IID_IDSImage, nullptr), E_POINTER);
    EXPECT_EQ(image->AddRef(), 4u) << "one from Create, two from the queries";
    for (uint32_t left : {3u, 2u, 1u, 0u})
        EXPECT_EQ(image->Release(), left);
}

}  // namespace
