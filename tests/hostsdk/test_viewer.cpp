// The interactive-tool base (pen events driving an interaction, links, layer
// requests, property calls through the linked operator), the viewer's
// surfaces and viewport information, and its context stack.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "hostsdk/CDSInteractiveTool.h"
#include "hostsdk/viewer.h"
#include "hostsdk/viewer_contexts.h"

namespace {

using PenCall = HRESULT (CDSInteractiveTool::*)(const tagVWPENEVENT*);
constexpr int32_t LEFT = VW_PEN_BUTTON_LEFT, RIGHT = 2;

// Begins on a left pen down and ends on a left pen up, as a viewer tool does;
// writes down each interaction call.
struct RecordingTool : CDSInteractiveTool {
    HRESULT OnPenDown(const tagVWPENEVENT* e) override
    {
        return e && e->button == LEFT ? OnBeginInteraction(e) : CDSInteractiveTool::OnPenDown(e);
    }
    HRESULT OnPenUp(const tagVWPENEVENT* e) override
    {
        return e && e->button == LEFT ? TerminateInteraction() : CDSInteractiveTool::OnPenUp(e);
    }
    HRESULT OnBeginInteraction(const tagVWPENEVENT* e) override
    {
        const HRESULT base = CDSInteractiveTool::OnBeginInteraction(e);
        return SUCCEEDED(base) ? note("begin", e), S_OK : base;
    }
    HRESULT OnDoInteraction(const tagVWPENEVENT* e) override { return note("do", e), doResult; }
    HRESULT OnEndInteraction() override { return log += "end;", endResult; }
    void note(const char* what, const tagVWPENEVENT* e)
    {
        log += std::string(what) + ' ' + std::to_string(int(e->x)) + ',' + std::to_string(int(e->y)) + ';';
    }
    std::string log;
    HRESULT doResult = S_OK, endResult = S_OK;
};

TEST(InteractiveTool, LeftPenDownDragUpDrivesOneInteraction)
{
    RecordingTool tool;
    const struct {
        PenCall call;
        int32_t button;
        double x, y;
    } events[] = {{&CDSInteractiveTool::OnPenDown, RIGHT, 0, 0}, {&CDSInteractiveTool::OnPenMove, RIGHT, 1, 1},
                  {&CDSInteractiveTool::OnPenUp, RIGHT, 1, 1},   {&CDSInteractiveTool::OnPenMove, LEFT, 1, 1},
                  {&CDSInteractiveTool::OnPenDown, LEFT, 2, 3},  {&CDSInteractiveTool::OnPenMove, LEFT, 4, 5},
                  {&CDSInteractiveTool::OnPenMove, LEFT, 6, 7},  {&CDSInteractiveTool::OnPenUp, LEFT, 8, 9},
                  {&CDSInteractiveTool::OnPenMove, LEFT, 10, 11}};
    for (const auto& e : events) {
        const tagVWPENEVENT event{e.button, e.x, e.y, 1.0};
        EXPECT_EQ((tool.*e.call)(&event), S_OK);
        EXPECT_EQ(tool.IsInteracting(), &e > &events[3] && &e < &events[7]);
    }
    EXPECT_EQ(tool.log, "begin 2,3;do 4,5;do 6,7;end;");
}

TEST(InteractiveTool, TerminateEndsOnceAndResultsPassThrough)
{
    RecordingTool tool;
    EXPECT_EQ(tool.TerminateInteraction(), S_FALSE) << "no interaction, no end";
    const tagVWPENEVENT down{LEFT, 0, 0, 1.0};
    tool.OnPenDown(&down);
    tool.doResult = E_UNEXPECTED, tool.endResult = E_FAIL;
    EXPECT_EQ(tool.OnPenMove(&down), E_UNEXPECTED);
    EXPECT_EQ(tool.TerminateInteraction(), E_FAIL);
    EXPECT_EQ(tool.TerminateInteraction(), S_FALSE);
    EXPECT_EQ(tool.log, "begin 0,0;do 0,0;end;");
    EXPECT_EQ(std::pair(tool.OnPenMove(nullptr), tool.OnBeginInteraction(nullptr)), std::pair(E_POINTER, E_POINTER));
    EXPECT_FALSE(tool.IsInteracting());
}

// Answers reads with a fixed number and remembers the last write.
struct NumberOperator : IVWOperator {
    HRESULT GetAnimatedProperty(const GUID&, VARIANT* value, void*, double) override
    {
        return value->vt = VT_UI4, value->ulVal = 1234, S_OK;
    }
    HRESULT SetAnimatedProperty(const GUID&, VARIANT* value, void*, int, double) override
    {
        return written = value->dblVal, S_OK;
    }
    double written = 0.0;
};

TEST(InteractiveTool, LinksSetFlagsPropertyCallsGoToTheOperatorAndLayerRequestsAreRecorded)
{
    CDSInteractiveTool tool;
    NumberOperator op;
    VWViewer viewer;
    VARIANT value{VT_R8, {}};
    EXPECT_EQ(tool.GetAnimatedProperty(GUID{}, &value, nullptr, -1.0), E_UNEXPECTED) << "no operator linked";
    EXPECT_EQ(tool.SetAnimatedProperty(GUID{}, &value, nullptr, 1, -1.0), E_UNEXPECTED);
    EXPECT_EQ(tool.OnLinkToOperator(&op), S_OK);
    EXPECT_TRUE(tool.IsLinkedToOperator() && !tool.IsLinkedToViewer());
    EXPECT_EQ(tool.OnLinkToViewer(&viewer), S_OK);
    EXPECT_TRUE(tool.IsLinkedToViewer() && tool.Viewer() == &viewer && tool.Operator() == &op);
    EXPECT_EQ(tool.GetAnimatedProperty(GUID{}, &value, nullptr, -1.0), S_OK);
    EXPECT_EQ(value.ulVal, 1234u);
    value = {VT_R8, {}}, value.dblVal = 0.25;
    EXPECT_EQ(tool.SetAnimatedProperty(GUID{}, &value, nullptr, 1, -1.0), S_OK);
    EXPECT_EQ(op.written, 0.25);
    tool.OnLinkToOperator(nullptr);
    EXPECT_TRUE(!tool.IsLinkedToOperator() && tool.IsLinkedToViewer());
    tool.OnLinkToViewer(nullptr);
    EXPECT_FALSE(tool.IsLinkedToViewer());

    const VWRECT area = {1, 2, 3, 4};
    EXPECT_EQ(tool.InvalidateLayer(2, nullptr) | tool.InvalidateLayer(1, &area), S_OK);
    const auto& calls = tool.Invalidations();
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_TRUE(calls[0].layer == 2 && calls[0].whole);
    EXPECT_TRUE(calls[1].layer == 1 && !calls[1].whole && calls[1].area.height == 4);
    tool.ClearInvalidations();
    EXPECT_TRUE(tool.Invalidations().empty());
}

// Draws one quad over the left half of the viewing rectangle, the way a tool sets up.
struct QuadTool : CDSInteractiveTool {
    HRESULT OnRender(VWSurface* surface) override
    {
        const HRESULT begun = vwSurfaceBeginRenderOpenGL(surface, &seen);
        if (FAILED(begun))
            return begun;
        const tagVWOPENGLSURFACE& gl = seen;
        const double left = gl.viewLeft, bottom = gl.viewBottom, top = bottom + gl.viewHeight;
        glViewport(0, 0, gl.width, gl.height);
        glOrtho(left, left + gl.viewWidth, bottom, top, 0.0, 1.0);
        glBegin(GL_QUADS);
        for (double x : {left, left + gl.viewWidth / 2})
            for (double y : {bottom, top})
                glVertex2f(float(x), float(x == left ? y : bottom + top - y));
        glEnd();
        return vwSurfaceEndRenderOpenGL(surface);
    }
    tagVWOPENGLSURFACE seen;
};

VWSurface surfaceOf(int width, int height)
{
    VWSurface surface;
    surface.geometry = {width, height, 10, 20, 64, 32, 640, 480, 0.9};
    return surface;
}

TEST(ViewerSurface, ToolDrawsIntoTheSurfaceBetweenBeginAndEnd)
{
    VWSurface surface = surfaceOf(8, 4);
    DrawingSurface elsewhere;
    drawingMakeCurrent(&elsewhere);
    QuadTool tool;
    EXPECT_EQ(tool.OnRender(&surface), S_OK);
    EXPECT_EQ(std::tuple(tool.seen.imageWidth, tool.seen.pixelAspect, tool.seen.viewHeight), std::tuple(640, 0.9, 32.0));
    EXPECT_TRUE(elsewhere.calls.empty());
    EXPECT_EQ(drawingCurrent(), &elsewhere) << "End restores what was current";
    EXPECT_FALSE(surface.rendering);
    // The left half of the view is covered: columns 0..3 of 8.
    const RgbaImage image = surface.drawing.Rasterise();
    ASSERT_EQ(image.Width(), 8);
    EXPECT_EQ(std::pair(image.Pixel(3, 2)[3], image.Pixel(4, 2)[3]), std::pair(uint8_t(255), uint8_t(0)));
    drawingMakeCurrent(nullptr);
}

TEST(ViewerSurface, BeginAndEndRefuseMisuseAndViewportInfoIsCopied)
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

    VWViewer viewer;
    viewer.viewport = {1.5, -2.0};
    tagVWVIEWPORTINFO info;
    EXPECT_EQ(vwGetViewportInfo(&viewer, &info), S_OK);
    EXPECT_EQ(std::pair(info.a, info.b), std::pair(1.5, -2.0));
    EXPECT_EQ(std::pair(vwGetViewportInfo(nullptr, &info), vwGetViewportInfo(&viewer, nullptr)),
              std::pair(E_POINTER, E_POINTER));
}

bool listed(uint32_t id)
{
    const std::vector<VWContext> all = VWControllerListContexts();
    return std::any_of(all.begin(), all.end(), [id](const VWContext& c) { return c.id == id; });
}

TEST(ViewerContexts, PushListsRemoveTakesAwayAndNullArgumentsAreRefused)
{
    CDSInteractiveTool first, second;
    int object = 0;
    uint32_t a = 0, b = 0, refused = 77;
    const std::size_t before = VWControllerListContexts().size();
    EXPECT_EQ(VWControllerPushContext(3, &first, nullptr, nullptr, nullptr, 0.0, nullptr), E_POINTER);
    EXPECT_EQ(VWControllerPushContext(3, nullptr, nullptr, nullptr, nullptr, 0.0, &refused), E_INVALIDARG);
    EXPECT_EQ(refused, 0u);
    ASSERT_EQ(VWControllerPushContext(3, &first, &object, nullptr, nullptr, 0.0, &a), S_OK);
    ASSERT_EQ(VWControllerPushContext(5, &second, nullptr, nullptr, nullptr, 0.5, &b), S_OK);
    EXPECT_TRUE(a != 0 && b != 0 && a != b);
    const std::vector<VWContext> all = VWControllerListContexts();
    ASSERT_EQ(all.size(), before + 2);
    const VWContext &older = all[all.size() - 2], &newer = all.back();
    EXPECT_EQ(std::tuple(older.id, older.kind, older.tool, older.object), std::tuple(a, 3, &first, &object));
    EXPECT_EQ(std::tuple(newer.id, newer.kind, newer.tool, newer.value), std::tuple(b, 5, &second, 0.5));
    EXPECT_EQ(VWControllerRemoveContext(a), S_OK);
    EXPECT_TRUE(!listed(a) && listed(b));
    EXPECT_EQ(VWControllerRemoveContext(a), E_INVALIDARG);
    EXPECT_EQ(VWControllerRemoveContext(0), E_INVALIDARG);
    EXPECT_EQ(VWControllerRemoveContext(b), S_OK);
    EXPECT_EQ(VWControllerListContexts().size(), before);
}

}  // namespace
