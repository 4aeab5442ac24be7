// The property page and the interactive tool on an effect, in process: what the
// page shows and counts, the overlay's life, pen events becoming property values.
#include <gtest/gtest.h>

#include "effect/Lumenveil.h"
#include "host/CDsClassFactory.h"
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
        return v.vt == VT_I4 ? v.lVal : v.vt == VT_UI4 ? v.ulVal : v.dblVal;
    }

    Plug* effect = nullptr;
    PPG_PageOne* page = nullptr;
    Lumenveil* fx = nullptr;
};

TEST_F(PageAndTool, PageFollowsShapeAndMatchRadiiAndCountsUserChangesOnly)
{
    // Opening: the list, the live ranges, the controls tied to the page.
    EXPECT_EQ(page->GetHwndControl(ID_SHAPE)->listEntries, (std::vector<std::string>{"Circle", "Ellipse", "Polygon", "Image"}));
    const std::tuple<uint32_t, double, double> ranges[] = {
        {ID_RADIUS_X, 0.0, 0.3},          {ID_RADIUS_Y, 0.0, 0.3}, {ID_SIDES, 3.0, 20.0},   {ID_ROTATION, -1000.0, 1000.0},
        {ID_BRIGHT_EMPHASIS, 1.0, 100.0}, {ID_CENTRE, 0.0, 1.0},   {ID_CENTRE + 1, 0.0, 1.0}, {ID_RADIUS_PSF1, 0.001, 1.0},
        {ID_RADIUS_PSF2, 0.001, 1.0}};
    for (const auto& [id, low, high] : ranges) {
        EXPECT_EQ(page->GetHwndControl(id)->rangeLow, low) << id;
        EXPECT_EQ(page->GetHwndControl(id)->rangeHigh, high) << id;
    }
    EXPECT_FALSE(shown(ID_RADIUS_Y));  // Circle

    ASSERT_EQ(page->UserChange(ID_SHAPE, 2), S_OK);  // Polygon, Match Radii on
    EXPECT_EQ(property(PROPID_Shape), 2);
    EXPECT_TRUE(shown(ID_SIDES));
    EXPECT_FALSE(shown(ID_RADIUS_Y));
    ASSERT_EQ(page->UserChange(ID_MATCH_RADII, 0), S_OK);
    EXPECT_TRUE(shown(ID_RADIUS_Y));
    ASSERT_EQ(page->UserChange(ID_SHAPE, 3), S_OK);  // Image
    EXPECT_TRUE(shown(ID_CENTRE + 1));
    EXPECT_FALSE(shown(ID_RADIUS_X));
    EXPECT_EQ(property(PROPID_ChangeCount), 3);
    // A change that arrives from the host re-derives what is shown, uncounted.
    VARIANT polygon = VariantReal(2.0);
    effect->SetProperty(PROPID_Shape, &polygon);
    page->UpdateUI(&PROPID_Shape, effect, nullptr, 0);
    EXPECT_TRUE(shown(ID_SIDES));
    EXPECT_EQ(page->changeCount, 3u);
}

TEST_F(PageAndTool, OverlayGoesOffWhenHiddenOrOutsideTheEffect)
{
    const size_t before = VWControllerListContexts().size();
    // Hiding the page ends it; showing it again leaves it off.
    page->UserClick(ID_OVERLAY_BUTTON);
    EXPECT_EQ(VWControllerListContexts().size(), before + 1);
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
    page->TransportNotify(0, 1.0, CDSTime{1.0});
    EXPECT_EQ(page->overlayContext, 0u);
    EXPECT_EQ(VWControllerListContexts().size(), before);
}

TEST_F(PageAndTool, PenEventsDrawAndDragTheOverlayOfTheImageShape)
{
    CDSInteractiveTool* tool = nullptr;
    ASSERT_EQ(page->tool->QueryInterface(IID_IDSInteractiveTool, reinterpret_cast<void**>(&tool)), S_OK);
    page->tool->Release();
    VWViewer viewer;
    tool->OnLinkToOperator(page->Properties());
    EXPECT_EQ(tool->OnLinkToViewer(&viewer), S_OK);
    // A pixel aspect of 0.9 or 2.0 counts as square, 1.5 as it is.
    for (const auto& [aspect, factor] : {std::pair{0.9, 1 / 0.9}, {2.0, 0.5}, {1.5, 1.0}})
        EXPECT_EQ(IT::AspectFactor(aspect), factor) << aspect;

    constexpr int W = 200, H = 100;
    VWSurface surface;
    surface.geometry = {W, H, 0.0, 0.0, double(W), double(H), W, H, 1.0};
    fx->centre.x = fx->centre.y = 0.25;
    fx->radiusPsf1.value = 0.2;  // 20 px: the x handle at (70, 25)
    fx->radiusPsf2.value = 0.4;
    fx->shape.value = SHAPE_IMAGE;
    for (const auto& [guid, value] : {std::pair{&PROPID_CentreX, 0.25}, {&PROPID_CentreY, 0.25}, {&PROPID_RadiusPSF1, 0.2}}) {
        VARIANT v = VariantReal(value);
        effect->SetProperty(*guid, &v);
    }
    ASSERT_EQ(tool->OnRender(&surface), S_OK);
    // The crosshair's grey handle sits on the centre's pixel (50, 25).
    EXPECT_NEAR(surface.drawing.Rasterise(RowOrder::BOTTOM_UP).Pixel(50, 25)[0], 128, 2);

    // The inner circle's x handle: the page shows the running value, the
    // property changes at pen up.
    tagVWPENEVENT pen{VW_PEN_BUTTON_LEFT, 70.0, 25.0, 1.0};
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
    tool->OnLinkToViewer(nullptr);
    tool->OnLinkToOperator(nullptr);
}

}  // namespace
