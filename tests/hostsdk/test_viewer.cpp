// The interactive-tool base, the viewer's drawing surfaces and its context stack.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "hostsdk/CDSInteractiveTool.h"
#include "hostsdk/IDSImage.h"
#include "hostsdk/IDSImageEffectHost.h"
#include "hostsdk/PropertiesOperator.h"
#include "hostsdk/viewer.h"
#include "hostsdk/image_formats.h"
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
    HRESULT OnDoInteraction(const tagVWPENEVENT* e) override { return note("do", e), S_OK; }
    HRESULT OnEndInteraction() override { return log += "end;", S_OK; }
    void note(const char* what, const tagVWPENEVENT* e)
    {
        log += std::string(what) + ' ' + std::to_string(int(e->x)) + ',' + std::to_string(int(e->y)) + ';';
    }
    std::string log;
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
    EXPECT_EQ(tool.TerminateInteraction(), S_FALSE) << "no interaction, no end";
    EXPECT_EQ(tool.log, "begin 2,3;do 4,5;do 6,7;end;");
    EXPECT_EQ(std::pair(tool.OnPenMove(nullptr), tool.OnBeginInteraction(nullptr)), std::pair(E_POINTER, E_POINTER));
}

TEST(InteractiveTool, LinksSetTheirFlagsAndLayerRequestsAreRecorded)
{
    CDSInteractiveTool tool;
    PropertiesOperator op(nullptr);
    VWViewer viewer;
    EXPECT_EQ(tool.OnLinkToOperator(&op), S_OK);
    EXPECT_TRUE(tool.IsLinkedToOperator() && !tool.IsLinkedToViewer());
    EXPECT_EQ(tool.OnLinkToViewer(&viewer), S_OK);
    EXPECT_TRUE(tool.IsLinkedToViewer() && tool.Viewer() == &viewer && tool.Operator() == &op);
    tool.OnLinkToOperator(nullptr);
    EXPECT_TRUE(!tool.IsLinkedToOperator() && tool.IsLinkedToViewer());
    const VWRECT area = {1, 2, 3, 4};
    EXPECT_EQ(tool.InvalidateLayer(2, nullptr) | tool.InvalidateLayer(1, &area), S_OK);
    const auto& calls = tool.Invalidations();
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_TRUE(calls[0].layer == 2 && calls[0].whole);
    EXPECT_TRUE(calls[1].layer == 1 && !calls[1].whole && calls[1].area.height == 4);
}

TEST(ViewerSurface, DrawingGoesToTheSurfaceBetweenBeginAndEnd)
{
    VWSurface surface;
    surface.geometry = {8, 4, 10, 20, 64, 32, 640, 480, 0.9};
    tagVWOPENGLSURFACE gl;
    EXPECT_EQ(vwSurfaceBeginRenderOpenGL(nullptr, &gl), E_POINTER);
    EXPECT_EQ(vwSurfaceBeginRenderOpenGL(&surface, nullptr), E_POINTER);
    EXPECT_EQ(vwSurfaceEndRenderOpenGL(&surface), E_UNEXPECTED) << "not begun";
    DrawingSurface elsewhere;
    drawingMakeCurrent(&elsewhere);
    EXPECT_EQ(vwSurfaceBeginRenderOpenGL(&surface, &gl), S_OK);
    EXPECT_EQ(std::tuple(gl.height, gl.viewHeight, gl.imageWidth, gl.pixelAspect), std::tuple(4, 32.0, 640, 0.9));
    EXPECT_EQ(vwSurfaceBeginRenderOpenGL(&surface, &gl), E_UNEXPECTED);
    glViewport(0, 0, gl.width, gl.height);
    EXPECT_EQ(vwSurfaceEndRenderOpenGL(&surface), S_OK);
    EXPECT_EQ(std::pair(surface.drawing.calls.size(), elsewhere.calls.size()), std::pair(1ul, 0ul));
    EXPECT_EQ(drawingCurrent(), &elsewhere) << "End restores what was current";
    EXPECT_FALSE(surface.rendering);
    drawingMakeCurrent(nullptr);
    surface.available = false;
    EXPECT_EQ(vwSurfaceBeginRenderOpenGL(&surface, &gl), E_FAIL);
    EXPECT_EQ(drawingCurrent(), nullptr);
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

TEST(ViewerInputs, AViewerHandsOutTheInputsOfItsEffectOnlyWhenItHasThem)
{
    VWViewer viewer;
    IUnknown* image = reinterpret_cast<IUnknown*>(&viewer);  // anything not null
    EXPECT_EQ(vwFetchInput(&viewer, 2, 0.0, &image), E_NOTIMPL);
    EXPECT_EQ(image, nullptr);
    EXPECT_EQ(vwFetchInput(nullptr, 2, 0.0, &image), E_POINTER);
    EXPECT_EQ(vwFetchInput(&viewer, 2, 0.0, nullptr), E_POINTER);

    ImageEffectHost host;
    MemoryImage* depth = MemoryImage::Create(MFIF_RGBA_FLOAT, 4, 3);
    host.SetInput(2, depth);
    viewer.inputs = &host;
    // A counted reference to the very image, by the index; none for another.
    ASSERT_EQ(vwFetchInput(&viewer, 2, 1.5, &image), S_OK);
    EXPECT_EQ(image, static_cast<IUnknown*>(depth));
    EXPECT_EQ(image->Release(), 2u);  // the creator's and the host's remain
    EXPECT_EQ(vwFetchInput(&viewer, 1, 1.5, &image), E_FAIL);
    EXPECT_EQ(image, nullptr);
    depth->Release();
}

}  // namespace
