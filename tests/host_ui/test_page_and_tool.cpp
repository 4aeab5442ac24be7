// The property page and the interactive tool on an effect, in process: what the
// page shows for each Shape, the change counter, the overlay's life, pen events
// becoming property values, the overlay picture, and help requests.
#include <gtest/gtest.h>

#include <cstdlib>

#include "effect/Lumenveil.h"
#include "host/CDsClassFactory.h"
#include "host/Help.h"
#include "host/IT.h"
#include "host/LumenveilProperties.h"
#include "host/PPG_PageOne.h"
#include "host/Plug.h"
#include "hostsdk/viewer_contexts.h"

namespace {

// Serves the tool's class to CoCreateInstance, as the loaded module does.
HRESULT toolClass(const GUID& clsid, const GUID& iid, void** out)
{
    if (!(clsid == CLSID_IT))
        return CLASS_E_CLASSNOTAVAILABLE;
    auto* factory = new CDsClassFactory<IT>(g_serverLockCount);
    const HRESULT status = factory->QueryInterface(iid, out);
    factory->Release();
    return status;
}

class PageAndTool : public ::testing::Test {
protected:
    void SetUp() override
    {
        CoRegisterInProcessServer(toolClass);
        effect = new Plug();
        effect->SetTimespan(2.0);
        page = new PPG_PageOne();
        ASSERT_EQ(page->OpenOn(static_cast<IDSImageEffect*>(effect)), S_OK);
        fx = reinterpret_cast<Lumenveil*>(static_cast<uintptr_t>(effect->lumenveilHandle));
        ASSERT_EQ(page->lumenveil, fx);
    }
    void TearDown() override
    {
        page->Release();
        effect->Release();
        CoRevokeInProcessServer(toolClass);
    }
    bool shown(uint32_t id) const { return page->GetHwndControl(id)->shown; }
    double property(const GUID& guid)
    {
        VARIANT v;
        VariantInit(&v);
        effect->GetProperty(guid, &v, -1.0);
        return v.vt == VT_I4 ? v.lVal : v.dblVal;
    }
    CDSInteractiveTool* toolPart()
    {
        CDSInteractiveTool* part = nullptr;
        page->tool->QueryInterface(IID_IDSInteractiveTool, reinterpret_cast<void**>(&part));
        page->tool->Release();
        return part;
    }

    Plug* effect = nullptr;
    PPG_PageOne* page = nullptr;
    Lumenveil* fx = nullptr;
};

TEST_F(PageAndTool, PageFollowsShapeAndMatchRadiiAndCountsUserChangesOnly)
{
    // Opening: the list, the live ranges, the controls tied to the page.
    EXPECT_EQ(page->GetHwndControl(ID_SHAPE)->listEntries, (std::vector<std::string>{"Circle", "Ellipse", "Polygon", "Image"}));
    EXPECT_EQ(page->GetHwndControl(ID_RADIUS_X)->rangeHigh, 0.3);
    EXPECT_EQ(page->GetHwndControl(ID_RADIUS_PSF1)->rangeLow, 0.001);
    EXPECT_EQ(page->GetHwndControl(ID_SIDES)->rangeHigh, 20.0);
    EXPECT_EQ(page->GetHwndControl(44)->y, 160);
    EXPECT_EQ(fx->radiusX.page, page);
    EXPECT_FALSE(shown(ID_RADIUS_Y));  // Circle

    ASSERT_EQ(page->UserChange(ID_SHAPE, 2), S_OK);  // Polygon, Match Radii on
    EXPECT_EQ(property(PROPID_Shape), 2);
    for (uint32_t id : {ID_MATCH_RADII, ID_SIDES, ID_ROTATION, ID_RADIUS_X})
        EXPECT_TRUE(shown(id)) << id;
    EXPECT_FALSE(shown(ID_RADIUS_Y));
    ASSERT_EQ(page->UserChange(ID_MATCH_RADII, 0), S_OK);
    EXPECT_TRUE(shown(ID_RADIUS_Y));
    ASSERT_EQ(page->UserChange(ID_SHAPE, 3), S_OK);  // Image
    for (uint32_t id : {uint32_t(ID_CENTRE), ID_CENTRE + 1u, uint32_t(ID_RADIUS_PSF1), uint32_t(ID_RADIUS_PSF2)})
        EXPECT_TRUE(shown(id)) << id;
    for (uint32_t id : {ID_MATCH_RADII, ID_SIDES, ID_ROTATION, ID_RADIUS_X, ID_RADIUS_Y})
        EXPECT_FALSE(shown(id)) << id;
    EXPECT_EQ(page->changeCount, 3u);
    VARIANT count;
    VariantInit(&count);
    effect->GetProperty(PROPID_ChangeCount, &count, -1.0);
    EXPECT_EQ(count.ulVal, 3u);
    // A change that arrives from the host re-derives what is shown, uncounted.
    VARIANT polygon;
    VariantInit(&polygon);
    polygon.vt = VT_I4;
    polygon.lVal = 2;
    effect->SetProperty(PROPID_Shape, &polygon);
    page->UpdateUI(&PROPID_Shape, effect, nullptr, 0);
    EXPECT_TRUE(shown(ID_SIDES));
    EXPECT_EQ(page->changeCount, 3u);
    EXPECT_NE(page->DescribeState().find(" 28 number"), std::string::npos);
}

TEST_F(PageAndTool, OverlayGoesOffWhenHiddenOrOutsideTheEffect)
{
    const size_t before = VWControllerListContexts().size();
    page->UserClick(ID_OVERLAY_BUTTON);
    ASSERT_NE(page->overlayContext, 0u);
    EXPECT_EQ(VWControllerListContexts().size(), before + 1);
    page->UserClick(ID_OVERLAY_BUTTON);
    EXPECT_EQ(page->overlayContext, 0u);
    EXPECT_EQ(VWControllerListContexts().size(), before);

    page->UserClick(ID_OVERLAY_BUTTON);
    page->Show(false);
    EXPECT_EQ(page->overlayContext, 0u);
    page->Show(true);
    EXPECT_EQ(page->overlayContext, 0u);

    // The effect is 2 s long: 1.5 s keeps the overlay, 2.0 s ends it, coming
    // back leaves it off.
    page->UserClick(ID_OVERLAY_BUTTON);
    page->TransportNotify(0, 1.0, CDSTime{1.5});
    EXPECT_NE(page->overlayContext, 0u);
    page->TransportNotify(0, 1.0, CDSTime{2.0});
    EXPECT_EQ(page->overlayContext, 0u);
    page->TransportNotify(0, 1.0, CDSTime{1.0});
    EXPECT_EQ(page->overlayContext, 0u);
    EXPECT_EQ(VWControllerListContexts().size(), before);
}

TEST_F(PageAndTool, PenEventsDrawAndDragTheOverlay)
{
    CDSInteractiveTool* tool = toolPart();
    ASSERT_NE(tool, nullptr);
    VWViewer viewer;
    tool->OnLinkToOperator(page->Properties());
    EXPECT_EQ(tool->OnLinkToViewer(&viewer), S_OK);
    IT* it = static_cast<IT*>(tool);
    EXPECT_EQ(it->lumenveil, fx);
    EXPECT_EQ(IT::AspectFactor(0.9) * 0.9, 1.0);
    EXPECT_EQ(IT::AspectFactor(2.0) * 2.0, 1.0);
    EXPECT_EQ(IT::AspectFactor(1.5), 1.0);

    constexpr int W = 200, H = 100;
    VWSurface surface;
    surface.geometry = {W, H, 0.0, 0.0, double(W), double(H), W, H, 1.0};
    // Not the Image shape: nothing drawn.
    ASSERT_EQ(tool->OnRender(&surface), S_OK);
    for (const DrawCall& call : surface.drawing.calls)
        EXPECT_NE(call.kind, DrawCall::BEGIN);

    page->UserChange(ID_SHAPE, 3);
    page->UserChange(ID_CENTRE, 0.25);
    page->UserChange(ID_CENTRE + 1, 0.25);
    page->UserChange(ID_RADIUS_PSF1, 0.2);  // 20 px: the x handle at (70, 25)
    fx->centre.x = fx->centre.y = 0.25;
    fx->radiusPsf1.value = 0.2;
    fx->radiusPsf2.value = 0.4;
    fx->shape.value = SHAPE_IMAGE;
    surface.drawing.calls.clear();
    ASSERT_EQ(tool->OnRender(&surface), S_OK);
    // The picture: crosshair strokes white from 10 to 25 px right of the
    // centre's pixel (50, 25), its grey handle on it, nothing between stroke
    // and handle.
    const RgbaImage picture = surface.drawing.Rasterise(RowOrder::BOTTOM_UP);
    EXPECT_GT(picture.Pixel(62, 25)[0], 200);
    EXPECT_GT(picture.Pixel(62, 25)[2], 200);
    EXPECT_GT(picture.Pixel(50, 12)[1], 200);
    EXPECT_NEAR(picture.Pixel(50, 25)[0], 128, 2);
    EXPECT_EQ(picture.Pixel(57, 25)[3], 0);

    // A pen down that misses grabs nothing; drag and release change nothing.
    tagVWPENEVENT pen{VW_PEN_BUTTON_LEFT, 150.0, 80.0, 1.0};
    tool->OnPenDown(&pen);
    pen.x = 160;
    tool->OnPenMove(&pen);
    tool->OnPenUp(&pen);
    EXPECT_EQ(property(PROPID_RadiusPSF1), 0.2);
    // The inner circle's x handle: the page shows the running value, the
    // property changes at pen up.
    pen = {VW_PEN_BUTTON_LEFT, 70.0, 25.0, 1.0};
    tool->OnPenDown(&pen);
    pen.x = 80.0;
    tool->OnPenMove(&pen);
    EXPECT_NEAR(page->GetHwndControl(ID_RADIUS_PSF1)->value.dblVal, 2.0 * 30.0 / W, 1e-6);
    EXPECT_EQ(property(PROPID_RadiusPSF1), 0.2);
    tool->OnPenUp(&pen);
    EXPECT_NEAR(property(PROPID_RadiusPSF1), 0.3, 1e-6);
    // The crosshair moves the centre; the pen's y is stretched by its pixel
    // aspect (1.5 counts as it is): 50 x 1.5 = 75 of the 100 rows drawn.
    pen = {VW_PEN_BUTTON_LEFT, 50.0, 25.0, 1.0};
    tool->OnPenDown(&pen);
    pen = {VW_PEN_BUTTON_LEFT, 100.0, 50.0, 1.5};
    tool->OnPenMove(&pen);
    tool->OnPenUp(&pen);
    EXPECT_NEAR(property(PROPID_CentreX), 0.5, 1e-6);
    EXPECT_NEAR(property(PROPID_CentreY), 0.75, 1e-6);
    EXPECT_FALSE(tool->Invalidations().empty());
    tool->OnLinkToViewer(nullptr);
    tool->OnLinkToOperator(nullptr);
}

TEST_F(PageAndTool, HelpAfterAFailedLoadTouchesNothing)
{
    reset_help_state();
    setenv("LUMENVEIL_HELP_PAGE", "/nonexistent/lumenveil.html", 1);
    EXPECT_EQ(page->Help(nullptr), S_OK);
    EXPECT_TRUE(help_load_failed());
    // Now a page exists, but the failure is remembered: nothing is looked at.
    setenv("LUMENVEIL_HELP_PAGE", "/proc/self/status", 1);
    EXPECT_EQ(page->Help(nullptr), S_OK);
    EXPECT_TRUE(help_load_failed());
    unsetenv("LUMENVEIL_HELP_PAGE");
    reset_help_state();
}

}  // namespace
