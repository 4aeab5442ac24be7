// Where the drawing layer's lines and quads land, with edge coverage and colour.
#include <gtest/gtest.h>

#include <cmath>

#include "hostsdk/gl.h"

namespace {

// Canvas 40 x 20; the ortho box [100, 140] x [50, 70] fills it, so object
// (x, y) lands at window (x - 100, y - 50) before any scale.
constexpr int WIDTH = 40, HEIGHT = 20;
constexpr double LEFT = 100, BOTTOM = 50;

uint8_t byteOf(double coverage) { return static_cast<uint8_t>(std::lround(coverage * 255.0)); }

// Pixel (x, y) should hold `value` in `channel` (3: alpha).
struct Probe {
    int x, y;
    uint8_t value;
    int channel = 3;
};

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
    // `colour`, if given, is set before the last corner.
    void quad(float x1, float y1, float x2, float y2, const float* colour = nullptr)
    {
        glBegin(GL_QUADS);
        glVertex2f(x1, y1);
        glVertex2f(x2, y1);
        glVertex2f(x2, y2);
        if (colour)
            glColor4f(colour[0], colour[1], colour[2], colour[3]);
        glVertex2f(x1, y2);
        glEnd();
    }
    void expectPixels(std::initializer_list<Probe> probes, RowOrder order = RowOrder::BOTTOM_UP)
    {
        const RgbaImage image = surface.Rasterise(order);
        ASSERT_EQ(std::pair(image.Width(), image.Height()), std::pair(WIDTH, HEIGHT));
        for (const Probe& p : probes)
            EXPECT_EQ(image.Pixel(p.x, p.y)[p.channel], p.value) << p.x << "," << p.y << " channel " << p.channel;
    }
    DrawingSurface surface;
};

// A horizontal line at object y 121.5, scaled by 0.5: window y 60.75 - 50 =
// 10.75. Row 10 (centre 10.5) is 0.25 away: coverage 0.75; row 11 is 0.75
// away: 0.25; row 9 is 1.25 away: nothing. A quad from (110, 104.5) to
// (120.25, 110) lands at window x 10 to 20.25, y 2.25 to 5: columns 10..19 and
// rows 3..4 covered, column 20 a quarter, row 2 three quarters.
TEST_F(Drawing, LinesAndQuadsLandWhereOrthoAndScaleSay)
{
    glScalef(1.0f, 0.5f, 1.0f);
    line(105, 121.5f, 135, 121.5f);  // window x 5 to 35
    const RgbaImage image = surface.Rasterise();
    for (int x = 6; x <= 33; ++x)
        EXPECT_EQ(std::tuple(image.Pixel(x, 9)[3], image.Pixel(x, 10)[3], image.Pixel(x, 11)[3], image.Pixel(x, 12)[3]),
                  std::tuple(0, byteOf(0.75), byteOf(0.25), 0)) << x;
    // Past the ends (pixel 3's centre is 1.5 from x = 5, 36's from 35), nothing;
    // straight alpha: a partly covered pixel stays white.
    quad(110, 104.5f, 120.25f, 110);
    expectPixels({{3, 10, 0}, {36, 10, 0}, {20, 0, 0}, {20, 11, 255, 0}, {10, 3, 255}, {19, 4, 255},
                  {20, 3, byteOf(0.25)}, {15, 2, byteOf(0.75)}, {20, 2, byteOf(0.25 * 0.75)}, {9, 3, 0}, {21, 3, 0},
                  {15, 5, 0}, {15, 1, 0}});
}

// A diagonal through pixel centres: (105.5, 50.5) to (115.5, 60.5) is window
// (5.5, 0.5) to (15.5, 10.5). Pixel (10, 5) is on it; pixel (11, 5) is
// 1 / sqrt(2) away. A line of width 3 at window y 10.5 covers fully to 1 pixel
// from its axis. Then red drawn scaled by 2 inside a push and pop, blue after
// it, unscaled; had the scale stayed, the blue quad would be off the canvas.
TEST_F(Drawing, LineCoverageFallsWithDistanceAndPopMatrixRestoresWhatPushSaved)
{
    line(105.5f, 50.5f, 115.5f, 60.5f);
    glLineWidth(3.0f);
    line(125, 60.5f, 135, 60.5f);
    glPushMatrix();
    glScalef(2.0f, 2.0f, 1.0f);
    glColor4f(1, 0, 0, 1);
    quad(55, 26, 56, 27);  // window (10, 2) to (12, 4)
    glPopMatrix();
    glColor4f(0, 0, 1, 1);
    quad(102, 66, 104, 68);  // window (2, 16) to (4, 18)
    expectPixels({{10, 5, 255}, {11, 5, byteOf(1.0 - 1.0 / std::sqrt(2.0))}, {12, 5, 0}, {30, 10, 255}, {30, 11, 255},
                  {30, 9, 255}, {30, 12, 0}, {30, 8, 0}, {11, 3, 255, 0}, {11, 3, 255}, {3, 17, 255, 2}, {3, 17, 255}});
}

// Each call multiplies the current matrix on the right, and a vertex goes
// through projection x modelview. The projection, a scale of 0.5 times the box
// [100, 120] x [50, 60], maps object (x, y) to window (x - 90, y - 45); the
// modelview's scale of 2 puts object (55, 26) at (110, 52): window (20, 7).
TEST_F(Drawing, ProjectionAndModelviewCompose)
{
    surface.calls.clear();
    glViewport(0, 0, WIDTH, HEIGHT);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glScalef(0.5f, 0.5f, 1.0f);
    glOrtho(100, 120, 50, 60, 0.0, 1.0);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();  // leaves the projection alone
    glScalef(2.0f, 2.0f, 1.0f);
    quad(55, 26, 56, 27);  // window 20..22 x 7..9
    expectPixels({{20, 7, 255}, {21, 8, 255}, {22, 8, 0}, {19, 7, 0}, {20, 6, 0}});
}

// A quad takes the colour at its last corner: (0.2, 0, 1), opaque. Red of
// alpha 0.4 over it gives 0.4 of the red and 0.6 of what was there; over
// nothing, pure red with alpha 0.4. Window y grows upwards; the top-down image
// puts window row y at row height - 1 - y.
TEST_F(Drawing, ColoursBlendOverWhatIsThereAndRowsFlipTopDown)
{
    const float blue[4] = {0.2f, 0, 1, 1};
    quad(100, 50, 110, 60, blue);  // window (0, 0) to (10, 10)
    glColor4f(1, 0, 0, 0.4f);
    quad(105, 50, 115, 60);  // window (5, 0) to (15, 10)
    expectPixels({{2, 5, byteOf(0.2), 0}, {2, 5, 255, 2}, {7, 5, byteOf(0.4 + 0.6 * 0.2), 0}, {7, 5, 0, 1},
                  {7, 5, byteOf(0.6), 2}, {7, 5, 255}, {12, 5, 255, 0}, {12, 5, 0, 2}, {12, 5, byteOf(0.4)}});
    expectPixels({{2, HEIGHT - 1, 255}, {2, HEIGHT - 11, 0}, {12, HEIGHT - 1, byteOf(0.4)}}, RowOrder::TOP_DOWN);
}

// The image shows the last viewport's rectangle: a viewport at (10, 5) maps
// the ortho box onto window (10..50, 5..25), which is image (0..40, 0..20).
// A quad's fifth vertex and a line's single one are dropped.
TEST_F(Drawing, ImageShowsTheViewportRectangleAndLeftOverVerticesAreDropped)
{
    glViewport(10, 5, WIDTH, HEIGHT);
    glBegin(GL_QUADS);  // a quad closed on its first corner: five vertices
    for (auto [x, y] : {std::pair{100, 50}, {102, 50}, {102, 52}, {100, 52}, {100, 50}})
        glVertex2f(float(x), float(y));
    glEnd();
    glBegin(GL_LINES);
    glVertex2f(120, 60);
    glEnd();
    expectPixels({{0, 0, 255}, {1, 1, 255}, {2, 2, 0}, {20, 10, 0}});
}

}  // namespace
