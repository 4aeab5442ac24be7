// When Render rebuilds the kernel, counted by the engine's PrepareKernel calls.
#include "hostsdk/IDSImageEffectHost.h"
#include "render_fixture.h"

namespace {

using KernelCache = RenderFixture;

TEST_F(KernelCache, StillApertureIsBuiltOnceAndEachShapingValueRebuilds)
{
    frames(64, 48);
    render();
    render();
    EXPECT_EQ(builds(), 1u);

    // Sides counts even for a circle, whose picture it does not change.
    fx.sides.value = 7;
    render();
    EXPECT_EQ(builds(), 2u);
    // Another frame size with the same values.
    frames(80, 48);
    render();
    EXPECT_EQ(builds(), 3u);
    // A new shape, a new pixel aspect.
    fx.shape.value = SHAPE_ELLIPSE;
    render();
    EXPECT_EQ(builds(), 4u);
    out->pixelAspect[0] = 1.25;
    render();
    EXPECT_EQ(builds(), 5u);
    render();
    EXPECT_EQ(builds(), 5u);
}

TEST_F(KernelCache, ChangesBelowTheToleranceKeepTheKernelHoweverFarTheyDrift)
{
    frames(64, 48);
    render();
    // A step of exactly 0.01 rebuilds; 0.009 does not.
    fx.rotation.value = 0.01;
    render();
    EXPECT_EQ(builds(), 2u);
    fx.rotation.value = 0.019;
    render();
    EXPECT_EQ(builds(), 2u);
    // A drift of 0.009 a frame is compared with the previous frame each time.
    for (int i = 1; i <= 20; ++i) {
        fx.rotation.value = 0.019 + 0.009 * i;
        // The pixel radius 0.05 x 0.5 x 64 = 1.6 drifts by 0.009 px a frame too.
        fx.radiusX.value = (1.6 + 0.009 * i) / 32.0;
        render();
    }
    EXPECT_EQ(builds(), 2u);
    EXPECT_NEAR(fx.lastRotation, 0.199, 1e-6);
    // A NaN counts as a change: the engine refuses that build, and the next
    // frame, back at the old value, differs from the NaN it follows.
    fx.rotation.value = std::nan("");
    render();
    fx.rotation.value = 0.199;
    render();
    EXPECT_EQ(builds(), 3u);
}

TEST_F(KernelCache, MatchRadiiRebuildsAPolygonOnlyWhenTheRadiiDiffer)
{
    frames(720, 8);
    fx.shape.value = SHAPE_POLYGON;
    fx.radiusX.value = fx.radiusY.value = 0.1;
    render();
    fx.matchRadii.value = 0;  // 36 px both ways: the same kernel
    render();
    EXPECT_EQ(builds(), 1u);
    fx.radiusY.value = 0.2;  // now 72 px against 36
    render();
    EXPECT_EQ(builds(), 2u);
    fx.matchRadii.value = 1;
    render();
    EXPECT_EQ(builds(), 3u);
    // A circle never reads RadiusY.
    fx.shape.value = SHAPE_CIRCLE;
    render();
    fx.radiusY.value = 0.3;
    render();
    EXPECT_EQ(builds(), 4u);
}

TEST_F(KernelCache, ImageApertureIsRebuiltOnEveryFrame)
{
    frames(64, 48, true);
    fx.shape.value = SHAPE_IMAGE;
    for (int i = 0; i < 3; ++i)
        render();
    EXPECT_EQ(builds(), 3u);
    // Without a Spread record no kernel is built at all.
    spread.reset();
    render();
    EXPECT_EQ(builds(), 3u);
}

}  // namespace

namespace {

// A host link whose answer the test sets.
struct Monitor : IDSImageEffectHost {
    int32_t answer = 1;
    HRESULT FetchInput(int32_t, double, uint64_t, IUnknown**) override { return E_FAIL; }
    int32_t ShouldContinue() override { return answer; }
};

TEST(PluginVZ, ShouldAbortStopsOnAnAnswerOfZeroOrLess)
{
    PluginVZ plugin;
    EXPECT_EQ(PluginVZ::ShouldAbort(&plugin), 0);  // no host link: go on
    Monitor monitor;
    plugin.renderMonitor = &monitor;
    for (int32_t answer : {1, 7, 0, -1}) {
        monitor.answer = answer;
        EXPECT_EQ(PluginVZ::ShouldAbort(&plugin), answer > 0 ? 0 : 1) << answer;
    }
}

}  // namespace
