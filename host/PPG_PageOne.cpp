#include "host/PPG_PageOne.h"

#include <new>

#include "effect/Lumenveil.h"
#include "host/Help.h"
#include "host/LumenveilProperties.h"
#include "host/LumenveilStrings.h"
#include "host/Plug.h"
#include "hostsdk/CDSInteractiveTool.h"
#include "hostsdk/viewer_contexts.h"

namespace {

// Type-erased accessors of the page's bound fields and handlers.
template <auto Member> void* field(CDSPropertyPage* page) { return &(static_cast<PPG_PageOne*>(page)->*Member); }
template <void (PPG_PageOne::*Handler)()> void handler(CDSPropertyPage* page)
{
    (static_cast<PPG_PageOne*>(page)->*Handler)();
}

constexpr uint32_t kNone = DS_PPG_NONE;
constexpr uint32_t IDS_OVERLAY_TOOLTIP = 6;

const CDSPPGControlMapEntry kRows[] = {
    {&PROPID_Shape, VT_I4, VT_I4, field<&PPG_PageOne::shape>, 12, handler<&PPG_PageOne::OnShapeListChanged>, 1, 15, -1},
    {&PROPID_MatchRadii, VT_BOOL, VT_BOOL, field<&PPG_PageOne::matchRadii>, 16,
     handler<&PPG_PageOne::OnMatchRadiiClicked>, 1, 18, -1},
    {&PROPID_RadiusX, VT_R8, VT_R8, field<&PPG_PageOne::radiusX>, 20, nullptr, 1, 23, -1},
    {&PROPID_RadiusY, VT_R8, VT_R8, field<&PPG_PageOne::radiusY>, 24, nullptr, 1, 27, -1},
    {&PROPID_Sides, VT_I4, VT_I4, field<&PPG_PageOne::sides>, 28, nullptr, 1, 31, -1},
    {&PROPID_Rotation, VT_R8, VT_R8, field<&PPG_PageOne::rotation>, 32, nullptr, 1, 35, -1},
    {&PROPID_BrightEmphasis, VT_R8, VT_R8, field<&PPG_PageOne::brightEmphasis>, 36, nullptr, 1, 39, -1},
    {&PROPID_EmphasiseAlpha, VT_BOOL, VT_BOOL, field<&PPG_PageOne::emphasiseAlpha>, 40, nullptr, 1, 42, -1},
    {&PROPID_ExtremePrecision, VT_BOOL, VT_BOOL, field<&PPG_PageOne::extremePrecision>, 44, nullptr, 1, 46, -1},
    {&PROPID_CentreX, VT_R8, VT_R8, field<&PPG_PageOne::centreX>, 48, nullptr, 1, 53, -1},
    {&PROPID_CentreY, VT_R8, VT_R8, field<&PPG_PageOne::centreY>, 49, nullptr, 1, 55, -1},
    {&PROPID_RadiusPSF1, VT_R8, VT_R8, field<&PPG_PageOne::radiusPsf1>, 56, nullptr, 1, 59, -1},
    {&PROPID_RadiusPSF2, VT_R8, VT_R8, field<&PPG_PageOne::radiusPsf2>, 60, nullptr, 1, 63, -1},
    // The handles travel as 64-bit values.
    {&PROPID_LumenveilHandle, VT_UI8, VT_UI8, field<&PPG_PageOne::lumenveilHandle>, kNone, nullptr, 0, kNone, -1},
    {&PROPID_LumenveilHandle2, VT_UI8, VT_UI8, field<&PPG_PageOne::lumenveilHandle2>, kNone, nullptr, 0, kNone, -1},
    {&PROPID_ChangeCount, VT_UI4, VT_UI4, field<&PPG_PageOne::changeCount>, kNone, nullptr, 0, kNone, -1},
    {&PROPID_OverlayButton, VT_EMPTY, VT_EMPTY, nullptr, ID_OVERLAY_BUTTON, handler<&PPG_PageOne::OnOverlayButton>, 2,
     IDS_OVERLAY_TOOLTIP, -1},
    {nullptr, VT_EMPTY, VT_EMPTY, nullptr, kNone, nullptr, 2, kNone, -1},
};

CDSPPGControlMap g_controlMap("Quillfen_DS.chm", 0x1010600, nullptr, kRows);

// Live ranges of the number controls, replacing the dialog's own.
struct Range {
    uint32_t control;
    double low, high;
};
const Range kRanges[] = {{20, 0.0, 0.3},   {24, 0.0, 0.3},   {28, 3.0, 20.0},   {32, -1000.0, 1000.0}, {36, 1.0, 100.0},
                         {48, 0.0, 1.0},   {49, 0.0, 1.0},   {56, 0.001, 1.0}, {60, 0.001, 1.0}};


}  // namespace

PPG_PageOne::PPG_PageOne() : PPG_PageOne(IDD_PAGE_ONE, IDS_PAGE_NAME, CLSID_IT) {}

PPG_PageOne::PPG_PageOne(uint32_t dialog, uint32_t title, const GUID& toolClass)
    : CDSPropertyPage(dialog, title),
      serverLockTaken(0),
      lumenveil(nullptr),
      overlayContext(0),
      tool(nullptr),
      lumenveilHandle(0),
      lumenveilHandle2(0),
      changeCount(0),
      shape(0),
      matchRadii(0),
      radiusX(0),
      radiusY(0),
      sides(0),
      rotation(0),
      brightEmphasis(0),
      emphasiseAlpha(0),
      extremePrecision(0),
      centreX(0),
      centreY(0),
      radiusPsf1(0),
      radiusPsf2(0)
{
    if (g_serverLockCount) {
        InterlockedIncrement(g_serverLockCount);
        serverLockTaken = 1;
    }
    // A failure leaves the page without its tool: the Overlay button does nothing.
    CoCreateInstance(toolClass, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, reinterpret_cast<void**>(&tool));
}

PPG_PageOne::~PPG_PageOne()
{
    if (lumenveil)
        attachControls(nullptr);
    if (serverLockTaken)
        InterlockedDecrement(g_serverLockCount);
    if (overlayContext)
        VWControllerRemoveContext(overlayContext);
    overlayContext = 0;
    if (tool)
        tool->Release();
}

void* PPG_PageOne::FindInterface(const GUID& iid)
{
    return IsEqualGUID(iid, IID_IDSPropertyPage) ? static_cast<CDSPropertyPage*>(this) : nullptr;
}

HRESULT PPG_PageOne::OpenOn(IUnknown* effect) { return Open(effect, &PageOneDialog()); }

CDSPPGControlMap* PageOneControlMap()
{
    if (g_controlMap.Count() < 0)
        g_controlMap.Initialize();
    return &g_controlMap;
}

CDSPPGControlMap* PPG_PageOne::GetControlMap() { return PageOneControlMap(); }

void PPG_PageOne::attachControls(CDSBasePropertyPage* page)
{
    for (ControlVZ* control : lumenveil->controls())
        control->page = page;
}

HRESULT PPG_PageOne::OnInitPage()
{
    SetBoundVariableFromProperty(PROPID_LumenveilHandle, nullptr);
    SetBoundVariableFromProperty(PROPID_LumenveilHandle2, nullptr);
    lumenveil = reinterpret_cast<Lumenveil*>(static_cast<uintptr_t>(lumenveilHandle));
    if (HWND list = GetHwndControl(ID_SHAPE)) {
        SendMessage(list, CB_RESETCONTENT, 0, 0);
        for (int i = 0; i < kShapeCount; ++i)
            SendMessage(list, CB_INSERTSTRING, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(kShapeNames[i]));
    }
    // A missing number control is skipped.
    for (const Range& r : kRanges) {
        const VARIANT low = VariantReal(r.low), high = VariantReal(r.high);
        SetNumberControlRange(GetHwndControl(r.control), &low, &high);
    }
    if (lumenveil)
        attachControls(this);
    return S_OK;
}

HRESULT PPG_PageOne::Show(bool visible)
{
    const HRESULT status = CDSPropertyPage::Show(visible);
    if (visible && lumenveil)
        attachControls(this);
    if (!visible && overlayContext) {
        VWControllerRemoveContext(overlayContext);
        overlayContext = 0;
    }
    if (lumenveil)
        lumenveil->UpdateControls();
    return status;
}

HRESULT PPG_PageOne::UpdateUI(const GUID* property, void* object, void* params, uint32_t flags)
{
    const HRESULT status = CDSPropertyPage::UpdateUI(property, object, params, flags);
    if (lumenveil)
        lumenveil->UpdateControls();
    return status;
}

void PPG_PageOne::announceChange()
{
    ++changeCount;
    VARIANT count;
    VariantInit(&count);
    count.vt = VT_I4;
    count.lVal = static_cast<int32_t>(changeCount);
    SetAnimatedProperty(PROPID_ChangeCount, &count, nullptr, UNDO_STYLE, 0.0);
}

void PPG_PageOne::OnShapeListChanged()
{
    if (!lumenveil)
        return;
    if (lumenveil->shape.ignoreNextChange) {
        lumenveil->shape.ignoreNextChange = 0;
        return;
    }
    lumenveil->OnShapeChanged(&lumenveil->shape, -1.0);
    announceChange();
}

void PPG_PageOne::OnMatchRadiiClicked()
{
    if (!lumenveil)
        return;
    if (lumenveil->matchRadii.ignoreNextChange) {
        lumenveil->matchRadii.ignoreNextChange = 0;
        return;
    }
    lumenveil->OnMatchRadiiChanged(&lumenveil->matchRadii, -1.0);
    announceChange();
}

void PPG_PageOne::OnOverlayButton()
{
    if (overlayContext == 0) {
        CDSInteractiveTool* toolPart = nullptr;
        if (tool && SUCCEEDED(tool->QueryInterface(IID_IDSInteractiveTool, reinterpret_cast<void**>(&toolPart)))) {
            // A failed push leaves the overlay off.
            VWControllerPushContext(kOverlayContextKind, toolPart, InspectedObject(), nullptr, nullptr, 0.0,
                                    &overlayContext);
            tool->Release();  // the reference of the query; the page holds `tool`
        }
    } else {
        VWControllerRemoveContext(overlayContext);
        overlayContext = 0;
    }
}

bool PPG_PageOne::insideEffect(CDSTime time)
{
    VARIANT length;
    VariantInit(&length);
    length.vt = VT_R8;
    if (FAILED(GetPlainProperty(DSPROPID_TimespanLength, &length, InspectedObject())))
        return false;
    const double local = ConvertToLocalTime(time, InspectedObject()).seconds;
    return local >= -CDSDouble::Epsilon && local < length.dblVal - CDSDouble::Epsilon;
}

HRESULT PPG_PageOne::TransportNotify(int32_t state, double rate, CDSTime time)
{
    const HRESULT status = CDSPropertyPage::TransportNotify(state, rate, time);
    if (FAILED(status))
        return status;
    if (overlayContext && !insideEffect(time))
        OnOverlayButton();
    return status;
}

HRESULT PPG_PageOne::Help(const wchar_t*)
{
    std::wstring page;
    page.append(kHelpPage);
    html_help(nullptr, page.c_str(), 0, 0);
    return S_OK;
}
