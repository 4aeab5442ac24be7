// The module as a COM server: class objects, aggregation, the marshaler, the
// unload count, registration; and the effect's defaults and identity.
#include "hostsdk/com.h"
#include "hostsdk/registration.h"
#include "module_fixture.h"

namespace {

using Module = ModuleFixture;

TEST_F(Module, ClassObjectsAndTheUnloadCount)
{
    EXPECT_EQ(module->DllCanUnloadNow(), S_OK);
    void* out = &out;
    const GUID unknownClass = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
    EXPECT_EQ(module->DllGetClassObject(unknownClass, IID_IClassFactory, &out), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(module->DllGetClassObject(CLSID_Plug, IID_IClassFactory, nullptr), E_POINTER);

    IDSImageEffect* effect = nullptr;
    {
        Ref<IClassFactory> factory;
        ASSERT_EQ(module->DllGetClassObject(CLSID_Plug, IID_IClassFactory, factory.out()), S_OK);
        EXPECT_EQ(module->DllCanUnloadNow(), S_FALSE);
        // Aggregation is refused and the object made for it is gone again.
        out = &out;
        EXPECT_EQ(factory->CreateInstance(factory.p, IID_IDSImageEffect, &out), CLASS_E_NOAGGREGATION);
        EXPECT_EQ(out, nullptr);
        // The free-threaded marshaler answers IID_IMarshal for the factory.
        Ref<IUnknown> marshaler;
        EXPECT_EQ(factory->QueryInterface(IID_IMarshal, marshaler.out()), S_OK);
        EXPECT_NE(marshaler.p, nullptr);
        EXPECT_EQ(factory->QueryInterface(IID_IDSImage, &out), E_NOINTERFACE);
        ASSERT_EQ(factory->CreateInstance(nullptr, IID_IDSImageEffect, reinterpret_cast<void**>(&effect)), S_OK);
    }
    EXPECT_EQ(module->DllCanUnloadNow(), S_FALSE);  // the effect still holds a count
    effect->Release();
    EXPECT_EQ(module->DllCanUnloadNow(), S_OK);
}

TEST_F(Module, RegistersItsClassesAndFamilies)
{
    ASSERT_EQ(module->DllRegisterServer(), S_OK);
    const std::vector<RegisteredEffect> effects = DSListRegisteredEffects();
    const std::pair<GUID, std::string> want[] = {
        {CLSID_Plug, "LumenveilVZ"}, {CLSID_PPG_PageOne, "VZ Lumenveil"}, {CLSID_IT, "Interactive Tool"}};
    for (const auto& [clsid, name] : want) {
        bool found = false;
        for (const RegisteredEffect& e : effects)
            found = found || (e.clsid == clsid && e.name == name);
        EXPECT_TRUE(found) << name;
    }
    const std::vector<RegisteredFamilies> families = DSListRegisteredFamilies();
    ASSERT_EQ(families.size(), 1u);
    EXPECT_EQ(families[0].families.size(), 4u);
    EXPECT_EQ(families[0].flags, 1);
    EXPECT_EQ(module->DllUnregisterServer(), S_OK);
    EXPECT_TRUE(DSListRegisteredEffects().empty());
    EXPECT_TRUE(DSListRegisteredFamilies().empty());
}

TEST_F(Module, NewEffectHasTheDefaultsAndItsIdentity)
{
    Ref<IDSImageEffect> effect(create());
    const std::pair<const GUID*, double> defaults[] = {
        {&PROPID_Shape, 0},         {&PROPID_MatchRadii, 1},     {&PROPID_RadiusX, 0.03},
        {&PROPID_RadiusY, 0.03},    {&PROPID_Sides, 6},          {&PROPID_Rotation, 0.0},
        {&PROPID_BrightEmphasis, 50.0}, {&PROPID_EmphasiseAlpha, 0}, {&PROPID_ExtremePrecision, 0},
        {&PROPID_CentreX, 0.5},     {&PROPID_CentreY, 0.5},      {&PROPID_RadiusPSF1, 0.1},
        {&PROPID_RadiusPSF2, 0.15}, {&PROPID_ChangeCount, 0}};
    for (const auto& [guid, value] : defaults)
        EXPECT_EQ(get(effect.p, *guid), value) << FormatGuid(*guid);
    EXPECT_NE(lumenveilOf(effect.p), nullptr);
    // Sixteen properties in the map; names as the table gives them.
    const CDSPropertiesMap* map = nullptr;
    ASSERT_EQ(properties(effect.p)->GetPropertiesMap(&map), S_OK);
    EXPECT_EQ(*map->count, 16u);
    EXPECT_STREQ(map->entries[2].definition->longName, "Radius X");
    EXPECT_EQ(map->entries[2].key, 0xFFFF0368u);

    DSFxInfo info{};
    EXPECT_EQ(effect->GetInfo(&info), E_INVALIDARG);
    info.structId = DSFXINFO_ID;
    ASSERT_EQ(effect->GetInfo(&info), S_OK);
    EXPECT_EQ(info.classId, CLSID_Plug);
    DSImgFxInfo image{};
    image.structId = DSIMGFXINFO_ID;
    ASSERT_EQ(effect->GetImageEffectInfo(&image), S_OK);
    EXPECT_EQ(image.value44, 8u);
    EXPECT_EQ(image.value72, 515u);
    EXPECT_EQ(effect->IsFormatSupported(MFIF_CbYCrY709A_FLOAT), S_OK);
    EXPECT_EQ(effect->IsFormatSupported(GUID{}), S_FALSE);
    // Verify wants an input as well as the output.
    Ref<MemoryImage> out(MemoryImage::Create(MFIF_RGBA_RAW_32, 8, 8));
    effect->SetOutput(out.p);
    EXPECT_EQ(effect->Verify(), E_POINTER);
}

}  // namespace
