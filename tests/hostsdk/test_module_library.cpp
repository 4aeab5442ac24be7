// The module loader: refusals with one clear message, a good module's entry
// points called through it, and the file unloaded when the loader goes.
#include <gtest/gtest.h>

#include <dlfcn.h>

#include <algorithm>
#include <fstream>
#include <string>

#include "hostsdk/module_library.h"
#include "hostsdk/registration.h"
#include "modules/test_module_ids.h"

namespace {

constexpr GUID OTHER_CLASS = {0x0BADC0DE, 0, 0, {0, 0, 0, 0, 0, 0, 0, 1}};
constexpr GUID ANY_INTERFACE = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

bool contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

bool isLoaded(const char* path)
{
    void* handle = dlopen(path, RTLD_NOW | RTLD_NOLOAD);
    if (handle)
        dlclose(handle);
    return handle != nullptr;
}

TEST(ModuleLibrary, RefusesAMissingFile)
{
    const std::string path = ::testing::TempDir() + "no_such_module.so";
    std::string error;
    EXPECT_EQ(ModuleLibrary::Open(path, &error), nullptr);
    EXPECT_EQ(error, "no module file at " + path);
    EXPECT_EQ(ModuleLibrary::Open(path, nullptr), nullptr) << "the message is optional";
}

TEST(ModuleLibrary, RefusesAFileThatIsNotASharedLibrary)
{
    const std::string path = ::testing::TempDir() + "lumenveil_not_a_module.txt";
    std::ofstream(path) << "plain text, not a module\n";
    std::string error;
    EXPECT_EQ(ModuleLibrary::Open(path, &error), nullptr);
    EXPECT_TRUE(contains(error, path + " is not a loadable module: ")) << error;
    std::remove(path.c_str());
}

TEST(ModuleLibrary, NamesTheEntryPointsALibraryLacks)
{
    std::string error;
    EXPECT_EQ(ModuleLibrary::Open(LV_TEST_PARTIAL_MODULE, &error), nullptr);
    EXPECT_EQ(error, std::string(LV_TEST_PARTIAL_MODULE) + " is not a module: it lacks DllRegisterServer, DllUnregisterServer");
    EXPECT_FALSE(isLoaded(LV_TEST_PARTIAL_MODULE)) << "a refused library is not kept";
}

TEST(ModuleLibrary, CallsTheEntryPointsOfAGoodModule)
{
    std::string error = "untouched";
    std::unique_ptr<ModuleLibrary> module = ModuleLibrary::Open(LV_TEST_GOOD_MODULE, &error);
    ASSERT_NE(module, nullptr) << error;
    EXPECT_EQ(error, "untouched");
    EXPECT_EQ(module->Path(), LV_TEST_GOOD_MODULE);

    void* object = &error;
    EXPECT_EQ(module->DllGetClassObject(OTHER_CLASS, ANY_INTERFACE, &object), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(object, nullptr);
    ASSERT_EQ(module->DllGetClassObject(TEST_MODULE_CLASS, ANY_INTERFACE, &object), S_OK);
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(*static_cast<int*>(object), 1) << "the module counted one call that served its class";
    EXPECT_EQ(module->DllCanUnloadNow(), S_FALSE);

    // The module registers with the one registry that the host sees.
    const auto registered = [] {
        const std::vector<RegisteredEffect> effects = DSListRegisteredEffects();
        return std::find_if(effects.begin(), effects.end(), [](const RegisteredEffect& e) {
                   return e.clsid == TEST_MODULE_CLASS && e.name == TEST_MODULE_NAME;
               }) != effects.end();
    };
    EXPECT_EQ(module->DllRegisterServer(), S_OK);
    EXPECT_TRUE(registered());
    EXPECT_EQ(module->DllUnregisterServer(), S_OK);
    EXPECT_FALSE(registered());
}

TEST(ModuleLibrary, UnloadsWhenItGoes)
{
    std::unique_ptr<ModuleLibrary> module = ModuleLibrary::Open(LV_TEST_GOOD_MODULE, nullptr);
    ASSERT_NE(module, nullptr);
    EXPECT_TRUE(isLoaded(LV_TEST_GOOD_MODULE));
    module.reset();
    EXPECT_FALSE(isLoaded(LV_TEST_GOOD_MODULE));
}

}  // namespace
