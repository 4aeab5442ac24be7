// A Lumenveil on a property page with all its widgets: UpdateControls, and the
// overlay of the image aperture, what it draws and how drags reach the page and
// the properties. The controls and overlay items themselves are tested with
// the parameter block (tests/generic/library).
#include <gtest/gtest.h>

#include <cmath>

#include "effect/Lumenveil.h"
#include "hostsdk/CDSBasePropertyPage.h"
#include "hostsdk/gl.h"
#include "../generic/library/page_fixture.h"

namespace {

using Page = ControlsOnAPage<Lumenveil>;

TEST_F(Page, UpdateControlsAppliesShapesTableThenMatchRadii)
{
    // Image shows the centre and hides sides; Polygon without Match Radii shows RadiusY.
    select(SHAPE_IMAGE, 1);
    fx.UpdateControls();
    EXPECT_TRUE(shown(ID_CENTRE) && !shown(ID_SIDES) && !shown(ID_RADIUS_Y));
    select(SHAPE_POLYGON, 0);
    fx.UpdateControls();
    EXPECT_TRUE(!shown(ID_CENTRE) && shown(ID_SIDES) && shown(ID_RADIUS_Y));
}

// A drawn primitive: its mode, vertices, and the colour in force.
struct Primitive {
    GLenum mode;
    std::vector<std::pair<float, float>> points;
    float colour[4];
};

class Overlay : public Page {
protected:
    void SetUp() override
    {
        Page::SetUp();
        fx.imageWidth = 200;
        fx.imageHeight = 100;
        fx.zoom = 2.0f;
        fx.shape.value = SHAPE_IMAGE;
        fx.radiusPsf1.value = 0.1;  // 10 px: the x handle at (110, 50)
        fx.radiusPsf2.value = 0.3;  // 30 px: at (130, 50)
        fx.centre.x = fx.centre.y = 0.5;
        drawingMakeCurrent(&surface);
    }
    void TearDown() override { drawingMakeCurrent(nullptr); }
    std::vector<Primitive> draw()
    {
        surface.calls.clear();
        fx.Draw();
        std::vector<Primitive> drawn;
        float colour[4] = {0, 0, 0, 0};
        for (const DrawCall& call : surface.calls)
            if (call.kind == DrawCall::COLOUR)
                std::copy(call.v, call.v + 4, colour);
            else if (call.kind == DrawCall::BEGIN)
                drawn.push_back({call.mode, {}, {colour[0], colour[1], colour[2], colour[3]}});
            else if (call.kind == DrawCall::VERTEX)
                drawn.back().points.emplace_back(call.v[0], call.v[1]);
        return drawn;
    }
    // The angle step in degrees of chords of about 4 px on a circle of 10 px.
    const double step = float(360.0 / (M_PI * 20.0 / 4.0));
    DrawingSurface surface;
};

TEST_F(Overlay, CrosshairCirclesAndHandlesWhereTheFrameSaysForTheImageShapeOnly)
{
    fx.shape.value = SHAPE_POLYGON;
    EXPECT_TRUE(draw().empty());
    EXPECT_EQ(fx.crosshair.visible + fx.innerCircle.visible + fx.outerCircle.visible, 0);
    fx.shape.value = SHAPE_IMAGE;
    fx.radiusPsf2.value = 0.02;  // 2 px: a width of 4, below 5: no ellipse, but its handle
    const std::vector<Primitive> drawn = draw();
    // Crosshair at (100, 50): white strokes from 10 / 2 to 25 / 2 px on each axis,
    // then its grey handle of half-size 5 / 2, closed on its first corner.
    const std::vector<std::vector<std::pair<float, float>>> crosshair = {
        {{105, 50}, {112.5f, 50}}, {{95, 50}, {87.5f, 50}}, {{100, 55}, {100, 62.5f}}, {{100, 45}, {100, 37.5f}},
        {{97.5f, 47.5f}, {102.5f, 47.5f}, {102.5f, 52.5f}, {97.5f, 52.5f}, {97.5f, 47.5f}}};
    ASSERT_GE(drawn.size(), 5u);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(drawn[i].mode, i < 4 ? GL_LINES : GL_QUADS);
        EXPECT_EQ(drawn[i].points, crosshair[i]);
        EXPECT_EQ(drawn[i].colour[2], i < 4 ? 1.0f : 0.5f);
    }
    // The inner circle, yellow: one chord per step from 0 to 360 degrees, the
    // last one closing.
    size_t i = 5;
    for (; i < drawn.size() && drawn[i].mode == GL_LINES; ++i) {
        EXPECT_EQ(drawn[i].colour[2], 0.0f);
        for (const auto& [x, y] : drawn[i].points)
            EXPECT_NEAR(std::hypot(x - 100.0, y - 50.0), 10.0, 1e-3);
    }
    EXPECT_EQ(int(i - 5), int(360.0 / step) + 1);
    // Then the handles: inner at (110, 50), outer at (102, 50) with no ellipse.
    ASSERT_EQ(drawn.size(), i + 2);
    EXPECT_NEAR(drawn[i].points[0].first, 110.0 - 2.5, 1e-4);
    EXPECT_NEAR(drawn[i + 1].points[0].first, 102.0 - 2.5, 1e-4);
    // An outer circle as big as the inner: the lines after the inner circle's
    // handle are its dashes.
    fx.radiusPsf2.value = 0.1;
    std::vector<Primitive> dashed;
    const std::vector<Primitive> both = draw();
    for (size_t j = 5, quads = 0; j < both.size(); ++j)
        if (both[j].mode == GL_QUADS)
            ++quads;
        else if (quads == 1)
            dashed.push_back(both[j]);
    const int chords = int(360.0 / step);
    EXPECT_EQ(int(dashed.size()), (chords + 1) / 2 + 1);
    // The closing segment joins the point at angle 0 to the last point.
    const Primitive& closing = dashed.back();
    EXPECT_NEAR(closing.points[0].first, 110.0, 1e-4);
    EXPECT_NEAR(closing.points[0].second, 50.0, 1e-4);
    EXPECT_NEAR(closing.points[1].first, 100.0 + 10.0 * std::cos(chords * step * M_PI / 180.0), 1e-3);
}

TEST_F(Overlay, DragsShowOnThePageAndCommitAtRelease)
{
    draw();
    // A press that misses every handle grabs nothing; a release without a press
    // changes nothing.
    for (int event : {OVERLAY_PRESS, OVERLAY_DRAG, OVERLAY_RELEASE})
        fx.Mouse(event, 150.0f, 80.0f);
    // A handle is hit strictly inside 5 / zoom = 2.5 px of it: its rim is outside.
    for (const auto& [x, y] : {std::pair{132.5f, 50.0f}, {127.5f, 50.0f}, {130.0f, 52.5f}, {130.0f, 47.5f}}) {
        fx.Mouse(OVERLAY_PRESS, x, y);
        EXPECT_EQ(fx.outerCircle.activeHandle, 0) << x << ", " << y;
        fx.Mouse(OVERLAY_RELEASE, x, y);
    }
    EXPECT_TRUE(page.Writes().empty());
    EXPECT_EQ(page.GetHwndControl(ID_RADIUS_PSF2)->value.vt, VT_EMPTY);
    // The outer circle's x handle, dragged 10 px further out: 2 x 40 / 200.
    fx.Mouse(OVERLAY_PRESS, 130.5f, 50.0f);
    EXPECT_EQ(fx.outerCircle.activeHandle, CIRCLE_HANDLE_X);
    EXPECT_EQ(fx.innerCircle.activeHandle + fx.crosshair.activeHandle, 0);
    fx.Mouse(OVERLAY_DRAG, 140.0f, 50.0f);
    EXPECT_DOUBLE_EQ(page.GetHwndControl(ID_RADIUS_PSF2)->value.dblVal, double(2.0f * 40.0f / 200.0f));
    EXPECT_TRUE(page.Writes().empty());
    fx.Mouse(OVERLAY_RELEASE, 140.0f, 50.0f);
    ASSERT_EQ(page.Writes().size(), 1u);
    EXPECT_EQ(page.Writes()[0].guid.Data1, guids[11].Data1);
    EXPECT_DOUBLE_EQ(page.Writes()[0].value.dblVal, double(2.0f * 40.0f / 200.0f));
    EXPECT_EQ(page.Writes()[0].undoStyle, 1);
    EXPECT_EQ(page.Writes()[0].time, -1.0);
    EXPECT_EQ(fx.outerCircle.activeHandle, 0);
}

}  // namespace
