// Lumenveil Depth's property page and focus picker, in process: the Use Lens
// switch choosing between the radius at infinity and the lens values, and a
// click on the frame setting Focus to the depth under it.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "effect/Lumenveil.h"
#include "host/CDsClassFactory.h"
#include "host/DepthIT.h"
#include "host/DepthProperties.h"
#include "host/LumenveilProperties.h"
#include "host/PPG_DepthPage.h"
#include "host/PlugDepth.h"
#include "hostsdk/IDSImageEffectHost.h"
#include "hostsdk/depth_input.h"
#include "hostsdk/image_formats.h"

namespace {

HRESULT pickerClass(const GUID& clsid, const GUID& iid, void** out)
{
    if (!(clsid == CLSID_DepthIT))
        return CLASS_E_CLASSNOTAVAILABLE;
    auto* factory = new CDsClassFactory<DepthIT>(g_serverLockCount);
    const HRESULT status = factory->QueryInterface(iid, out);
    factory->Release();
    return status;
}

class DepthPage : public ::testing::Test {
protected:
    void SetUp() override
    {
        CoRegisterInProcessServer(pickerClass);
        effect = new PlugDepth();
        effect->SetTimespan(2.0);
        page = new PPG_DepthPage();
        ASSERT_EQ(page->OpenOn(static_cast<IDSImageEffect*>(effect)), S_OK);
    }
    void TearDown() override
    {
        if (tool) {
            tool->OnLinkToViewer(nullptr);
            tool->OnLinkToOperator(nullptr);
        }
        page->Release();
        effect->Release();
        CoRevokeInProcessServer(pickerClass);
    }
    bool shown(uint32_t id) const { return page->GetHwndControl(id)->shown; }
    // A control and its label both shown, or both hidden.
    bool shownWithLabel(uint32_t id) const
    {
        EXPECT_EQ(shown(id), shown(id + 1)) << id;
        return shown(id);
    }
    double property(const GUID& guid, double time = -1.0)
    {
        VARIANT v;
        VariantInit(&v);
        effect->GetProperty(guid, &v, time);
        return v.vt == VT_I4 ? v.lVal : v.vt == VT_UI4 ? v.ulVal : v.vt == VT_BOOL ? v.boolVal != 0 : v.dblVal;
    }
    void setPlain(const GUID& guid, double value)
    {
        VARIANT v = VariantReal(value);
        effect->SetProperty(guid, &v);
    }
    // The page's tool, linked to the page's operator and a viewer fed by `host`.
    void linkPicker()
    {
        CDSInteractiveTool* part = nullptr;
        ASSERT_EQ(page->tool->QueryInterface(IID_IDSInteractiveTool, reinterpret_cast<void**>(&part)), S_OK);
        page->tool->Release();
        tool = static_cast<DepthIT*>(part);
        viewer.inputs = &host;
        tool->OnLinkToOperator(page->Properties());
        ASSERT_EQ(tool->OnLinkToViewer(&viewer), S_OK);
    }
    // A depth picture W x H whose sample at column x, row y from the bottom is
    // `depth(x, y)`: float R G B A rows lie bottom-up in the buffer, as the
    // viewer counts y.
    template <class Depth> void connectDepth(Depth depth)
    {
        image = ComRef<MemoryImage>(MemoryImage::Create(MFIF_RGBA_FLOAT, W, H));
        auto* samples = reinterpret_cast<float*>(image->Data());
        for (int y = 0; y < H; ++y)
            for (int x = 0; x < W; ++x)
                samples[(y * W + x) * 4] = depth(x, y);
        host.SetInput(DS_INPUT_DEPTH, image.get());
    }
    HRESULT click(double x, double y, double aspect = 1.0)
    {
        tagVWPENEVENT pen{VW_PEN_BUTTON_LEFT, x, y, aspect};
        const HRESULT status = tool->OnPenDown(&pen);
        tool->OnPenUp(&pen);
        return status;
    }
    double radiusAt(double depth)
    {
        double radius = -1.0;
        EXPECT_EQ(effect->RadiusOfDepth(depth, W, 0.0, &radius), S_OK);
        return radius;
    }

    static constexpr int W = 8, H = 6;
    PlugDepth* effect = nullptr;
    PPG_DepthPage* page = nullptr;
    DepthIT* tool = nullptr;
    ImageEffectHost host;
    VWViewer viewer;
    ComRef<MemoryImage> image;
};

TEST_F(DepthPage, ShowsTheRadiusOrTheLensValuesByTheSwitchBesideTheSharedControls)
{
    // The effect names this page; the plain effect keeps its own.
    EXPECT_EQ(effect->PropertyPageClass(), CLSID_PPG_DepthPage);
    Plug* plain = new Plug();
    EXPECT_EQ(plain->PropertyPageClass(), CLSID_PPG_PageOne);
    plain->Release();

    // The shared controls as the plain page has them, its handlers included.
    EXPECT_EQ(page->GetHwndControl(ID_SHAPE)->listEntries,
              (std::vector<std::string>{"Circle", "Ellipse", "Polygon", "Image"}));
    EXPECT_EQ(page->GetHwndControl(ID_RADIUS_X)->rangeHigh, 0.3);
    ASSERT_EQ(page->UserChange(ID_SHAPE, 2), S_OK);
    EXPECT_TRUE(shown(ID_SIDES));
    EXPECT_EQ(property(PROPID_ChangeCount), 1);

    // The depth controls: the kinds listed, ranges as the properties give them.
    EXPECT_EQ(page->GetHwndControl(ID_DEPTH_KIND)->listEntries, (std::vector<std::string>{"Distance", "Normalised"}));
    EXPECT_EQ(page->GetHwndControl(ID_FOCUS)->rangeLow, 0.001);
    EXPECT_EQ(page->GetHwndControl(ID_FOCUS)->rangeHigh, 1.0e6);
    EXPECT_EQ(page->GetHwndControl(ID_F_STOP)->rangeLow, 0.5);
    EXPECT_EQ(page->GetHwndControl(ID_LAYER_SPACING)->rangeHigh, 4.0);
    for (uint32_t id : {ID_FOCUS, ID_MAX_RADIUS, ID_DEPTH_KIND, ID_LAYER_SPACING})
        EXPECT_TRUE(shownWithLabel(id)) << id;

    const uint32_t lensValues[] = {ID_F_STOP, ID_FOCAL_LENGTH, ID_SENSOR_WIDTH, ID_DEPTH_UNIT};
    auto expectLens = [&](bool lens, const char* when) {
        EXPECT_EQ(shownWithLabel(ID_RADIUS_INFINITY), !lens) << when;
        for (uint32_t id : lensValues)
            EXPECT_EQ(shownWithLabel(id), lens) << when << " " << id;
        EXPECT_EQ(page->GetHwndControl(ID_USE_LENS)->checkState, lens ? BST_CHECKED : BST_UNCHECKED) << when;
    };
    expectLens(false, "opened with Use Lens off");
    ASSERT_EQ(page->UserChange(ID_USE_LENS, 1), S_OK);
    EXPECT_EQ(property(PROPID_UseLens), 1);
    expectLens(true, "switched on by the user");
    // A change from the host re-derives what is shown.
    setPlain(PROPID_UseLens, 0);
    page->UpdateUI(&PROPID_UseLens, effect, nullptr, 0);
    expectLens(false, "switched off by the host");
    // A user's edit of a depth value reaches the property.
    ASSERT_EQ(page->UserChange(ID_FOCUS, 3.2), S_OK);
    EXPECT_EQ(property(PROPID_Focus), 3.2);
}

TEST_F(DepthPage, AClickSetsFocusToTheDepthUnderThePenAndOutsideTheFrameNothing)
{
    linkPicker();
    // Distances 1.25 + x + 2 y (y from the bottom).
    auto distance = [](int x, int y) { return 1.25f + x + 2.0f * y; };
    connectDepth(distance);
    const std::pair<int, int> pixels[] = {{0, 0}, {3, 2}, {7, 5}, {5, 1}};
    for (const auto& [x, y] : pixels) {
        EXPECT_EQ(click(x + 0.5, y + 0.5), S_OK) << x << "," << y;
        EXPECT_DOUBLE_EQ(property(PROPID_Focus), distance(x, y)) << x << "," << y;
        // The page shows it, and that pixel is now in focus.
        EXPECT_DOUBLE_EQ(VariantNumber(page->GetHwndControl(ID_FOCUS)->value), distance(x, y));
        EXPECT_EQ(radiusAt(distance(x, y)), 0.0);
    }
    // A pixel aspect of 1.5 stretches the pen's y as the plain overlay does:
    // y = 2.5 / 1.5 is row 2.
    EXPECT_EQ(click(4.5, 2.5 / 1.5, 1.5), S_OK);
    EXPECT_DOUBLE_EQ(property(PROPID_Focus), distance(4, 2));

    // Outside the frame: nothing is written.
    const double before = property(PROPID_Focus);
    const size_t writes = page->Properties()->Writes().size();
    for (const auto& [x, y] : {std::pair{-0.5, 1.0}, {W + 0.0, 1.0}, {1.0, -0.5}, {1.0, H + 0.25}})
        EXPECT_EQ(click(x, y), S_FALSE) << x << "," << y;
    EXPECT_EQ(property(PROPID_Focus), before);
    EXPECT_EQ(page->Properties()->Writes().size(), writes);

    // A pixel at infinity focuses as far as Focus goes.
    connectDepth([&](int x, int y) { return x == 2 ? std::numeric_limits<float>::quiet_NaN() : distance(x, y); });
    EXPECT_EQ(click(2.5, 0.5), S_OK);
    EXPECT_EQ(property(PROPID_Focus), 1.0e6);

    // Normalised depth: the focus is on the same scale as the samples (the
    // user guide), so a sample picked is its own focus and lies in focus.
    setPlain(PROPID_DepthKind, DEPTH_NORMALISED);
    auto normalised = [](int x, int y) { return 0.05f + 0.1f * x + 0.02f * y; };
    connectDepth(normalised);
    EXPECT_EQ(click(6.5, 4.5), S_OK);
    EXPECT_DOUBLE_EQ(property(PROPID_Focus), normalised(6, 4));
    EXPECT_EQ(radiusAt(normalised(6, 4)), 0.0);
    EXPECT_GT(std::fabs(radiusAt(normalised(0, 4))), 0.0);
}

TEST_F(DepthPage, APickKeysAnAnimatedFocusAndLeavesTheOverlayHandlesTheirPresses)
{
    linkPicker();
    auto distance = [](int x, int y) { return 2.0f + x + 10.0f * y; };
    connectDepth(distance);
    // Focus keyed at 0 s and 2 s: a pick at 1.5 s keys it there.
    effect->SetPropertyKey(PROPID_Focus, 0.0, 5.0);
    effect->SetPropertyKey(PROPID_Focus, 2.0, 5.0);
    page->TransportNotify(0, 1.0, CDSTime{1.5});
    tool->OnOnTimeChange(1.5);
    EXPECT_EQ(click(1.5, 3.5), S_OK);
    EXPECT_DOUBLE_EQ(property(PROPID_Focus, 1.5), distance(1, 3));
    EXPECT_EQ(property(PROPID_Focus, 0.0), 5.0);
    EXPECT_EQ(property(PROPID_Focus, 2.0), 5.0);
    ASSERT_FALSE(page->Properties()->Writes().empty());
    EXPECT_EQ(page->Properties()->Writes().back().undoStyle, UNDO_STYLE);

    // With the Image shape, a press on the crosshair's handle moves the
    // centre; it picks nothing.
    auto* fx = reinterpret_cast<Lumenveil*>(static_cast<uintptr_t>(effect->lumenveilHandle));
    fx->shape.value = SHAPE_IMAGE;
    fx->centre.x = 0.5;
    fx->centre.y = 0.5;
    VWSurface surface;
    surface.geometry = {W, H, 0.0, 0.0, double(W), double(H), W, H, 1.0};
    ASSERT_EQ(tool->OnRender(&surface), S_OK);
    const double picked = property(PROPID_Focus, 1.5);
    EXPECT_EQ(click(W * 0.5, H * 0.5), S_OK);
    EXPECT_EQ(property(PROPID_Focus, 1.5), picked);
}

}  // namespace
