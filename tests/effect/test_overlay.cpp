// The overlay of the image aperture: what it draws, and how drags reach the
// page during the drag and the properties at release.
#include <cmath>

#include "hostsdk/gl.h"
#include "page_fixture.h"

namespace {

// A drawn primitive: its mode, vertices, and the colour in force.
struct Primitive {
    GLenum mode;
    std::vector<std::pair<float, float>> points;
    float colour[4];
};

std::vector<Primitive> primitives(const DrawingSurface& surface)
{
    std::vector<Primitive> out;
    float colour[4] = {0, 0, 0, 0};
    for (const DrawCall& call : surface.calls) {
        if (call.kind == DrawCall::COLOUR)
            std::copy(call.v, call.v + 4, colour);
        else if (call.kind == DrawCall::BEGIN)
            out.push_back({call.mode, {}, {colour[0], colour[1], colour[2], colour[3]}});
        else if (call.kind == DrawCall::VERTEX)
            out.back().points.emplace_back(call.v[0], call.v[1]);
    }
    return out;
}

class Overlay : public PageFixture {
protected:
    void SetUp() override
    {
        PageFixture::SetUp();
        fx.imageWidth = 200;
        fx.imageHeight = 100;
        fx.zoom = 2.0f;
        fx.shape.value = SHAPE_IMAGE;
        fx.centre.x = fx.centre.y = 0.5;
        fx.radiusPsf1.value = 0.1;  // 10 px: the x handle at (110, 50)
        fx.radiusPsf2.value = 0.3;  // 30 px: at (130, 50)
        drawingMakeCurrent(&surface);
    }
    void TearDown() override { drawingMakeCurrent(nullptr); }
    std::vector<Primitive> draw()
    {
        surface.calls.clear();
        fx.Draw();
        return primitives(surface);
    }
    DrawingSurface surface;
};

TEST_F(Overlay, DrawsOnlyForTheImageShape)
{
    fx.shape.value = SHAPE_POLYGON;
    EXPECT_TRUE(draw().empty());
    EXPECT_EQ(fx.crosshair.visible, 0);
    EXPECT_EQ(fx.outerCircle.visible, 0);
}

TEST_F(Overlay, CrosshairCirclesAndHandlesWhereTheFrameSays)
{
    fx.radiusPsf2.value = 0.02;  // 2 px: a width of 4, below 5: no ellipse, but its handle
    const std::vector<Primitive> drawn = draw();
    // Crosshair at (100, 50): strokes from 10 / 2 to 25 / 2 px on each axis, white.
    ASSERT_GE(drawn.size(), 5u);
    const std::pair<float, float> strokes[4][2] = {{{105, 50}, {112.5f, 50}}, {{95, 50}, {87.5f, 50}},
                                                   {{100, 55}, {100, 62.5f}}, {{100, 45}, {100, 37.5f}}};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(drawn[i].mode, GL_LINES);
        EXPECT_EQ(drawn[i].points[0], strokes[i][0]);
        EXPECT_EQ(drawn[i].points[1], strokes[i][1]);
        EXPECT_EQ(drawn[i].colour[0], 1.0f);
        EXPECT_EQ(drawn[i].colour[2], 1.0f);
    }
    // Its handle: a grey quad of half-size 5 / 2, closed on its first corner.
    EXPECT_EQ(drawn[4].mode, GL_QUADS);
    const std::vector<std::pair<float, float>> corners = {
        {97.5f, 47.5f}, {102.5f, 47.5f}, {102.5f, 52.5f}, {97.5f, 52.5f}, {97.5f, 47.5f}};
    EXPECT_EQ(drawn[4].points, corners);
    EXPECT_EQ(drawn[4].colour[0], 0.5f);
    // Inner circle, radius 10 px, yellow: chords of about 4 px, so the step is
    // 360 / (pi x 20 / 4) degrees; the angles 0 to 360 give that many chords, the
    // last of them the closing one.
    const double step = float(360.0 / (3.141592653589793 * 20.0 / 4.0));
    const int angles = int(360.0 / step) + 1;
    size_t i = 5;
    int lines = 0;
    for (; i < drawn.size() && drawn[i].mode == GL_LINES; ++i, ++lines) {
        EXPECT_EQ(drawn[i].colour[2], 0.0f);
        for (const auto& [x, y] : drawn[i].points)
            EXPECT_NEAR(std::hypot(x - 100.0, y - 50.0), 10.0, 1e-3);
    }
    EXPECT_EQ(lines, angles);
    // Then the handles: inner at (110, 50), outer at (102, 50) with no ellipse.
    ASSERT_EQ(drawn.size(), i + 2);
    EXPECT_EQ(drawn[i].mode, GL_QUADS);
    EXPECT_NEAR(drawn[i].points[0].first, 110.0 - 2.5, 1e-4);
    EXPECT_NEAR(drawn[i + 1].points[0].first, 102.0 - 2.5, 1e-4);
}

TEST_F(Overlay, DashedCircleDrawsEverySecondChordAndClosesSolid)
{
    fx.radiusPsf1.value = fx.radiusPsf2.value = 0.1;
    std::vector<Primitive> drawn = draw();
    std::vector<Primitive> dashed;
    bool afterFirstQuad = false;
    for (size_t i = 5; i < drawn.size(); ++i) {
        if (drawn[i].mode == GL_QUADS) {
            afterFirstQuad = true;
            continue;
        }
        if (afterFirstQuad)
            dashed.push_back(drawn[i]);
    }
    const double step = float(360.0 / (3.141592653589793 * 20.0 / 4.0));
    const int chords = int(360.0 / step);  // between successive angles
    EXPECT_EQ(int(dashed.size()), (chords + 1) / 2 + 1);
    // The closing segment joins the point at angle 0 to the last point.
    const Primitive& closing = dashed.back();
    EXPECT_NEAR(closing.points[0].first, 110.0, 1e-4);
    EXPECT_NEAR(closing.points[0].second, 50.0, 1e-4);
    const double last = chords * step * 3.141592653589793 / 180.0;
    EXPECT_NEAR(closing.points[1].first, 100.0 + 10.0 * std::cos(last), 1e-3);
}

TEST_F(Overlay, DragsShowOnThePageAndCommitAtRelease)
{
    draw();
    // A press that misses every handle grabs nothing; a release without a press
    // changes nothing.
    fx.Mouse(OVERLAY_PRESS, 150.0f, 80.0f);
    fx.Mouse(OVERLAY_DRAG, 160.0f, 80.0f);
    fx.Mouse(OVERLAY_RELEASE, 160.0f, 80.0f);
    EXPECT_TRUE(page.Writes().empty());
    EXPECT_EQ(page.GetHwndControl(ID_RADIUS_PSF1)->value.vt, VT_EMPTY);

    // The inner circle's x handle, dragged 5 px further out: 2 x 15 / 200.
    fx.Mouse(OVERLAY_PRESS, 110.5f, 50.0f);
    EXPECT_EQ(fx.innerCircle.activeHandle, CIRCLE_HANDLE_X);
    EXPECT_EQ(fx.crosshair.activeHandle, 0);
    fx.Mouse(OVERLAY_DRAG, 115.0f, 50.0f);
    EXPECT_DOUBLE_EQ(page.GetHwndControl(ID_RADIUS_PSF1)->value.dblVal, double(2.0f * 15.0f / 200.0f));
    EXPECT_TRUE(page.Writes().empty());
    fx.Mouse(OVERLAY_RELEASE, 115.0f, 50.0f);
    ASSERT_EQ(page.Writes().size(), 1u);
    EXPECT_EQ(page.Writes()[0].guid.Data1, guids[10].Data1);
    EXPECT_DOUBLE_EQ(page.Writes()[0].value.dblVal, double(2.0f * 15.0f / 200.0f));
    EXPECT_EQ(page.Writes()[0].undoStyle, 1);
    EXPECT_EQ(page.Writes()[0].time, -1.0);
    EXPECT_EQ(fx.innerCircle.activeHandle, 0);

    // The crosshair moves the centre: both axes shown while dragging, both
    // committed at release.
    fx.Mouse(OVERLAY_PRESS, 101.0f, 51.0f);
    fx.Mouse(OVERLAY_DRAG, 120.0f, 60.0f);
    EXPECT_NEAR(page.GetHwndControl(ID_CENTRE)->value.dblVal, 0.6, 1e-6);
    EXPECT_NEAR(page.GetHwndControl(ID_CENTRE + 1)->value.dblVal, 0.6, 1e-6);
    EXPECT_EQ(page.Writes().size(), 1u);
    fx.Mouse(OVERLAY_RELEASE, 120.0f, 60.0f);
    ASSERT_EQ(page.Writes().size(), 3u);
    EXPECT_EQ(page.Writes()[2].guid.Data1, guidY.Data1);
}

}  // namespace
