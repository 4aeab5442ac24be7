// Lumenveil Depth through the module, as a host drives it: its class, its
// property map sharing the plain effect's declarations, and its Depth input,
// whose absence or bad shape is an error that leaves the output untouched.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "host/DepthProperties.h"
#include "host/LumenveilProperties.h"
#include "host/Plug.h"
#include "host/PlugDepth.h"
#include "hostsdk/CDSInteractiveTool.h"
#include "hostsdk/CDSPropertyPage.h"
#include "hostsdk/IDSImage.h"
#include "hostsdk/IDSImageEffect.h"
#include "hostsdk/IDSImageEffectHost.h"
#include "hostsdk/IDSProperties.h"
#include "hostsdk/com.h"
#include "hostsdk/depth_input.h"
#include "hostsdk/image_formats.h"
#include "hostsdk/module_library.h"

namespace {

constexpr int W = 32, H = 24;

class DepthEffect : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        std::string error;
        module = ModuleLibrary::Open(LUMENVEIL_MODULE_PATH, &error).release();
        ASSERT_NE(module, nullptr) << error;
    }
    static void TearDownTestSuite() { delete module; }

    ComRef<IDSImageEffect> create(const GUID& clsid)
    {
        ComRef<IClassFactory> factory;
        EXPECT_EQ(module->DllGetClassObject(clsid, IID_IClassFactory, factory.out()), S_OK);
        ComRef<IDSImageEffect> effect;
        EXPECT_EQ(factory->CreateInstance(nullptr, IID_IDSImageEffect, effect.out()), S_OK);
        return effect;
    }
    static const CDSPropertiesMap* mapOf(IDSImageEffect* effect)
    {
        const ComRef<IDSProperties> props = ComRef<IDSProperties>::Query(effect, IID_IDSProperties);
        const CDSPropertiesMap* map = nullptr;
        props->GetPropertiesMap(&map);
        return map;
    }
    static const CDSPropertiesMapEntry* entry(const CDSPropertiesMap* map, const GUID& guid)
    {
        for (const CDSPropertiesMapEntry* e = map->entries; e->count != 0; ++e)
            if (e->definition && e->definition->guid == guid)
                return e;
        return nullptr;
    }
    void SetUp() override
    {
        effect = create(CLSID_PlugDepth);
        input = ComRef<MemoryImage>(MemoryImage::Create(MFIF_RGBA_RAW_32, W, H));
        output = ComRef<MemoryImage>(MemoryImage::Create(MFIF_RGBA_RAW_32, W, H));
        for (size_t i = 0; i < input->Bytes(); ++i)
            input->Data()[i] = static_cast<uint8_t>(i % 4 == 3 ? 255 : (i * 37) % 256);
        effect->SetEffectHost(&host);
        effect->SetInput(input.get());
        effect->SetOutput(output.get());
    }
    // A float R G B A depth picture of w x h, every depth `z`.
    void connectDepth(const GUID& format, int w, int h, float z)
    {
        depth = ComRef<MemoryImage>(MemoryImage::Create(format, w, h));
        if (format == MFIF_RGBA_FLOAT)
            for (int i = 0; i < w * h * 4; ++i)
                reinterpret_cast<float*>(depth->Data())[i] = z;
        host.SetInput(DS_INPUT_DEPTH, depth.get());
    }
    // Executes with the output filled with 7s; whether it is still all 7s.
    bool outputUntouched(HRESULT expected)
    {
        std::memset(output->Data(), 7, output->Bytes());
        EXPECT_EQ(effect->Execute(0.0), expected);
        const std::vector<uint8_t> sevens(output->Bytes(), 7);
        return std::memcmp(output->Data(), sevens.data(), sevens.size()) == 0;
    }

    static inline ModuleLibrary* module = nullptr;
    ImageEffectHost host;
    ComRef<IDSImageEffect> effect;
    ComRef<MemoryImage> input, output, depth;
};

TEST_F(DepthEffect, SharesThePlainEffectsDeclarationsAndKeepsItsMapApart)
{
    const ComRef<IDSImageEffect> plain = create(CLSID_Plug);
    const CDSPropertiesMap* plainMap = mapOf(plain.get());
    const CDSPropertiesMap* depthMap = mapOf(effect.get());
    ASSERT_NE(plainMap, depthMap);
    EXPECT_EQ(*plainMap->count, 20u);
    for (const GUID* shared : {&PROPID_Shape, &PROPID_RadiusX, &PROPID_Sides, &PROPID_Rotation, &PROPID_BrightEmphasis,
                               &PROPID_EmphasiseAlpha, &PROPID_Engine, &PROPID_LumenveilHandle})
        EXPECT_EQ(entry(depthMap, *shared)->definition, entry(plainMap, *shared)->definition) << FormatGuid(*shared);
    for (const GUID* own : {&PROPID_RadiusInfinity, &PROPID_Focus, &PROPID_FStop, &PROPID_DepthKind})
        EXPECT_EQ(entry(plainMap, *own), nullptr) << FormatGuid(*own);
    EXPECT_EQ(entry(depthMap, PROPID_Linear), nullptr);  // the depth render is a 16-bit one
    EXPECT_EQ(entry(depthMap, PROPID_FocalLength)->definition->defaultValue, 50.0);
    DSFxInfo info{};
    info.structId = DSFXINFO_ID;
    ASSERT_EQ(effect->GetInfo(&info), S_OK);
    EXPECT_EQ(info.classId, CLSID_PlugDepth);
}

TEST_F(DepthEffect, MissingOrBadDepthIsAnErrorThatWritesNothing)
{
    EXPECT_TRUE(outputUntouched(E_INVALIDARG)) << "no depth";
    connectDepth(MFIF_RGBA_RAW_32, W, H, 1.0f);
    EXPECT_TRUE(outputUntouched(E_INVALIDARG)) << "8-bit depth";
    connectDepth(MFIF_RGBA_FLOAT, W, H - 1, 1.0f);
    EXPECT_TRUE(outputUntouched(E_INVALIDARG)) << "depth smaller than the frame";
    // Depth at the focus (Focus 1 by default) everywhere: the frame comes back.
    connectDepth(MFIF_RGBA_FLOAT, W, H, 1.0f);
    EXPECT_FALSE(outputUntouched(S_OK));
    EXPECT_EQ(std::memcmp(output->Data(), input->Data(), input->Bytes()), 0);
}

TEST_F(DepthEffect, TheModuleServesItsPageAndFocusPicker)
{
    auto make = [](const GUID& clsid) {
        ComRef<IClassFactory> factory;
        ComRef<IUnknown> object;
        EXPECT_EQ(module->DllGetClassObject(clsid, IID_IClassFactory, factory.out()), S_OK) << FormatGuid(clsid);
        if (factory) {
            EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, object.out()), S_OK);
        }
        return object;
    };
    const ComRef<IUnknown> pageObject = make(CLSID_PPG_DepthPage);
    ASSERT_TRUE(pageObject);
    CDSPropertyPage* page = nullptr;
    ASSERT_EQ(pageObject->QueryInterface(IID_IDSPropertyPage, reinterpret_cast<void**>(&page)), S_OK);
    ASSERT_EQ(page->OpenOn(effect.get()), S_OK);
    const std::string text = page->DescribeState();
    page->Close();
    pageObject->Release();  // the query's reference
    for (const char* label : {"Shape ", "Bright Emphasis ", "Use Lens ", "Radius Infinity ", "Focus ", "Depth Kind "})
        EXPECT_NE(text.find(label), std::string::npos) << label << "\n" << text;
    const ComRef<IUnknown> picker = make(CLSID_DepthIT);
    ASSERT_TRUE(picker);
    CDSInteractiveTool* tool = nullptr;
    ASSERT_EQ(picker->QueryInterface(IID_IDSInteractiveTool, reinterpret_cast<void**>(&tool)), S_OK);
    picker->Release();
}

}  // namespace
