// The viewer's surfaces, viewport information and context stack.
#include <gtest/gtest.h>

#include <algorithm>

#include "hostsdk/CDSInteractiveTool.h"
#include "hostsdk/viewer.h"
#include "hostsdk/viewer_contexts.h"

namespace {

// Draws one quad over the whole viewing rectangle, the way a tool sets up.
class QuadTool : public CDSInteractiveTool {
public:
    HRESULT OnRender(VWSurface* surface) override
    {
        tagVWOPENGLSURFACE gl;
        const HRESULT begun = vwSurfaceBeginRenderOpenGL(surface, &gl);
        if (FAILED(begun))
            return begun;
        seen = gl;
        glViewport(0, 0, gl.width, gl.height);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glOrtho(gl.viewLeft, gl.viewLeft + gl.viewWidth, gl.viewBottom, gl.viewBottom + gl.viewHeight, 0.0, 1.0);
        glBegin(GL_QUADS);
        glVertex2f(float(gl.viewLeft), float(gl.viewBottom));
        glVertex2f(float(gl.viewLeft + gl.viewWidth / 2), float(gl.viewBottom));
        glVertex2f(float(gl.viewLeft + gl.viewWidth / 2), float(gl.viewBottom + gl.viewHeight));
        glVertex2f(float(gl.viewLeft), float(gl.viewBottom + gl.viewHeight));
        glEnd();
        vwSurfaceEndRenderOpenGL(surface);
        return begun;
    }
    tagVWOPENGLSURFACE seen;
};

VWSurface surfaceOf(int width, int height)
{
    VWSurface surface;
    surface.geometry.width = width;
    surface.geometry.height = height;
    surface.geometry.viewLeft = 10;
    surface.geometry.viewBottom = 20;
    surface.geometry.viewWidth = 64;
    surface.geometry.viewHeight = 32;
    surface.geometry.imageWidth = 640;
    surface.geometry.imageHeight = 480;
    surface.geometry.pixelAspect = 0.9;
    return surface;
}

TEST(ViewerSurface, ToolDrawsIntoTheSurfaceBetweenBeginAndEnd)
{
    VWSurface surface = surfaceOf(8, 4);
    DrawingSurface elsewhere;
    drawingMakeCurrent(&elsewhere);
    QuadTool tool;
    EXPECT_EQ(tool.OnRender(&surface), S_OK);
    EXPECT_EQ(tool.seen.imageWidth, 640);
    EXPECT_EQ(tool.seen.pixelAspect, 0.9);
    EXPECT_EQ(tool.seen.viewHeight, 32);
    EXPECT_TRUE(elsewhere.calls.empty());
    EXPECT_EQ(drawingCurrent(), &elsewhere) << "End restores what was current";
    EXPECT_FALSE(surface.rendering);
    // The left half of the view is covered: columns 0..3 of 8.
    const RgbaImage image = surface.drawing.Rasterise();
    ASSERT_EQ(image.Width(), 8);
    EXPECT_EQ(image.Pixel(3, 2)[3], 255);
    EXPECT_EQ(image.Pixel(4, 2)[3], 0);
    drawingMakeCurrent(nullptr);
}

TEST(ViewerSurface, BeginAndEndRefuseMisuse)
{
    VWSurface surface = surfaceOf(8, 4);
    tagVWOPENGLSURFACE gl;
    EXPECT_EQ(vwSurfaceBeginRenderOpenGL(nullptr, &gl), E_POINTER);
    EXPECT_EQ(vwSurfaceBeginRenderOpenGL(&surface, nullptr), E_POINTER);
    EXPECT_EQ(vwSurfaceEndRenderOpenGL(&surface), E_UNEXPECTED);
    EXPECT_EQ(vwSurfaceBeginRenderOpenGL(&surface, &gl), S_OK);
    EXPECT_EQ(vwSurfaceBeginRenderOpenGL(&surface, &gl), E_UNEXPECTED);
    EXPECT_EQ(vwSurfaceEndRenderOpenGL(&surface), S_OK);
    EXPECT_EQ(drawingCurrent(), nullptr);
    surface.available = false;
    QuadTool tool;
    EXPECT_EQ(tool.OnRender(&surface), E_FAIL);
    EXPECT_TRUE(surface.drawing.calls.empty());
}

TEST(Viewer, ViewportInfoIsCopied)
{
    VWViewer viewer;
    viewer.viewport = {1.5, -2.0};
    tagVWVIEWPORTINFO info;
    EXPECT_EQ(vwGetViewportInfo(&viewer, &info), S_OK);
    EXPECT_EQ(info.a, 1.5);
    EXPECT_EQ(info.b, -2.0);
    EXPECT_EQ(vwGetViewportInfo(nullptr, &info), E_POINTER);
    EXPECT_EQ(vwGetViewportInfo(&viewer, nullptr), E_POINTER);
}

bool listed(uint32_t id)
{
    const std::vector<VWContext> all = VWControllerListContexts();
    return std::any_of(all.begin(), all.end(), [id](const VWContext& c) { return c.id == id; });
}

TEST(ViewerContexts, PushListsAndRemoveTakesAway)
{
    CDSInteractiveTool first, second;
    int object = 0;
    uint32_t a = 0, b = 0;
    const std::size_t before = VWControllerListContexts().size();
    ASSERT_EQ(VWControllerPushContext(3, &first, &object, nullptr, nullptr, 0.0, &a), S_OK);
    ASSERT_EQ(VWControllerPushContext(5, &second, nullptr, nullptr, nullptr, 0.5, &b), S_OK);
    EXPECT_NE(a, 0u);
    EXPECT_NE(b, 0u);
    EXPECT_NE(a, b);
    std::vector<VWContext> all = VWControllerListContexts();
    ASSERT_EQ(all.size(), before + 2);
    const VWContext& older = all[all.size() - 2];
    const VWContext& newer = all.back();
    EXPECT_EQ(older.id, a);
    EXPECT_EQ(older.kind, 3);
    EXPECT_EQ(older.tool, &first);
    EXPECT_EQ(older.object, &object);
    EXPECT_EQ(newer.id, b);
    EXPECT_EQ(newer.tool, &second);
    EXPECT_EQ(newer.value, 0.5);

    EXPECT_EQ(VWControllerRemoveContext(a), S_OK);
    EXPECT_FALSE(listed(a));
    EXPECT_TRUE(listed(b));
    EXPECT_EQ(VWControllerRemoveContext(a), E_INVALIDARG);
    EXPECT_EQ(VWControllerRemoveContext(b), S_OK);
    EXPECT_EQ(VWControllerListContexts().size(), before);
}

TEST(ViewerContexts, PushRefusesNullArguments)
{
    CDSInteractiveTool tool;
    const std::size_t before = VWControllerListContexts().size();
    EXPECT_EQ(VWControllerPushContext(3, &tool, nullptr, nullptr, nullptr, 0.0, nullptr), E_POINTER);
    uint32_t context = 77;
    EXPECT_EQ(VWControllerPushContext(3, nullptr, nullptr, nullptr, nullptr, 0.0, &context), E_INVALIDARG);
    EXPECT_EQ(context, 0u);
    EXPECT_EQ(VWControllerListContexts().size(), before);
    EXPECT_EQ(VWControllerRemoveContext(0), E_INVALIDARG);
}

}  // namespace
