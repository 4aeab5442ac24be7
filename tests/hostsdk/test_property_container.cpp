// The property container: its map, values in bound members, keyed animation,
// copies of animation and defaults.
#include <gtest/gtest.h>

#include "sample_effect.h"

namespace {

using namespace sample;

class Container : public ::testing::Test {
protected:
    VARIANT get(const GUID& guid, double time = -1.0)
    {
        VARIANT v{};
        EXPECT_EQ(effect.GetValue(guid, &v, time), S_OK);
        return v;
    }
    Effect effect;
};

TEST_F(Container, MapIsCountedAndValuesGoThroughTheBoundMembers)
{
    EXPECT_EQ(effect.GetStaticEntryCount(), 5u);
    EXPECT_EQ(effect.FindEntry(RADIUS), &entries[2]);
    EXPECT_EQ(effect.FindEntry(key(3)), &entries[3]);
    EXPECT_EQ(effect.FindEntry(CLASS), nullptr);
    EXPECT_EQ(effect.SetValue(RADIUS, var(VT_I4, 7)), S_OK);
    ASSERT_EQ(effect.changes.size(), 1u);
    EXPECT_EQ(std::tuple(effect.radius, effect.changes[0].first, effect.changes[0].second.dblVal),
              std::tuple(7.0, RADIUS, 7.0));
    EXPECT_EQ(effect.SetValue(SHAPE, var(VT_R8, 2)) | effect.SetValue(ENABLED, var(VT_R8, 0)), S_OK);
    EXPECT_EQ(std::tuple(get(SHAPE).lVal, get(ENABLED).vt, effect.enabled), std::tuple(2, VARTYPE(VT_BOOL), 0));
    effect.enabled = 1;
    EXPECT_EQ(get(ENABLED).boolVal, -1) << "true is -1";
    VARIANT handle{VT_UI8, {}};
    handle.ullVal = 0x0123456789ABCDEFull;  // more bits than a double holds
    EXPECT_EQ(effect.SetValue(HANDLE, handle), S_OK);
    EXPECT_EQ(std::pair(effect.handle, get(HANDLE).ullVal), std::pair(handle.ullVal, handle.ullVal));
    EXPECT_EQ(effect.SetValue(CLASS, handle), E_INVALIDARG);
    EXPECT_EQ(effect.changes.size(), 4u);
}

TEST_F(Container, KeysInterpolateLinearlyAndHoldOutsideTheirSpan)
{
    for (auto [time, value] : {std::pair{5.0, 0.0}, {3.0, 60.0}, {1.0, 20.0}, {3.0, 40.0}})  // 60 is replaced
        ASSERT_EQ(effect.SetKey(RADIUS, time, value), S_OK);
    EXPECT_EQ(effect.SetKey(SHAPE, 1.0, 2.0), E_INVALIDARG) << "a plain property has no keys";
    EXPECT_EQ(std::tuple(effect.IsAnimated(RADIUS), effect.IsAnimated(SHAPE), effect.IsAnimated(SIDES)),
              std::tuple(true, false, false));
    // 20 at 1, 40 at 3, 0 at 5.
    for (auto [time, value] : {std::pair{0.0, 20.0}, {1, 20}, {2, 30}, {2.5, 35}, {3, 40}, {4.5, 10}, {5, 0}, {9, 0}}) {
        EXPECT_DOUBLE_EQ(get(RADIUS, time).dblVal, value) << "at " << time;
        EXPECT_DOUBLE_EQ(effect.GetValueDirect(key(2), 99.0, time), value) << "at " << time;
    }
    EXPECT_EQ(get(RADIUS, -1.0).dblVal, 10.0) << "time -1 asks for the stored value";
    effect.SetKey(SIDES, 0.0, 3.0);
    effect.SetKey(SIDES, 1.0, 6.0);
    // Rounded to the nearest: 4.8 and 3.6.
    EXPECT_EQ(effect.GetValueDirect(key(3), 99, 0.6), 5);
    EXPECT_EQ(effect.GetValueDirect(key(3), 99, 0.2), 4);
    EXPECT_EQ(get(SIDES, 0.6).lVal, 5);
    EXPECT_EQ(effect.GetValueDirect(key(0), 2, 0.6), 2) << "no keys: the stored value";
}

TEST_F(Container, AnimationCopiesWithoutValuesAndDefaultsClearIt)
{
    effect.SetKey(RADIUS, 0.0, 30.0);
    effect.SetKey(RADIUS, 2.0, 50.0);
    Effect other;
    other.CopyAnimation(effect);
    EXPECT_DOUBLE_EQ(other.GetValueDirect(key(2), 0.0, 1.0), 40.0);
    effect.shape = effect.enabled = 0, effect.radius = 1, effect.sides = 12, effect.handle = 42;
    EXPECT_EQ(effect.SetDefaults(), S_OK);
    EXPECT_EQ(std::tuple(effect.shape, effect.enabled, effect.radius, effect.sides), std::tuple(1, 1, 10.0, 6));
    EXPECT_EQ(effect.handle, 42u) << "hidden properties keep their value";
    EXPECT_FALSE(effect.IsAnimated(RADIUS));
    EXPECT_TRUE(other.IsAnimated(RADIUS)) << "the copy's keys are its own";
}

}  // namespace
