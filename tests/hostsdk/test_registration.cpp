// The registry of effect classes and their families.
#include <gtest/gtest.h>

#include <algorithm>

#include "hostsdk/registration.h"

namespace {

constexpr GUID CLASS_A = {0xA0000001, 0x1, 0x2, {1, 2, 3, 4, 5, 6, 7, 8}};
constexpr GUID CLASS_B = {0xB0000002, 0x1, 0x2, {1, 2, 3, 4, 5, 6, 7, 8}};
constexpr GUID FAMILY_1 = {0xF0000001, 0, 0, {0, 0, 0, 0, 0, 0, 0, 1}};
constexpr GUID FAMILY_2 = {0xF0000002, 0, 0, {0, 0, 0, 0, 0, 0, 0, 2}};
constexpr GUID FAMILY_3 = {0xF0000003, 0, 0, {0, 0, 0, 0, 0, 0, 0, 3}};

template <typename Entry>
const Entry* findEntry(const std::vector<Entry>& entries, const GUID& clsid)
{
    const auto found = std::find_if(entries.begin(), entries.end(), [&](const Entry& e) { return e.clsid == clsid; });
    return found == entries.end() ? nullptr : &*found;
}

TEST(Registration, EffectsAreListedRenamedAndRemoved)
{
    int module = 0;
    EXPECT_EQ(DSRegisterCOMEffect(CLASS_A, &module, "First"), S_OK);
    EXPECT_EQ(DSRegisterCOMEffect(CLASS_B, &module, "Second"), S_OK);
    std::vector<RegisteredEffect> effects = DSListRegisteredEffects();
    const RegisteredEffect* a = findEntry(effects, CLASS_A);
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(a->name, "First");
    EXPECT_EQ(a->instance, &module);
    EXPECT_LT(a, findEntry(effects, CLASS_B)) << "listed in order of registration";

    EXPECT_EQ(DSRegisterCOMEffect(CLASS_A, &module, "Renamed"), S_OK);
    effects = DSListRegisteredEffects();
    EXPECT_EQ(std::count_if(effects.begin(), effects.end(), [](const RegisteredEffect& e) { return e.clsid == CLASS_A; }), 1);
    EXPECT_EQ(findEntry(effects, CLASS_A)->name, "Renamed");

    EXPECT_EQ(DSUnregisterCOMEffect(CLASS_A), S_OK);
    EXPECT_EQ(DSUnregisterCOMEffect(CLASS_A), S_FALSE);
    EXPECT_EQ(DSUnregisterCOMEffect(CLASS_B), S_OK);
    effects = DSListRegisteredEffects();
    EXPECT_EQ(findEntry(effects, CLASS_A), nullptr);
    EXPECT_EQ(findEntry(effects, CLASS_B), nullptr);
    EXPECT_EQ(DSRegisterCOMEffect(CLASS_A, nullptr, nullptr), E_POINTER);
}

TEST(Registration, FamiliesGatherWithoutRepeatsAndLeaveWhenEmpty)
{
    const GUID firstTwo[] = {FAMILY_1, FAMILY_2};
    const GUID lastTwo[] = {FAMILY_2, FAMILY_3};
    EXPECT_EQ(DSRegisterObjectFamilies(CLASS_A, 2, firstTwo, 1, "Families", nullptr), S_OK);
    EXPECT_EQ(DSRegisterObjectFamilies(CLASS_A, 2, lastTwo, 1, "Families", nullptr), S_OK);
    std::vector<RegisteredFamilies> all = DSListRegisteredFamilies();
    const RegisteredFamilies* entry = findEntry(all, CLASS_A);
    ASSERT_NE(entry, nullptr);
    ASSERT_EQ(entry->families.size(), 3u);
    EXPECT_TRUE(entry->families[0] == FAMILY_1);
    EXPECT_TRUE(entry->families[1] == FAMILY_2);
    EXPECT_TRUE(entry->families[2] == FAMILY_3);
    EXPECT_EQ(entry->flags, 1);
    EXPECT_EQ(entry->name, "Families");

    EXPECT_EQ(DSUnregisterObjectFamilies(CLASS_A, 2, firstTwo, nullptr), S_OK);
    all = DSListRegisteredFamilies();
    ASSERT_NE(findEntry(all, CLASS_A), nullptr);
    ASSERT_EQ(findEntry(all, CLASS_A)->families.size(), 1u);
    EXPECT_TRUE(findEntry(all, CLASS_A)->families[0] == FAMILY_3);
    EXPECT_EQ(DSUnregisterObjectFamilies(CLASS_A, 2, firstTwo, nullptr), S_FALSE) << "none of them listed now";
    EXPECT_EQ(DSUnregisterObjectFamilies(CLASS_A, 2, lastTwo, nullptr), S_OK);
    EXPECT_EQ(findEntry(DSListRegisteredFamilies(), CLASS_A), nullptr);
    EXPECT_EQ(DSUnregisterObjectFamilies(CLASS_B, 2, lastTwo, nullptr), S_FALSE);
}

TEST(Registration, FamilyCallsRefuseEmptyOrNullLists)
{
    const GUID one[] = {FAMILY_1};
    EXPECT_EQ(DSRegisterObjectFamilies(CLASS_B, 0, one, 1, "Name", nullptr), E_INVALIDARG);
    EXPECT_EQ(DSRegisterObjectFamilies(CLASS_B, 1, nullptr, 1, "Name", nullptr), E_POINTER);
    EXPECT_EQ(DSRegisterObjectFamilies(CLASS_B, 1, one, 1, nullptr, nullptr), E_POINTER);
    EXPECT_EQ(findEntry(DSListRegisteredFamilies(), CLASS_B), nullptr);
    EXPECT_EQ(DSUnregisterObjectFamilies(CLASS_B, 0, one, nullptr), E_INVALIDARG);
    EXPECT_EQ(DSUnregisterObjectFamilies(CLASS_B, 1, nullptr, nullptr), E_POINTER);
}

}  // namespace
