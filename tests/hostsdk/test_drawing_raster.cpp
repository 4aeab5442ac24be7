// The drawing layer: what it records, and where its rasterised lines and quads
// land under viewport, ortho and scale, with their edge coverage.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iterator>

#include "hostsdk/gl.h"

namespace {

// Canvas 40 x 20; the ortho box [100, 140] x [50, 70] fills it, so object
// (x, y) lands at window (x - 100, y - 50) before any scale.
constexpr int WIDTH = 40, HEIGHT = 20;
constexpr double LEFT = 100, BOTTOM = 50;

uint8_t byteOf(double coverage) { return static_cast<uint8_t>(std::lround(coverage * 255.0)); }

class Drawing : public ::testing::Test {
protected:
    void SetUp() override
    {
        drawingMakeCurrent(&surface);
        glViewport(0, 0, WIDTH, HEIGHT);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glOrtho(LEFT, LEFT + WIDTH, BOTTOM, BOTTOM + HEIGHT, 0.0, 1.0);
    }
    void TearDown() override { drawingMakeCurrent(nullptr); }
    void line(float x1, float y1, float x2, float y2)
    {
        glBegin(GL_LINES);
        glVertex2f(x1, y1);
        glVertex2f(x2, y2);
        glEnd();
    }
    void quad(float x1, float y1, float x2, float y2)
    {
        glBegin(GL_QUADS);
        glVertex2f(x1, y1);
        glVertex2f(x2, y1);
        glVertex2f(x2, y2);
        glVertex2f(x1, y2);
        glEnd();
    }
    uint8_t alphaAt(const RgbaImage& image, int x, int y) { return image.Pixel(x, y)[3]; }
    DrawingSurface surface;
};

TEST_F(Drawing, RecordsEachCallWithItsArguments)
{
    glScalef(1.0f, 0.5f, 1.0f);
    glPushMatrix();
    glPopMatrix();
    glLineWidth(2.0f);
    const DrawCall::Kind kinds[] = {DrawCall::VIEWPORT, DrawCall::MATRIX_MODE, DrawCall::LOAD_IDENTITY,
                                    DrawCall::ORTHO,    DrawCall::SCALE,       DrawCall::PUSH_MATRIX,
                                    DrawCall::POP_MATRIX, DrawCall::LINE_WIDTH};
    ASSERT_EQ(surface.calls.size(), std::size(kinds));
    for (std::size_t i = 0; i < std::size(kinds); ++i)
        EXPECT_EQ(surface.calls[i].kind, kinds[i]) << i;
    EXPECT_EQ(surface.calls[0].args[2], WIDTH);
    EXPECT_EQ(surface.calls[1].mode, GL_MODELVIEW);
    const double ortho[6] = {LEFT, LEFT + WIDTH, BOTTOM, BOTTOM + HEIGHT, 0.0, 1.0};
    EXPECT_TRUE(std::equal(ortho, ortho + 6, surface.calls[3].args));
    EXPECT_EQ(surface.calls[4].args[1], 0.5);
    drawingMakeCurrent(nullptr);
    glEnd();
    EXPECT_EQ(surface.calls.size(), std::size(kinds)) << "with no surface current, calls go nowhere";
}

// A horizontal line at object y 121.5, scaled by 0.5: window y 60.75 - 50 =
// 10.75. Row 10 (centre 10.5) is 0.25 away: coverage 0.75; row 11 is 0.75
// away: 0.25; row 9 is 1.25 away: nothing.
TEST_F(Drawing, LineLandsWhereOrthoAndScaleSay)
{
    glScalef(1.0f, 0.5f, 1.0f);
    glColor4f(1, 1, 1, 1);
    line(105, 121.5f, 135, 121.5f);  // window x 5 to 35
    const RgbaImage image = surface.Rasterise();
    ASSERT_EQ(image.Width(), WIDTH);
    ASSERT_EQ(image.Height(), HEIGHT);
    for (int x = 6; x <= 33; ++x) {
        EXPECT_EQ(alphaAt(image, x, 10), byteOf(0.75)) << x;
        EXPECT_EQ(alphaAt(image, x, 11), byteOf(0.25)) << x;
        EXPECT_EQ(alphaAt(image, x, 9), 0) << x;
        EXPECT_EQ(alphaAt(image, x, 12), 0) << x;
    }
    // Past the ends: pixel 3's centre is 1.5 from x = 5, pixel 36's 1.5 from 35.
    EXPECT_EQ(alphaAt(image, 3, 10), 0);
    EXPECT_EQ(alphaAt(image, 36, 10), 0);
    // Straight alpha: the colour of a partly covered pixel stays white.
    EXPECT_EQ(image.Pixel(20, 11)[0], 255);
    // Nothing elsewhere.
    EXPECT_EQ(alphaAt(image, 20, 0), 0);
}

// A diagonal through pixel centres: (105.5, 50.5) to (115.5, 60.5) is window
// (5.5, 0.5) to (15.5, 10.5). Pixel (10, 5) is on it; pixel (11, 5) is
// 1 / sqrt(2) away.
TEST_F(Drawing, DiagonalLineCoverageFallsWithDistance)
{
    line(105.5f, 50.5f, 115.5f, 60.5f);
    const RgbaImage image = surface.Rasterise();
    EXPECT_EQ(alphaAt(image, 10, 5), 255);
    EXPECT_EQ(alphaAt(image, 11, 5), byteOf(1.0 - 1.0 / std::sqrt(2.0)));
    EXPECT_EQ(alphaAt(image, 12, 5), 0);
}

// glLineWidth(3): full coverage to 1 pixel from the axis, half at 1.5.
TEST_F(Drawing, LineWidthWidensTheLine)
{
    glLineWidth(3.0f);
    line(105, 60.5f, 135, 60.5f);  // window y 10.5
    const RgbaImage image = surface.Rasterise();
    EXPECT_EQ(alphaAt(image, 20, 10), 255);
    EXPECT_EQ(alphaAt(image, 20, 11), 255);
    EXPECT_EQ(alphaAt(image, 20, 9), 255);
    EXPECT_EQ(alphaAt(image, 20, 12), 0);
    EXPECT_EQ(alphaAt(image, 20, 8), 0);
}

// A quad from object (110, 104.5) to (120.25, 110), y scaled by 0.5: window
// x 10 to 20.25, y 2.25 to 5. Pixel columns 10..19 and rows 3..4 are covered;
// column 20 a quarter, row 2 three quarters.
TEST_F(Drawing, QuadFillsItsAreaWithExactEdgeCoverage)
{
    glScalef(1.0f, 0.5f, 1.0f);
    quad(110, 104.5f, 120.25f, 110);
    const RgbaImage image = surface.Rasterise();
    EXPECT_EQ(alphaAt(image, 10, 3), 255);
    EXPECT_EQ(alphaAt(image, 19, 4), 255);
    EXPECT_EQ(alphaAt(image, 20, 3), byteOf(0.25));
    EXPECT_EQ(alphaAt(image, 15, 2), byteOf(0.75));
    EXPECT_EQ(alphaAt(image, 20, 2), byteOf(0.25 * 0.75));
    EXPECT_EQ(alphaAt(image, 9, 3), 0);
    EXPECT_EQ(alphaAt(image, 21, 3), 0);
    EXPECT_EQ(alphaAt(image, 15, 5), 0);
    EXPECT_EQ(alphaAt(image, 15, 1), 0);
}

// The projection holds the ortho box; a scale of 2 about the origin on the
// modelview puts object (55, 26) at (110, 52): window (10, 2).
TEST_F(Drawing, ProjectionAndModelviewCompose)
{
    surface.calls.clear();
    glViewport(0, 0, WIDTH, HEIGHT);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(LEFT, LEFT + WIDTH, BOTTOM, BOTTOM + HEIGHT, 0.0, 1.0);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();  // leaves the projection alone
    glScalef(2.0f, 2.0f, 1.0f);
    quad(55, 26, 56, 27);  // window 10..12 x 2..4
    const RgbaImage image = surface.Rasterise();
    EXPECT_EQ(alphaAt(image, 10, 2), 255);
    EXPECT_EQ(alphaAt(image, 11, 3), 255);
    EXPECT_EQ(alphaAt(image, 12, 3), 0);
    EXPECT_EQ(alphaAt(image, 9, 2), 0);
}

TEST_F(Drawing, PopMatrixRestoresWhatPushSaved)
{
    glPushMatrix();
    glScalef(2.0f, 2.0f, 1.0f);
    glColor4f(1, 0, 0, 1);
    quad(55, 26, 56, 27);  // scaled: window (10, 2) to (12, 4)
    glPopMatrix();
    glColor4f(0, 0, 1, 1);
    quad(130, 60, 132, 62);  // unscaled: window (30, 10) to (32, 12)
    const RgbaImage image = surface.Rasterise();
    EXPECT_EQ(image.Pixel(11, 3)[0], 255);
    EXPECT_EQ(image.Pixel(11, 3)[3], 255);
    EXPECT_EQ(image.Pixel(31, 11)[2], 255);
    EXPECT_EQ(image.Pixel(31, 11)[3], 255);
    // Had the scale stayed, the blue quad would sit at window (160, 70): off
    // the canvas, and (31, 11) would be empty.
}

// Red of alpha 0.4 over opaque (0.2, 0, 1): 0.4 of the red and 0.6 of what was
// there. Over nothing: pure red with alpha 0.4.
TEST_F(Drawing, ColoursBlendOverWhatIsThere)
{
    glColor4f(0.2f, 0, 1, 1);
    quad(100, 50, 110, 60);  // window (0, 0) to (10, 10)
    glColor4f(1, 0, 0, 0.4f);
    quad(105, 50, 115, 60);  // window (5, 0) to (15, 10)
    const RgbaImage image = surface.Rasterise();
    const uint8_t* both = image.Pixel(7, 5);
    EXPECT_EQ(both[0], byteOf(0.4 + 0.6 * 0.2));
    EXPECT_EQ(both[1], 0);
    EXPECT_EQ(both[2], byteOf(0.6));
    EXPECT_EQ(both[3], 255);
    const uint8_t* redOnly = image.Pixel(12, 5);
    EXPECT_EQ(redOnly[0], 255);
    EXPECT_EQ(redOnly[2], 0);
    EXPECT_EQ(redOnly[3], byteOf(0.4));
}

// Window y grows upwards; the top-down image puts window row y at row
// height - 1 - y.
TEST_F(Drawing, TopDownImageFlipsTheRows)
{
    quad(100, 50, 101, 51);  // window pixel (0, 0): bottom left
    const RgbaImage bottomUp = surface.Rasterise();
    const RgbaImage topDown = surface.Rasterise(RowOrder::TOP_DOWN);
    EXPECT_EQ(bottomUp.Pixel(0, 0)[3], 255);
    EXPECT_EQ(topDown.Pixel(0, HEIGHT - 1)[3], 255);
    EXPECT_EQ(topDown.Pixel(0, 0)[3], 0);
    EXPECT_EQ(topDown.Bytes().size(), std::size_t(WIDTH) * HEIGHT * 4);
}

// The image shows the viewport's rectangle: a viewport at (10, 5) maps the
// ortho box onto window (10..50, 5..25), which is image (0..40, 0..20).
TEST_F(Drawing, ImageShowsTheViewportRectangle)
{
    glViewport(10, 5, WIDTH, HEIGHT);
    quad(100, 50, 101, 51);
    const RgbaImage image = surface.Rasterise();
    EXPECT_EQ(image.Width(), WIDTH);
    EXPECT_EQ(alphaAt(image, 0, 0), 255);
    EXPECT_EQ(alphaAt(image, 1, 1), 0);
}

TEST_F(Drawing, LeftOverVerticesAreDropped)
{
    glBegin(GL_QUADS);  // a quad closed on its first corner: five vertices
    glVertex2f(110, 60);
    glVertex2f(112, 60);
    glVertex2f(112, 62);
    glVertex2f(110, 62);
    glVertex2f(110, 60);
    glEnd();
    glBegin(GL_LINES);  // one vertex: no line
    glVertex2f(120, 60);
    glEnd();
    const RgbaImage image = surface.Rasterise();
    EXPECT_EQ(alphaAt(image, 11, 11), 255);
    EXPECT_EQ(alphaAt(image, 20, 10), 0);
}

TEST(DrawingWithoutViewport, RasterisesToAnEmptyImage)
{
    DrawingSurface surface;
    const RgbaImage image = surface.Rasterise();
    EXPECT_EQ(image.Width(), 0);
    EXPECT_EQ(image.Height(), 0);
    EXPECT_TRUE(image.Bytes().empty());
}

}  // namespace
