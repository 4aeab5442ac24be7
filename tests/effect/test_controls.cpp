// The parameter controls on and off a page, and the table that shows and hides
// them by Shape and Match Radii.
#include "page_fixture.h"

namespace {

using Controls = PageFixture;

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
    ControlVZ* const controls[8] = {&fx.sides, &fx.rotation, &fx.radiusX, &fx.radiusY,
                                    &fx.matchRadii, &fx.centre, &fx.radiusPsf1, &fx.radiusPsf2};
    for (int shapeCode = 1; shapeCode <= 4; ++shapeCode)
        for (int match = 0; match <= 1; ++match) {
            select(shapeCode, match);
            fx.UpdateControls();
            for (int c = 0; c < 8; ++c) {
                const bool want = hidden[shapeCode - 1][c] < 0 ? match == 1 : hidden[shapeCode - 1][c] == 1;
                EXPECT_EQ(controls[c]->hidden, want) << "shape " << shapeCode << " match " << match << " col " << c;
                EXPECT_EQ(shown(ids[c]), !want) << "shape " << shapeCode << " match " << match << " col " << c;
            }
            for (uint32_t always : {ID_BRIGHT_EMPHASIS, ID_EMPHASISE_ALPHA, ID_EXTREME_PRECISION})
                EXPECT_TRUE(shown(always));
        }
    // Match Radii's own handler touches RadiusY alone.
    select(3, 1);
    fx.UpdateControls();
    select(3, 0);
    fx.sides.SetHidden(true);
    fx.OnMatchRadiiChanged(&fx.matchRadii, -1.0);
    EXPECT_TRUE(shown(ID_RADIUS_Y));
    EXPECT_FALSE(shown(ID_SIDES));
}

TEST_F(Controls, ReadersTakeWidgetsOrFallBackToTheirValues)
{
    // List: selection plus one; the value member keeps its content.
    fx.shape.value = 1;
    page.GetHwndControl(ID_SHAPE)->selection = 2;
    int32_t got = 0;
    fx.shape.GetValue(-1.0, &got);
    EXPECT_EQ(got, 3);
    EXPECT_EQ(fx.shape.value, 1);
    // Check box: 1 only when checked, the indeterminate state reads 0; value keeps it.
    for (int32_t state : {BST_CHECKED, BST_INDETERMINATE, BST_UNCHECKED}) {
        page.GetHwndControl(ID_EMPHASISE_ALPHA)->checkState = state;
        fx.emphasiseAlpha.GetValue(0.0, &got);
        EXPECT_EQ(got, state == BST_CHECKED ? 1 : 0);
        EXPECT_EQ(fx.emphasiseAlpha.value, got);
    }
    // Animated readers ask the page for the property.
    VARIANT v;
    VariantInit(&v);
    v.vt = VT_R8;
    v.dblVal = 0.125;
    page.SetProperty(guids[2], v);
    double real = -1.0;
    fx.radiusX.GetValue(-1.0, &real);
    EXPECT_EQ(real, 0.125);
    v.vt = VT_I4;
    v.lVal = 9;
    page.SetProperty(guids[4], v);
    got = 0;
    fx.sides.GetValue(50.0, &got);
    EXPECT_EQ(got, 9);

    // Without a page: flags are stored, readers give their values or leave `out`.
    for (ControlVZ* control : fx.controls())
        control->page = nullptr;
    fx.radiusY.SetHidden(true);
    fx.radiusY.SetDisabled(true);
    EXPECT_TRUE(fx.radiusY.hidden && fx.radiusY.disabled);
    EXPECT_TRUE(shown(ID_RADIUS_Y));
    real = 7.0;
    fx.radiusX.timeScale = nullptr;  // -1.0 must not need it
    fx.radiusX.GetValue(-1.0, &real);
    EXPECT_EQ(real, 7.0);
    fx.shape.value = SHAPE_IMAGE;
    fx.shape.GetValue(-1.0, &got);
    EXPECT_EQ(got, SHAPE_IMAGE);
    fx.UpdateControls();
    EXPECT_FALSE(fx.centre.hidden);
    EXPECT_TRUE(fx.radiusX.hidden);
    EXPECT_TRUE(shown(ID_RADIUS_X));
}

}  // namespace
