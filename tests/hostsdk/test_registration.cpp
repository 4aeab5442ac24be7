// The registry of effect classes and their families, and the module loader.
#include <gtest/gtest.h>

#include <dlfcn.h>

#include <algorithm>
#include <fstream>

#include "hostsdk/com.h"
#include "hostsdk/module_library.h"
#include "hostsdk/registration.h"
#include "modules/test_module_ids.h"

namespace {

constexpr GUID CLASS_A = {0xA0000001, 0x1, 0x2, {1, 2, 3, 4, 5, 6, 7, 8}};
constexpr GUID CLASS_B = {0xB0000002, 0x1, 0x2, {1, 2, 3, 4, 5, 6, 7, 8}};
constexpr GUID FAMILIES[] = {{0xF0000001, 0, 0, {1}}, {0xF0000002, 0, 0, {2}}, {0xF0000003, 0, 0, {3}}};

// The entry for `clsid` in a list, null if none.
template <typename Entry> const Entry* find(const std::vector<Entry>& entries, const GUID& clsid)
{
    const auto found = std::find_if(entries.begin(), entries.end(), [&](const Entry& e) { return e.clsid == clsid; });
    return found == entries.end() ? nullptr : &*found;
}
const RegisteredEffect* effect(const GUID& clsid)
{
    static std::vector<RegisteredEffect> effects;  // outlives the answer
    return find(effects = DSListRegisteredEffects(), clsid);
}
std::vector<GUID> familiesOf(const GUID& clsid)
{
    const std::vector<RegisteredFamilies> all = DSListRegisteredFamilies();
    const RegisteredFamilies* entry = find(all, clsid);
    return entry ? entry->families : std::vector<GUID>{};
}

TEST(Registration, EffectsAreListedInOrderRenamedAndRemoved)
{
    int module = 0;
    EXPECT_EQ(DSRegisterCOMEffect(CLASS_A, &module, "First") | DSRegisterCOMEffect(CLASS_B, &module, "Second"), S_OK);
    const std::vector<RegisteredEffect> effects = DSListRegisteredEffects();
    const RegisteredEffect* a = find(effects, CLASS_A);
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(std::pair(a->name, a->instance), std::pair(std::string("First"), static_cast<void*>(&module)));
    EXPECT_LT(a, find(effects, CLASS_B)) << "listed in order of registration";
    const std::size_t count = effects.size();
    EXPECT_EQ(DSRegisterCOMEffect(CLASS_A, &module, "Renamed"), S_OK);
    EXPECT_EQ(std::pair(DSListRegisteredEffects().size(), effect(CLASS_A)->name), std::pair(count, std::string("Renamed")));
    EXPECT_EQ(DSUnregisterCOMEffect(CLASS_A), S_OK);
    EXPECT_EQ(DSUnregisterCOMEffect(CLASS_A), S_FALSE);
    EXPECT_EQ(DSUnregisterCOMEffect(CLASS_B), S_OK);
    EXPECT_EQ(effect(CLASS_A), effect(CLASS_B));
    EXPECT_EQ(effect(CLASS_A), nullptr);
    EXPECT_EQ(DSRegisterCOMEffect(CLASS_A, nullptr, nullptr), E_POINTER);
}

TEST(Registration, FamiliesGatherWithoutRepeatsAndLeaveWhenEmpty)
{
    const GUID* firstTwo = FAMILIES;
    const GUID* lastTwo = FAMILIES + 1;
    EXPECT_EQ(DSRegisterObjectFamilies(CLASS_A, 2, firstTwo, 1, "Families", nullptr), S_OK);
    EXPECT_EQ(DSRegisterObjectFamilies(CLASS_A, 2, lastTwo, 3, "Families", nullptr), S_OK);
    EXPECT_EQ(familiesOf(CLASS_A), std::vector<GUID>(FAMILIES, FAMILIES + 3));
    const std::vector<RegisteredFamilies> all = DSListRegisteredFamilies();
    EXPECT_EQ(std::pair(find(all, CLASS_A)->flags, find(all, CLASS_A)->name), std::pair(3, std::string("Families")));
    EXPECT_EQ(DSUnregisterObjectFamilies(CLASS_A, 2, firstTwo, nullptr), S_OK);
    EXPECT_EQ(familiesOf(CLASS_A), std::vector<GUID>{FAMILIES[2]});
    EXPECT_EQ(DSUnregisterObjectFamilies(CLASS_A, 2, firstTwo, nullptr), S_FALSE) << "none of them listed now";
    EXPECT_EQ(DSUnregisterObjectFamilies(CLASS_A, 2, lastTwo, nullptr), S_OK);
    EXPECT_EQ(find(DSListRegisteredFamilies(), CLASS_A), nullptr) << "an empty entry leaves";
    // Empty or null lists are refused and register nothing.
    EXPECT_EQ(DSRegisterObjectFamilies(CLASS_B, 0, FAMILIES, 1, "Name", nullptr), E_INVALIDARG);
    EXPECT_EQ(DSRegisterObjectFamilies(CLASS_B, 1, nullptr, 1, "Name", nullptr), E_POINTER);
    EXPECT_EQ(DSRegisterObjectFamilies(CLASS_B, 1, FAMILIES, 1, nullptr, nullptr), E_POINTER);
    EXPECT_EQ(find(DSListRegisteredFamilies(), CLASS_B), nullptr);
}

bool isLoaded(const char* path)
{
    void* handle = dlopen(path, RTLD_NOW | RTLD_NOLOAD);
    return handle && !dlclose(handle);
}

TEST(ModuleLibrary, RefusesWhatIsNotAModuleWithOneMessage)
{
    const std::string missing = ::testing::TempDir() + "no_such_module.so";
    const std::string text = ::testing::TempDir() + "lumenveil_not_a_module.txt";
    std::ofstream(text) << "plain text, not a module\n";
    const std::string partial = LV_TEST_PARTIAL_MODULE;
    // The path, the message, and whether the message is whole or the loader's reason follows.
    const std::tuple<std::string, std::string, bool> cases[] = {
        {missing, "no module file at " + missing, true},
        {text, text + " is not a loadable module: ", false},
        {partial, partial + " is not a module: it lacks DllRegisterServer, DllUnregisterServer", true}};
    for (const auto& [path, message, whole] : cases) {
        std::string error;
        EXPECT_EQ(ModuleLibrary::Open(path, &error), nullptr);
        EXPECT_EQ(whole ? error : error.substr(0, message.size()), message);
        EXPECT_GT(error.size(), whole ? 0 : message.size()) << error;
        EXPECT_EQ(ModuleLibrary::Open(path, nullptr), nullptr) << "the message is optional";
    }
    std::remove(text.c_str());
    EXPECT_FALSE(isLoaded(LV_TEST_PARTIAL_MODULE)) << "a refused library is not kept";
}

TEST(ModuleLibrary, CallsTheEntryPointsOfAGoodModuleAndUnloadsWhenItGoes)
{
    std::string error;
    std::unique_ptr<ModuleLibrary> module = ModuleLibrary::Open(LV_TEST_GOOD_MODULE, &error);
    ASSERT_NE(module, nullptr) << error;
    EXPECT_TRUE(isLoaded(LV_TEST_GOOD_MODULE));
    void* object = nullptr;
    ASSERT_EQ(module->DllGetClassObject(TEST_MODULE_CLASS, IID_IUnknown, &object), S_OK);
    EXPECT_EQ(*static_cast<int*>(object), 1) << "the module counted one call that served its class";
    EXPECT_EQ(module->DllCanUnloadNow(), S_FALSE);
    // The module registers with the one registry that the host sees.
    EXPECT_EQ(module->DllRegisterServer(), S_OK);
    ASSERT_NE(effect(TEST_MODULE_CLASS), nullptr);
    EXPECT_EQ(effect(TEST_MODULE_CLASS)->name, TEST_MODULE_NAME);
    EXPECT_EQ(module->DllUnregisterServer(), S_OK);
    EXPECT_EQ(effect(TEST_MODULE_CLASS), nullptr);
    module.reset();
    EXPECT_FALSE(isLoaded(LV_TEST_GOOD_MODULE));
}

}  // namespace
