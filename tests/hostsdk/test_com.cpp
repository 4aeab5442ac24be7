// COM basics: GUIDs, counters, the free-threaded marshaler and CoCreateInstance.
#include <gtest/gtest.h>

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

}  // namespace
