// The effect base (one object behind its interfaces, image references, the
// frame's region, copies), the host link, project properties and coordinates.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "hostsdk/content.h"
#include "hostsdk/image_formats.h"
#include "sample_effect.h"

namespace {

using namespace sample;

class EffectBase : public ::testing::Test {
protected:
    void TearDown() override
    {
        EXPECT_EQ(effect->Release(), 0u);
        EXPECT_EQ(input->Release() + output->Release(), 0u) << "the effect let go of its images";
    }
    Effect* effect = new Effect;
    MemoryImage* input = MemoryImage::Create(MFIF_RGBA_RAW_32, 10, 10);
    MemoryImage* output = MemoryImage::Create(MFIF_RGBA_RAW_32, 8, 6);
};

TEST_F(EffectBase, OneObjectWithOneCountAnswersThreeInterfaces)
{
    void* out[3] = {};
    const GUID* iids[3] = {&IID_IUnknown, &IID_IDSImageEffect, &IID_IDSProperties};
    for (int i = 0; i < 3; ++i)
        ASSERT_EQ(effect->QueryInterface(*iids[i], &out[i]), S_OK);
    EXPECT_EQ(out[1], static_cast<IDSImageEffect*>(effect));
    EXPECT_EQ(out[2], static_cast<IDSProperties*>(effect));
    EXPECT_EQ(static_cast<IDSProperties*>(out[2])->Release(), 3u);
    EXPECT_EQ(effect->QueryInterface(IID_IDSImage, &out[0]), E_NOINTERFACE);
    EXPECT_EQ(out[0], nullptr);
    effect->Release(), effect->Release();
    EXPECT_EQ(effect->IsFormatSupported(MFIF_CbYCrY709A_FLOAT), 0);
    EXPECT_EQ(effect->IsFormatSupported(IID_IDSImage), 1);
}

TEST_F(EffectBase, ImagesAreHeldAndReleasedAndTheRegionIsChecked)
{
    effect->SetInput(output);
    EXPECT_EQ(effect->PrepareData(), E_POINTER) << "no output";
    effect->SetInput(input);
    EXPECT_EQ(std::pair(references(input), references(output)), std::pair(2u, 1u)) << "the replaced one released";
    effect->SetOutput(output);
    ASSERT_EQ(effect->PrepareData(), S_OK);
    EXPECT_EQ(std::pair(effect->roiWidth, effect->roiHeight), std::pair(8, 6)) << "the whole output";
    EXPECT_NE(effect->preparedValues[0] * effect->preparedValues[1] * effect->preparedValues[2], 0u);
    // Input 10 x 10, output 8 x 6: input x, y, output x, y, width, height; the first two fit.
    const int32_t regions[][6] = {{2, 4, 0, 0, 8, 6}, {0, 0, 3, 2, 5, 4}, {0, 0, 0, 0, 0, 6},  {0, 0, 0, 0, 4, 0},
                                  {3, 0, 0, 0, 8, 6}, {0, 5, 0, 0, 8, 6}, {0, 0, 1, 0, 8, 6},  {0, 0, 0, 1, 8, 6},
                                  {0, 0, 0, -1, 4, 4}, {-1, 0, 0, 0, 4, 4}};
    for (const auto& r : regions) {
        const bool fits = &r < &regions[2];
        effect->SetROI(r[0], r[1], r[2], r[3], r[4], r[5]);
        EXPECT_EQ(effect->PrepareData(), fits ? S_OK : E_INVALIDARG) << r[0] << r[1] << r[2] << r[3] << r[4] << r[5];
        EXPECT_EQ(effect->preparedValues[2] != 0, fits);
    }
}

TEST_F(EffectBase, ACopyTakesSettingsButNoImagesBindingsOrAnimation)
{
    ImageEffectHost link;
    const int32_t selectors[4] = {0, 1, 0, 2};
    effect->SetSampleRate(29.97), effect->SetFieldMask(2), effect->SetChannelMask(selectors);
    effect->SetROI(1, 2, 3, 4, 5, 6), effect->SetEffectHost(&link), effect->SetInput(input);
    effect->SetKey(RADIUS, 1.0, 30.0);
    Effect* copy = new Effect(*effect);
    for (Effect* e : {effect, copy})
        EXPECT_EQ(std::tuple(e->sampleRate, e->fieldMask, e->channelSelect[3], e->inputRoiY, e->roiHeight, e->host),
                  std::tuple(29.97, 2u, 2, 2, 6, static_cast<IDSImageEffectHost*>(&link)));
    EXPECT_EQ(copy->inputImage, nullptr);
    EXPECT_EQ(references(input), 2u);
    VARIANT v{};
    EXPECT_EQ(copy->GetValue(RADIUS, &v), E_INVALIDARG) << "no bindings";
    EXPECT_FALSE(copy->IsAnimated(RADIUS));
    EXPECT_EQ(copy->Release(), 0u);
}

TEST(ImageEffectHost, InputsAreCountedAndAStopFromAnotherThreadIsSeen)
{
    MemoryImage* image = MemoryImage::Create(MFIF_RGBA_FLOAT, 2, 2);
    {
        ImageEffectHost link;
        link.SetInput(1, image);
        IUnknown* fetched = nullptr;
        ASSERT_EQ(link.FetchInput(1, 0.0, 0, &fetched), S_OK);
        EXPECT_EQ(fetched, static_cast<IUnknown*>(image));
        EXPECT_EQ(fetched->Release(), 2u) << "the fetch counted the caller's reference";
        EXPECT_EQ(link.FetchInput(2, 0.0, 0, &fetched), E_FAIL);
        EXPECT_EQ(fetched, nullptr);
        std::thread stopper([&] { link.Stop(); });
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        int32_t answer = 1, polls = 0;
        for (; answer != 0 && std::chrono::steady_clock::now() < deadline; ++polls)
            answer = link.ShouldContinue();
        stopper.join();
        EXPECT_EQ(std::pair(answer, link.Polls()), std::pair(0, polls));
    }
    EXPECT_EQ(image->Release(), 0u) << "the link released its reference";
}

TEST(ProjectAndCoordinates, FrameSizeAndPixelAspect)
{
    VARIANT w{}, h{};
    ASSERT_EQ(DSContentGetProperty(kProjectFrameWidth, &w), S_OK);
    ASSERT_EQ(DSContentGetProperty(kProjectFrameHeight, &h), S_OK);
    EXPECT_EQ(std::tuple(w.vt, w.dblVal, h.dblVal), std::tuple(VARTYPE(VT_R8), 720.0, 486.0));
    EXPECT_EQ(DSContentGetProperty(L"Project Frame Rate", &w), E_INVALIDARG);
    double x = 0, y = 0;
    ASSERT_EQ(CoordMan(0.9).MapVector(1.0, 1.0, &x, &y), S_OK);
    EXPECT_EQ(std::pair(x, y), std::pair(0.9, 1.0));
}

}  // namespace
