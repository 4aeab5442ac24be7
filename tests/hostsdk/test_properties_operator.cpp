// PropertiesOperator: properties read at the current time in the type asked
// for, and written as keys or stored values by the autokey rule.
#include <gtest/gtest.h>

#include "hostsdk/PropertiesOperator.h"
#include "sample_effect.h"

namespace {

using namespace sample;

class Operator : public ::testing::Test {
protected:
    // The operator lets go of the last reference after this.
    void TearDown() override { EXPECT_EQ(unknown->Release(), 1u); }
    VARIANT read(const GUID& guid, VARTYPE type, double time = -1.0)
    {
        VARIANT v = var(type);
        EXPECT_EQ(op.GetAnimatedProperty(guid, &v, nullptr, time), S_OK);
        return v;
    }
    HRESULT write(const GUID& guid, VARIANT v, int undoStyle, double time = -1.0)
    {
        return op.SetAnimatedProperty(guid, &v, nullptr, undoStyle, time);
    }
    Effect* effect = new Effect;
    IUnknown* unknown = static_cast<IDSImageEffect*>(effect);
    PropertiesOperator op{unknown};
};

TEST_F(Operator, ReadsAtTheCurrentTimeInTheTypeAsked)
{
    EXPECT_EQ(references(unknown), 2u) << "the operator holds the object";
    effect->SetKey(RADIUS, 1.0, 20.0);
    effect->SetKey(RADIUS, 3.0, 40.0);
    op.SetCurrentTime(2.0);
    EXPECT_EQ(std::pair(read(RADIUS, VT_R8).dblVal, read(RADIUS, VT_R8, 3.0).dblVal), std::pair(30.0, 40.0));
    EXPECT_EQ(std::pair(read(RADIUS, VT_I4).vt, read(RADIUS, VT_I4).lVal), std::pair(VARTYPE(VT_I4), 30));
    EXPECT_EQ(std::pair(read(RADIUS, VT_EMPTY).vt, read(RADIUS, VT_EMPTY).dblVal), std::pair(VARTYPE(VT_R8), 30.0));
    EXPECT_EQ(std::pair(read(ENABLED, VT_BOOL).boolVal, read(SIDES, VT_UI4).ulVal), std::pair(int16_t(-1), 6u));
    effect->handle = 0x0123456789ABCDEFull;
    EXPECT_EQ(read(HANDLE, VT_UI8).ullVal, 0x0123456789ABCDEFull) << "64-bit handles pass whole";
    VARIANT v{};
    EXPECT_EQ(op.GetAnimatedProperty(CLASS, &v, nullptr, -1.0), E_INVALIDARG);
    EXPECT_EQ(PropertiesOperator(nullptr).GetAnimatedProperty(RADIUS, &v, nullptr, -1.0), E_NOINTERFACE);
    PropertiesOperator(unknown).SetCurrentTime(0.0);
    EXPECT_EQ(references(unknown), 2u) << "an operator lets go of the object when destroyed";
}

TEST_F(Operator, WritesFollowTheAutokeyRuleAndAreLogged)
{
    op.SetCurrentTime(2.0);
    ASSERT_EQ(write(RADIUS, var(VT_R8, 15), 1), S_OK);
    EXPECT_EQ(std::pair(effect->radius, effect->IsAnimated(RADIUS)), std::pair(15.0, false)) << "autokey off, no keys";
    op.SetAutoKey(true);
    ASSERT_EQ(write(RADIUS, var(VT_R8, 50), 2), S_OK);
    op.SetAutoKey(false);
    ASSERT_EQ(write(RADIUS, var(VT_I4, 70), 3, 4.0), S_OK);
    ASSERT_NE(effect->Keys(key(2)), nullptr);
    const auto& keys = *effect->Keys(key(2));
    ASSERT_EQ(keys.size(), 2u) << "autokey: a key at the current time; animated: a key";
    EXPECT_EQ(std::tuple(keys[0].time, keys[0].value, keys[1].time, keys[1].value), std::tuple(2.0, 50.0, 4.0, 70.0));
    EXPECT_EQ(effect->radius, 15.0);
    op.SetAutoKey(true);
    ASSERT_EQ(write(SHAPE, var(VT_I4, 2), 4), S_OK);
    EXPECT_EQ(effect->shape, 2) << "a plain property always takes the value";
    EXPECT_TRUE(FAILED(write(CLASS, var(VT_I4, 2), 5)));
    const auto& writes = op.Writes();
    ASSERT_EQ(writes.size(), 4u) << "failed writes are not logged";
    for (size_t i = 0; i < writes.size(); ++i)
        EXPECT_EQ(std::pair(writes[i].guid, writes[i].undoStyle), std::pair(i < 3 ? RADIUS : SHAPE, int(i) + 1));
    EXPECT_EQ(std::tuple(writes[2].value.lVal, writes[2].time), std::tuple(70, 4.0));
}

}  // namespace
