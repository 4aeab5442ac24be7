// COM basics: counters, the free-threaded marshaler and CoCreateInstance; GUID
// text read and written, malformed text refused, the order of the text.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "hostsdk/com.h"

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
    EXPECT_EQ(CoCreateFreeThreadedMarshaler(outer, nullptr), E_POINTER);
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
    EXPECT_EQ(marshaler->QueryInterface(IID_IMarshal, nullptr), E_POINTER);
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
    EXPECT_EQ(create(IID_THING), CLASS_E_CLASSNOTAVAILABLE);
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
    const char* const malformed[] = {
        "", "6888FDA5-1F1F-4662-9C9E-0765506D80EA",                                          // no braces
        "{6888FDA5-1F1F-4662-9C9E-0765506D80EA", "{6888FDA5-1F1F-4662-9C9E-0765506D80EA]",   // closing brace
        "[6888FDA5-1F1F-4662-9C9E-0765506D80EA}", "{6888FDA5-1F1F-4662-9C9E-0765506D80E}",   // opening; short
        "{6888FDA5-1F1F-4662-9C9E-0765506D80EAA}", "{6888FDA5-1F1F-4662-9C9E-0765506D80EG}",  // long; not hex
        "{6888FDA51-F1F-4662-9C9E-0765506D80EA}", "{6888FDA5-1F1F-4662-9C9E+0765506D80EA}",   // dashes
        "{6888FDA5-1F1F-4662-9C9E-0765506D80EA} ", " {6888FDA5-1F1F-4662-9C9E-0765506D80EA}", // text around
        "{6888FDA5-1F1F-4662-9C9E-0765506D 0EA}"};
    for (const char* text : malformed)
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
        "{00000000-0000-0000-8000-000000000000}", "{00000000-0000-0000-0000-000000000001}",
        "{00000000-0000-0000-0000-000000000000}", "{FFFFFFFF-0000-0000-0000-000000000000}",
    };
    std::vector<GUID> guids;
    for (const std::string& text : texts)
        guids.push_back(*ParseGuid(text));
    std::sort(guids.begin(), guids.end());
    std::sort(texts.begin(), texts.end());
    for (std::size_t i = 0; i < texts.size(); ++i) {
        EXPECT_EQ(FormatGuid(guids[i]), texts[i]) << "position " << i;
        EXPECT_FALSE(guids[i] < guids[i]);
    }
}

}  // namespace
