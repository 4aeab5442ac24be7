// A Lumenveil on a property page with all its widgets: UpdateControls, and what
// its overlay shows of the image aperture (where the crosshair and the two
// circles go, which is dashed) and where drags go. How the items draw and
// drag is tested with the parameter block (tests/generic/library).
#include <gtest/gtest.h>

#include <cmath>

#include "effect/Lumenveil.h"
#include "hostsdk/CDSBasePropertyPage.h"
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
    }
    std::vector<Primitive> draw() { return drawnBy(fx, surface); }
    DrawingSurface surface;
};

TEST_F(Overlay, ImageShapeOnlyCrosshairAtTheCentreSolidInnerAndDashedOuterCircleOneHandleEach)
{
    fx.shape.value = SHAPE_POLYGON;
    EXPECT_TRUE(draw().empty());
    EXPECT_EQ(fx.crosshair.visible + fx.innerCircle.visible + fx.outerCircle.visible, 0);
    // Centre (0.3, 0.4) of 200 x 100: (60, 40). Pixels twice as high as wide
    // stretch the circles: inner 10 x 20 px, outer 30 x 60 px.
    fx.shape.value = SHAPE_IMAGE;
    fx.centre.x = 0.3, fx.centre.y = 0.4;
    fx.aspectNumerator = 2.0f;
    const std::vector<Primitive> drawn = draw();
    EXPECT_EQ(fx.crosshair.visible + fx.innerCircle.visible + fx.outerCircle.visible, 3);
    // The crosshair's four strokes and its handle.
    ASSERT_GE(drawn.size(), 5u);
    ASSERT_EQ(drawn[4].mode, GL_QUADS);
    EXPECT_NEAR(quadCentre(drawn[4]).first, 60.0, 1e-4);
    EXPECT_NEAR(quadCentre(drawn[4]).second, 40.0, 1e-4);
    // Then each circle's chords and its one handle, at (60 + r, 40).
    size_t i = 5;
    for (const double r : {10.0, 30.0}) {
        size_t chords = 0, joined = 0;
        for (; i < drawn.size() && drawn[i].mode == GL_LINES; ++i, ++chords) {
            for (const auto& [x, y] : drawn[i].points)
                EXPECT_NEAR(std::hypot((x - 60.0) / r, (y - 40.0) / (2 * r)), 1.0, 1e-4) << r;
            joined += i > 5 && drawn[i - 1].mode == GL_LINES && drawn[i - 1].points[1] == drawn[i].points[0];
        }
        // Solid: every chord starts where the one before ended; dashed: none does.
        EXPECT_GT(chords, 10u) << r;
        EXPECT_EQ(joined, r == 10.0 ? chords - 2 : 0u) << r;  // the first, and the closing one
        ASSERT_LT(i, drawn.size());
        EXPECT_EQ(drawn[i].mode, GL_QUADS);
        EXPECT_NEAR(quadCentre(drawn[i]).first, 60.0 + r, 1e-4) << r;
        EXPECT_NEAR(quadCentre(drawn[i]).second, 40.0, 1e-4) << r;
        ++i;
    }
    EXPECT_EQ(i, drawn.size());
}

TEST_F(Overlay, ADragOfTheOuterCirclesHandleReachesItsRadiusOnThePageAndAtRelease)
{
    draw();
    // The outer circle's x handle at (130, 50), dragged 10 px further out: 2 x 40 / 200.
    fx.Mouse(OVERLAY_PRESS, 130.5f, 50.0f);
    EXPECT_EQ(fx.outerCircle.activeHandle, CIRCLE_HANDLE_X);
    EXPECT_EQ(fx.innerCircle.activeHandle + fx.crosshair.activeHandle, 0);
    fx.Mouse(OVERLAY_DRAG, 140.0f, 50.0f);
    EXPECT_DOUBLE_EQ(page.GetHwndControl(ID_RADIUS_PSF2)->value.dblVal, double(2.0f * 40.0f / 200.0f));
    fx.Mouse(OVERLAY_RELEASE, 140.0f, 50.0f);
    ASSERT_EQ(page.Writes().size(), 1u);
    EXPECT_EQ(page.Writes()[0].guid.Data1, guids[11].Data1);
    EXPECT_DOUBLE_EQ(page.Writes()[0].value.dblVal, double(2.0f * 40.0f / 200.0f));
    // The crosshair's handle at the centre moves the centre.
    fx.Mouse(OVERLAY_PRESS, 100.0f, 50.0f);
    fx.Mouse(OVERLAY_DRAG, 50.0f, 25.0f);
    fx.Mouse(OVERLAY_RELEASE, 50.0f, 25.0f);
    ASSERT_EQ(page.Writes().size(), 3u);
    EXPECT_EQ(std::pair(page.Writes()[1].value.dblVal, page.Writes()[2].value.dblVal), std::pair(0.25, 0.25));
}

}  // namespace
