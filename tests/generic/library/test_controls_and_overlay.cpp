// The parameter block's controls on a property page (what Shape and Match
// Radii show, how values are read, widgets enabled and hidden), the overlay
// items on their own (a circle's chords, dashes and handle, a turned ellipse
// with three handles, the crosshair with its diagonals, handle hits, drags
// reaching the page and the properties), and the host link's abort check.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

#include "generic/library/LumenveilInfo.h"
#include "generic/library/PluginVZ.h"
#include "hostsdk/CDSBasePropertyPage.h"
#include "hostsdk/IDSImageEffectHost.h"
#include "page_fixture.h"

namespace {

using Controls = ControlsOnAPage<LumenveilInfo>;

TEST_F(Controls, ShapeAndMatchRadiiDecideWhatIsShown)
{
    // Hidden flags per shape, columns: sides, rotation, radiusX, radiusY,
    // matchRadii, centre, radiusPsf1, radiusPsf2. Polygon's radiusY follows
    // Match Radii (-1 here).
    const int hidden[4][8] = {{1, 1, 0, 1, 1, 1, 1, 1},
                              {1, 0, 0, 0, 1, 1, 1, 1},
                              {0, 0, 0, -1, 0, 1, 1, 1},
                              {1, 1, 1, 1, 1, 0, 0, 0}};
    const uint32_t ids[8] = {ID_SIDES, ID_ROTATION, ID_RADIUS_X, ID_RADIUS_Y, ID_MATCH_RADII, ID_CENTRE,
                             ID_RADIUS_PSF1, ID_RADIUS_PSF2};
    for (int shapeCode = 1; shapeCode <= 4; ++shapeCode)
        for (int match = 0; match <= 1; ++match) {
            // Match Radii alone changes RadiusY only: start from the other setting.
            select(shapeCode, 1 - match);
            fx.OnShapeChanged(&fx.shape, 0.0);
            page.GetHwndControl(ID_MATCH_RADII)->checkState = match;
            fx.OnMatchRadiiChanged(&fx.matchRadii, 0.0);
            for (int c = 0; c < 8; ++c) {
                const bool want = hidden[shapeCode - 1][c] < 0 ? match == 1 : hidden[shapeCode - 1][c] == 1;
                EXPECT_EQ(shown(ids[c]), !want) << "shape " << shapeCode << " match " << match << " col " << c;
                if (ids[c] != ID_MATCH_RADII) {
                    EXPECT_EQ(shown(ids[c] + 1), !want) << "second widget, col " << c;
                }
            }
            for (uint32_t always : {ID_BRIGHT_EMPHASIS, ID_EMPHASISE_ALPHA, ID_EXTREME_PRECISION})
                EXPECT_TRUE(shown(always));
        }
    // A Shape outside the list changes nothing.
    for (int32_t outside : {0, 5}) {
        select(outside, 0);
        fx.OnShapeChanged(&fx.shape, 0.0);
        fx.OnMatchRadiiChanged(&fx.matchRadii, 0.0);
        EXPECT_TRUE(shown(ID_CENTRE) && !shown(ID_SIDES) && !shown(ID_RADIUS_Y)) << outside;  // Image's
    }
}

TEST_F(Controls, WidgetsFollowTheDisabledAndHiddenFlagsAndTheFlagsAreKeptWithoutAPage)
{
    // Centre has four widgets, RadiusX two: the widget after them is another's.
    page.AddControl(ID_RADIUS_X + 2);
    page.AddControl(ID_CENTRE + 4);
    fx.centre.SetDisabled(true);
    fx.radiusX.SetHidden(true);
    for (uint32_t w = 0; w < 4; ++w)
        EXPECT_FALSE(page.GetHwndControl(ID_CENTRE + w)->enabled) << w;
    EXPECT_FALSE(shown(ID_RADIUS_X) || shown(ID_RADIUS_X + 1));
    EXPECT_TRUE(page.GetHwndControl(ID_CENTRE + 4)->enabled && shown(ID_RADIUS_X + 2));
    EXPECT_EQ(std::pair(fx.centre.disabled, fx.radiusX.hidden), std::pair(uint8_t{1}, uint8_t{1}));
    fx.centre.SetDisabled(false);
    EXPECT_TRUE(page.GetHwndControl(ID_CENTRE + 3)->enabled);
    fx.sides.page = nullptr;
    fx.sides.SetHidden(true);
    EXPECT_EQ(fx.sides.hidden, 1);
    EXPECT_TRUE(shown(ID_SIDES));
}

TEST_F(Controls, ReadersTakeTheirWidgetOrTheAnimatedProperty)
{
    // List: selection plus one, its value member untouched; check box: 1 only
    // when checked, stored in its value.
    fx.shape.value = 1;
    page.GetHwndControl(ID_SHAPE)->selection = 2;
    int32_t got = 0;
    fx.shape.GetValue(-1.0, &got);
    EXPECT_EQ(got, 3);
    EXPECT_EQ(fx.shape.value, 1);
    for (int32_t state : {BST_CHECKED, BST_INDETERMINATE, BST_UNCHECKED}) {
        page.GetHwndControl(ID_EMPHASISE_ALPHA)->checkState = state;
        fx.emphasiseAlpha.GetValue(0.0, &got);
        EXPECT_EQ(got, state == BST_CHECKED ? 1 : 0);
        EXPECT_EQ(fx.emphasiseAlpha.value, got);
    }
    // Animated readers ask the page for the property, the time divided by the rate.
    page.SetProperty(guids[2], VariantReal(0.125));
    page.SetProperty(guids[4], VariantReal(9.0));
    page.SetProperty(guids[9], VariantReal(0.25));
    page.SetProperty(guidY, VariantReal(0.75));
    double real = -1.0, y = -1.0;
    fx.radiusX.GetValue(-1.0, &real);
    EXPECT_EQ(page.asked, -1.0);  // now stays now
    EXPECT_EQ(real, 0.125);
    fx.sides.GetValue(50.0, &got);
    EXPECT_EQ(page.asked, 2.0);  // frame 50 at 25 frames a second
    EXPECT_EQ(got, 9);
    fx.centre.GetValue(100.0, &real, &y);
    EXPECT_EQ(std::tuple(page.asked, real, y), std::tuple(4.0, 0.25, 0.75));
}

// The overlay items on their own, over a 200 x 100 frame.
class OverlayItems : public Controls {
protected:
    void SetUp() override
    {
        Controls::SetUp();
        frame.imageWidth = 200;
        frame.imageHeight = 100;
        for (OverlayControlVZ* item : std::initializer_list<OverlayControlVZ*>{&fx.crosshair, &fx.innerCircle})
            item->owner = &frame;
    }
    template <class Item> std::vector<Primitive> draw(Item& item) { return drawnBy(item, surface); }

    OverlayVZ frame;
    DrawingSurface surface;
};

TEST_F(OverlayItems, ACircleIsYellowChordsOfAboutFourPixelsClosedDashedEveryOtherAndNoneBelowFivePixels)
{
    // Centre (100, 50), radius 0.1 of the width: 10 px; the x handle alone, grey.
    CircleOverlayVZ& circle = fx.innerCircle;
    circle.centre[0] = circle.centre[1] = 0.5f;
    circle.radius[0] = circle.radius[1] = 0.1f;
    circle.singleHandle = 1;
    // Chords of 4 px on a width of 20: a step of 360 / (20 pi / 4) degrees, at most 36.
    const auto stepFor = [](double width) { return std::min(36.0, double(float(360.0 / (M_PI * width / 4.0)))); };
    const double step = stepFor(20.0);
    const int chords = int(360.0 / step);
    for (const int dashed : {0, 1}) {
        circle.dashed = dashed;
        const std::vector<Primitive> drawn = draw(circle);
        ASSERT_FALSE(drawn.empty());
        // Solid: one chord a step from 0 to 360 degrees, and one closing; dashed: every other.
        EXPECT_EQ(int(drawn.size()) - 1, dashed ? (chords + 1) / 2 + 1 : chords + 1);
        for (size_t i = 0; i + 1 < drawn.size(); ++i) {
            EXPECT_EQ(drawn[i].mode, GL_LINES);
            EXPECT_EQ(drawn[i].colour, (std::array<float, 4>{1, 1, 0, 1}));
            for (const auto& [x, y] : drawn[i].points)
                EXPECT_NEAR(std::hypot(x - 100.0, y - 50.0), 10.0, 1e-3);
        }
        // The closing chord joins the point at angle 0 to the last one.
        const Primitive& closing = drawn[drawn.size() - 2];
        EXPECT_NEAR(closing.points[0].first, 110.0, 1e-4);
        EXPECT_NEAR(closing.points[0].second, 50.0, 1e-4);
        EXPECT_NEAR(closing.points[1].first, 100.0 + 10.0 * std::cos(chords * step * M_PI / 180.0), 1e-3);
        EXPECT_EQ(drawn.back().mode, GL_QUADS);
        EXPECT_EQ(quadCentre(drawn.back()), std::pair(110.0f, 50.0f));
        EXPECT_EQ(drawn.back().colour, (std::array<float, 4>{0.5f, 0.5f, 0.5f, 1}));
    }
    // Radius 3 px: the step is capped at 36 degrees; radius 2 px, a width of 4: the handle alone.
    circle.dashed = 0;
    circle.radius[0] = circle.radius[1] = 0.03f;
    EXPECT_EQ(int(draw(circle).size()) - 1, int(360.0 / stepFor(6.0)) + 1);
    circle.radius[0] = circle.radius[1] = 0.02f;
    const std::vector<Primitive> handleOnly = draw(circle);
    ASSERT_EQ(handleOnly.size(), 1u);
    EXPECT_EQ(quadCentre(handleOnly[0]), std::pair(102.0f, 50.0f));
}

TEST_F(OverlayItems, ATurnedEllipseHasItsHandlesAtZeroMinusNinetyAndMinusFortyFiveDegrees)
{
    // Centre (100, 50); radii 0.2 and 0.1 of the width: 20 and 10 px; turned 30 degrees.
    CircleOverlayVZ& circle = fx.innerCircle;
    circle.centre[0] = circle.centre[1] = 0.5f;
    circle.radius[0] = 0.2f;
    circle.radius[1] = 0.1f;
    circle.rotation = 30.0f;
    circle.singleHandle = 0;
    const double t = M_PI / 6;
    // The point at angle a of the ellipse, turned by t about the centre.
    const auto onEllipse = [t](double a) {
        const double u = 20 * std::cos(a), v = 10 * std::sin(a);
        return std::pair(100 + u * std::cos(t) - v * std::sin(t), 50 + u * std::sin(t) + v * std::cos(t));
    };
    const std::vector<Primitive> drawn = draw(circle);
    ASSERT_GE(drawn.size(), 4u);
    // Every chord's ends lie on the turned ellipse.
    for (size_t i = 0; i + 3 < drawn.size(); ++i)
        for (const auto& [x, y] : drawn[i].points) {
            const double dx = x - 100.0, dy = y - 50.0;
            const double u = dx * std::cos(t) + dy * std::sin(t), v = -dx * std::sin(t) + dy * std::cos(t);
            EXPECT_NEAR(u * u / 400 + v * v / 100, 1.0, 1e-4) << x << ", " << y;
        }
    // Then the x, y and diagonal handles, half-size 5.
    const double angles[3] = {0.0, -M_PI / 2, -M_PI / 4};
    for (int h = 0; h < 3; ++h) {
        const Primitive& quad = drawn[drawn.size() - 3 + h];
        ASSERT_EQ(quad.mode, GL_QUADS);
        EXPECT_NEAR(quad.points[2].first - quad.points[0].first, 10.0, 1e-4);
        const auto [x, y] = onEllipse(angles[h]);
        EXPECT_NEAR(quadCentre(quad).first, x, 1e-3) << h;
        EXPECT_NEAR(quadCentre(quad).second, y, 1e-3) << h;
    }
}

TEST_F(OverlayItems, TheYHandleSetsRadiusYAndTheDiagonalScalesBothRadiiByThePointersX)
{
    CircleOverlayVZ& circle = fx.innerCircle;
    circle.controlA = &fx.radiusX;
    circle.controlB = &fx.radiusY;
    circle.centre[0] = circle.centre[1] = 0.5f;
    circle.radius[0] = 0.2f;
    circle.radius[1] = 0.1f;
    circle.rotation = 30.0f;
    circle.singleHandle = 0;
    const std::vector<Primitive> drawn = draw(circle);
    const auto [yx, yy] = quadCentre(drawn[drawn.size() - 2]);
    // The y handle dragged to 15 px from the centre: RadiusY 2 x 15 / 200, shown,
    // then written at release; RadiusX untouched.
    circle.Mouse(OVERLAY_PRESS, yx, yy);
    EXPECT_EQ(circle.activeHandle, CIRCLE_HANDLE_Y);
    circle.Mouse(OVERLAY_DRAG, 100.0f + 9.0f, 50.0f + 12.0f);
    EXPECT_NEAR(circle.radius[1], 0.15, 1e-6);
    EXPECT_NEAR(page.GetHwndControl(ID_RADIUS_Y)->value.dblVal, 0.15, 1e-6);
    EXPECT_EQ(page.GetHwndControl(ID_RADIUS_X)->value.vt, VT_EMPTY);
    circle.Mouse(OVERLAY_RELEASE, 109.0f, 62.0f);
    ASSERT_EQ(page.Writes().size(), 1u);
    EXPECT_EQ(page.Writes()[0].guid.Data1, guids[3].Data1);
    EXPECT_NEAR(page.Writes()[0].value.dblVal, 0.15, 1e-6);
    EXPECT_EQ(circle.activeHandle, CIRCLE_HANDLE_NONE);

    // The diagonal handle, drawn anew, taken 1.5 times as far from the centre along
    // x (its y does not count): both radii grow by 1.5, to 0.3 and 0.225, and both
    // are written.
    const std::vector<Primitive> again = draw(circle);
    const auto [dx, dy] = quadCentre(again.back());
    circle.Mouse(OVERLAY_PRESS, dx, dy);
    EXPECT_EQ(circle.activeHandle, CIRCLE_HANDLE_DIAGONAL);
    const float pointerX = 100.0f + 1.5f * (dx - 100.0f);
    circle.Mouse(OVERLAY_DRAG, pointerX, 3.0f);
    EXPECT_NEAR(circle.radius[0], 0.3, 1e-5);
    EXPECT_NEAR(circle.radius[1], 0.225, 1e-5);
    circle.Mouse(OVERLAY_RELEASE, pointerX, 3.0f);
    ASSERT_EQ(page.Writes().size(), 3u);
    EXPECT_EQ(std::pair(page.Writes()[1].guid.Data1, page.Writes()[2].guid.Data1),
              std::pair(guids[2].Data1, guids[3].Data1));
    EXPECT_NEAR(page.Writes()[1].value.dblVal, 0.3, 1e-5);
    EXPECT_NEAR(page.Writes()[2].value.dblVal, 0.225, 1e-5);
}

TEST_F(OverlayItems, CrosshairDiagonalsAtHalfTheOffsetsAndItsDragMovesTheCentre)
{
    // At (50, 50) with zoom 2: strokes from 10 / 2 to 25 / 2 px on each axis, the
    // diagonals from 2.5 to 6.25 px on both axes.
    CrosshairOverlayVZ& cross = fx.crosshair;
    frame.zoom = 2.0f;
    cross.position[0] = 0.25f;
    cross.position[1] = 0.5f;
    cross.diagonals = 1;
    const std::vector<Primitive> drawn = draw(cross);
    ASSERT_EQ(drawn.size(), 9u);
    std::set<std::vector<std::pair<float, float>>> strokes, want;
    for (int i = 0; i < 8; ++i)
        strokes.insert(drawn[i].points);
    for (const float s : {1.0f, -1.0f}) {
        want.insert({{50 + 5 * s, 50}, {50 + 12.5f * s, 50}});
        want.insert({{50, 50 + 5 * s}, {50, 50 + 12.5f * s}});
        for (const float t : {1.0f, -1.0f})
            want.insert({{50 + 2.5f * s, 50 + 2.5f * t}, {50 + 6.25f * s, 50 + 6.25f * t}});
    }
    EXPECT_EQ(strokes, want);
    EXPECT_EQ(drawn[0].colour, (std::array<float, 4>{1, 1, 1, 1}));
    // The handle, half-size 5 / 2, closed on its first corner.
    EXPECT_EQ(drawn[8].points, (std::vector<std::pair<float, float>>{
                                   {47.5f, 47.5f}, {52.5f, 47.5f}, {52.5f, 52.5f}, {47.5f, 52.5f}, {47.5f, 47.5f}}));

    // A handle is hit strictly inside its square: presses on the rim grab nothing.
    cross.controlA = &fx.centre;
    for (const auto& [x, y] : {std::pair{52.5f, 50.0f}, {47.5f, 50.0f}, {50.0f, 52.5f}, {50.0f, 47.5f}}) {
        cross.Mouse(OVERLAY_PRESS, x, y);
        EXPECT_EQ(cross.activeHandle, 0) << x << ", " << y;
        cross.Mouse(OVERLAY_DRAG, 80.0f, 80.0f);
        cross.Mouse(OVERLAY_RELEASE, 80.0f, 80.0f);
    }
    EXPECT_TRUE(page.Writes().empty());
    // Dragged to (100, 25): the page's two number widgets follow, the
    // properties are written at release, x then y.
    cross.Mouse(OVERLAY_PRESS, 51.0f, 49.0f);
    cross.Mouse(OVERLAY_DRAG, 100.0f, 25.0f);
    EXPECT_EQ(std::pair(page.GetHwndControl(ID_CENTRE)->value.dblVal, page.GetHwndControl(ID_CENTRE + 1)->value.dblVal),
              std::pair(0.5, 0.25));
    EXPECT_TRUE(page.Writes().empty());
    cross.Mouse(OVERLAY_RELEASE, 100.0f, 25.0f);
    ASSERT_EQ(page.Writes().size(), 2u);
    EXPECT_EQ(std::pair(page.Writes()[0].guid.Data1, page.Writes()[1].guid.Data1), std::pair(guids[9].Data1, guidY.Data1));
    EXPECT_EQ(std::pair(page.Writes()[0].value.dblVal, page.Writes()[1].value.dblVal), std::pair(0.5, 0.25));
    for (const auto& write : page.Writes())  // one undo step each, at the current time
        EXPECT_EQ(std::pair(write.undoStyle, write.time), std::pair(1, -1.0));
}

TEST(PluginVZ, ShouldAbortStopsOnAnAnswerOfZeroOrLess)
{
    struct Monitor : IDSImageEffectHost {
        int32_t answer = 1;
        HRESULT FetchInput(int32_t, double, uint64_t, IUnknown**) override { return E_FAIL; }
        int32_t ShouldContinue() override { return answer; }
    } monitor;
    PluginVZ plugin;
    EXPECT_EQ(PluginVZ::ShouldAbort(&plugin), 0);  // no host link: go on
    plugin.renderMonitor = &monitor;
    for (int32_t answer : {1, 7, 0, -1}) {
        monitor.answer = answer;
        EXPECT_EQ(PluginVZ::ShouldAbort(&plugin), answer > 0 ? 0 : 1) << answer;
    }
}

}  // namespace
