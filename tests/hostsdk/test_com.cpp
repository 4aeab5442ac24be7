// COM basics, GUID text and order, the host formats' geometry and MemoryImage.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "hostsdk/IDSImage.h"
#include "hostsdk/com.h"
#include "hostsdk/image_format_geometry.h"
#include "hostsdk/image_formats.h"

namespace {

// The two classes differ in the last byte only.
constexpr GUID IID_THING = {0x7E570001, 1, 2, {1}}, CLASS_A = {0x7E57000A, 1, 2, {1}},
               CLASS_B = {0x7E57000A, 1, 2, {1, 0, 0, 0, 0, 0, 0, 1}};
int live = 0, asked = 0;
void* const kGarbage = &live;

// Answers IID_IUnknown, IID_THING and IID_IClassFactory; makes more of itself.
struct Thing : IClassFactory {
    Thing() { ++live; }
    ~Thing() override { --live; }
    HRESULT QueryInterface(const GUID& iid, void** out) override
    {
        const bool known = iid == IID_IUnknown || iid == IID_THING || iid == IID_IClassFactory;
        return !out ? E_POINTER : (*out = known ? this : nullptr) ? (AddRef(), S_OK) : E_NOINTERFACE;
    }
    uint32_t AddRef() override { return ++count; }
    uint32_t Release() override { return --count ? count : (delete this, 0u); }
    HRESULT CreateInstance(IUnknown* outer, const GUID& iid, void** out) override
    {
        return outer ? CLASS_E_NOAGGREGATION : make(iid, out);
    }
    HRESULT LockServer(bool) override { return S_OK; }
    static HRESULT make(const GUID& iid, void** out)
    {
        Thing* thing = new Thing;
        const HRESULT status = thing->QueryInterface(iid, out);
        return thing->Release(), status;
    }
    uint32_t count = 1;
};
// A server that knows one class.
template <const GUID& served> HRESULT server(const GUID& clsid, const GUID& iid, void** out)
{
    return ++asked, IsEqualGUID(clsid, served) ? Thing::make(iid, out) : E_FAIL;
}
constexpr ClassObjectGetter serverA = server<CLASS_A>, serverB = server<CLASS_B>;

TEST(Com, CountersAndAMarshalerThatHandsOtherQueriesToItsOuter)
{
    volatile int32_t counter = 5;
    EXPECT_EQ(InterlockedIncrement(&counter) * 10 + InterlockedDecrement(&counter), 65);
    Thing* outer = new Thing;
    IUnknown* marshaler = nullptr;
    ASSERT_EQ(CoCreateFreeThreadedMarshaler(outer, &marshaler), S_OK);
    void* out = kGarbage;
    ASSERT_EQ(marshaler->QueryInterface(IID_IMarshal, &out), S_OK);
    EXPECT_EQ(out, marshaler);
    EXPECT_EQ(marshaler->Release(), 1u) << "its own count";
    ASSERT_EQ(marshaler->QueryInterface(IID_THING, &out), S_OK);
    EXPECT_EQ(out, static_cast<IUnknown*>(outer));
    EXPECT_EQ(outer->Release(), 1u) << "the outer's count";
    EXPECT_EQ(marshaler->QueryInterface(CLASS_B, &out), E_NOINTERFACE);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(marshaler->Release() + outer->Release() + live, 0);
}

TEST(Com, CoCreateInstanceAsksEachRegisteredServer)
{
    void* out = kGarbage;
    const auto create = [&](const GUID& clsid, IUnknown* outer = nullptr) {
        out = kGarbage;
        return CoCreateInstance(clsid, outer, CLSCTX_INPROC_SERVER, IID_THING, &out);
    };
    EXPECT_EQ(CoCreateInstance(CLASS_A, nullptr, CLSCTX_INPROC_SERVER, IID_THING, nullptr), E_POINTER);
    CoRegisterInProcessServer(serverA);
    CoRegisterInProcessServer(serverA);
    EXPECT_EQ(create(CLASS_B), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(asked, 1) << "a server registered twice is kept once";
    CoRevokeInProcessServer(serverA);
    EXPECT_EQ(create(CLASS_A), CLASS_E_CLASSNOTAVAILABLE) << "revoked";
    CoRegisterInProcessServer(serverA);
    CoRegisterInProcessServer(serverB);
    for (const GUID& clsid : {CLASS_A, CLASS_B}) {
        ASSERT_EQ(create(clsid), S_OK);
        EXPECT_EQ(static_cast<IUnknown*>(out)->Release(), 0u) << "one reference, the caller's";
    }
    Thing outer;
    EXPECT_EQ(create(CLASS_B, &outer), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(out, nullptr);
    CoRevokeInProcessServer(serverA);
    CoRevokeInProcessServer(serverB);
    EXPECT_EQ(live, 1) << "only the stack object is left";
}

const char* const EFFECT_TEXT = "{6888FDA5-1F1F-4662-9C9E-0765506D80EA}";

TEST(Guid, ReadsEachFieldAndWritesUpperCaseZeroPadded)
{
    const GUID effect = {0x6888FDA5, 0x1F1F, 0x4662, {0x9C, 0x9E, 0x07, 0x65, 0x50, 0x6D, 0x80, 0xEA}};
    ASSERT_TRUE(ParseGuid(EFFECT_TEXT).has_value());
    EXPECT_TRUE(*ParseGuid(EFFECT_TEXT) == effect);
    EXPECT_EQ(FormatGuid(effect), EFFECT_TEXT);
    EXPECT_EQ(FormatGuid(*ParseGuid("{ae0d7c31-95aa-11d0-b685-00a024191ae0}")), "{AE0D7C31-95AA-11D0-B685-00A024191AE0}");
    EXPECT_EQ(FormatGuid({0x1, 0x2, 0x3, {0, 0, 0, 0, 0, 0, 0, 0x4}}), "{00000001-0002-0003-0000-000000000004}");
    GUID near = effect;
    near.Data4[7] ^= 1;
    EXPECT_FALSE(near == effect) << "equality takes all sixteen bytes";
    // No braces, a wrong brace, short, long, not hex, a dash moved, text around.
    for (const char* text : {"", "6888FDA5-1F1F-4662-9C9E-0765506D80EA", "{6888FDA5-1F1F-4662-9C9E-0765506D80EA]",
                             "[6888FDA5-1F1F-4662-9C9E-0765506D80EA}", "{6888FDA5-1F1F-4662-9C9E-0765506D80E}",
                             "{6888FDA5-1F1F-4662-9C9E-0765506D80EAA}", "{6888FDA5-1F1F-4662-9C9E-0765506D80EG}",
                             "{6888FDA51-F1F-4662-9C9E-0765506D80EA}", "{6888FDA5-1F1F-4662-9C9E-0765506D80EA} "})
        EXPECT_FALSE(ParseGuid(text).has_value()) << text;
}

// Sorting by the order gives the order of the text: the fields count as
// numbers, not as their bytes in memory.
TEST(Guid, OrderFollowsTheText)
{
    std::vector<std::string> texts = {
        "{10000000-0000-0000-0000-000000000000}", "{00000001-0000-0000-0000-000000000000}",
        "{00000000-0100-0000-0000-000000000000}", "{00000000-0001-0000-0000-000000000000}",
        "{00000000-0000-0100-0000-000000000000}", "{00000000-0000-0001-0000-000000000000}",
        "{00000000-0000-0000-8000-000000000000}", "{00000000-0000-0000-0000-000000000001}"};
    std::vector<GUID> guids;
    for (const std::string& text : texts)
        guids.push_back(*ParseGuid(text));
    std::sort(guids.begin(), guids.end());
    std::sort(texts.begin(), texts.end());
    for (std::size_t i = 0; i < texts.size(); ++i)
        EXPECT_EQ(std::pair(FormatGuid(guids[i]), guids[i] < guids[i]), std::pair(texts[i], false)) << i;
}

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
        EXPECT_EQ(g->videoRange, f.code == 2) << f.name;
        EXPECT_EQ(hostFullScale(f.bytes), f.bytes == 1 ? 255.0f : f.bytes == 2 ? 16384.0f : 1.0f);
    }
    // Video range 16 to 235 at 8 bits, chroma 128 +- 112; 1.0 is 16384 in 2.14.
    EXPECT_EQ(std::tuple(kHostVideoBlack, kHostVideoSpan, kHostChromaZero, kHostChromaSpan, kHostFixedOne),
              std::tuple(16, 235 - 16, 128, 240 - 16, 1 << 14));
    GUID near = MFIF_RGBA_FLOAT;
    near.Data4[7] ^= 0x40;
    EXPECT_EQ(hostFormatCodeOf(near) + hostFormatCodeOf(IID_IUnknown), 0);
    EXPECT_EQ(hostBufferBytes(1, 0, 2) + hostBufferBytes(1, 2, -1) + hostBufferBytes(1, -2, 2) + hostBufferBytes(17, 2, 2), 0u);
}

// Owned buffers are cleared and of the format's size; a borrowed one is used as given.
TEST(MemoryImage, OwnsAClearedBufferOfTheFormatsSizeOrBorrowsOne)
{
    for (auto [format, width, height] :
         {std::tuple(&IID_IUnknown, 4, 4), {&MFIF_RGBA_RAW_32, 0, 4}, {&MFIF_RGBA_RAW_32, 4, -1}})
        EXPECT_EQ(MemoryImage::Create(*format, width, height), nullptr);
    // Two one-byte samples a pixel and a one-byte alpha plane.
    MemoryImage* owned = MemoryImage::Create(MFIF_CbYCrYA_24, 6, 5);
    ASSERT_NE(owned, nullptr);
    EXPECT_EQ(std::vector<uint8_t>(owned->Data(), owned->Data() + owned->Bytes()), std::vector<uint8_t>(6 * 5 * 3));
    EXPECT_EQ(owned->Release(), 0u);
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
    for (uint32_t left : {2u, 1u, 0u})  // one from Create, two from the queries
        EXPECT_EQ(image->Release(), left);
}

}  // namespace
