#include "host/PPG_DepthPage.h"

#include <vector>

#include "host/DepthProperties.h"
#include "host/LumenveilStrings.h"
#include "host/PlugDepth.h"
#include "hostsdk/CDSParamDef.h"

namespace {

template <auto Member> void* field(CDSPropertyPage* page) { return &(static_cast<PPG_DepthPage*>(page)->*Member); }
void useLensClicked(CDSPropertyPage* page) { static_cast<PPG_DepthPage*>(page)->OnUseLensClicked(); }

const CDSPPGControlMapEntry kDepthRows[] = {
    {&PROPID_UseLens, VT_BOOL, VT_BOOL, field<&PPG_DepthPage::useLens>, ID_USE_LENS, useLensClicked, 1,
     DS_PPG_NONE, -1},
    {&PROPID_RadiusInfinity, VT_R8, VT_R8, field<&PPG_DepthPage::radiusInfinity>, ID_RADIUS_INFINITY, nullptr, 1,
     DS_PPG_NONE, -1},
    {&PROPID_FStop, VT_R8, VT_R8, field<&PPG_DepthPage::fStop>, ID_F_STOP, nullptr, 1, DS_PPG_NONE, -1},
    {&PROPID_FocalLength, VT_R8, VT_R8, field<&PPG_DepthPage::focalLength>, ID_FOCAL_LENGTH, nullptr, 1,
     DS_PPG_NONE, -1},
    {&PROPID_SensorWidth, VT_R8, VT_R8, field<&PPG_DepthPage::sensorWidth>, ID_SENSOR_WIDTH, nullptr, 1,
     DS_PPG_NONE, -1},
    {&PROPID_DepthUnit, VT_R8, VT_R8, field<&PPG_DepthPage::depthUnit>, ID_DEPTH_UNIT, nullptr, 1, DS_PPG_NONE, -1},
    {&PROPID_Focus, VT_R8, VT_R8, field<&PPG_DepthPage::focus>, ID_FOCUS, nullptr, 1, DS_PPG_NONE, -1},
    {&PROPID_MaxRadius, VT_R8, VT_R8, field<&PPG_DepthPage::maxRadius>, ID_MAX_RADIUS, nullptr, 1, DS_PPG_NONE, -1},
    {&PROPID_DepthKind, VT_I4, VT_I4, field<&PPG_DepthPage::depthKind>, ID_DEPTH_KIND, nullptr, 1, DS_PPG_NONE, -1},
    {&PROPID_LayerSpacing, VT_R8, VT_R8, field<&PPG_DepthPage::layerSpacing>, ID_LAYER_SPACING, nullptr, 1,
     DS_PPG_NONE, -1},
};

// The plain page's rows (its terminator left out), then the depth rows and a terminator.
struct DepthControlMap {
    std::vector<CDSPPGControlMapEntry> rows;
    CDSPPGControlMap map;
    DepthControlMap() : rows(joinedRows()), map(PageOneControlMap()->helpFile, PageOneControlMap()->number, nullptr,
                                                rows.data())
    {
        map.Initialize();
    }
    static std::vector<CDSPPGControlMapEntry> joinedRows()
    {
        const CDSPPGControlMap* plain = PageOneControlMap();
        std::vector<CDSPPGControlMapEntry> joined(plain->Entries(), plain->Entries() + plain->Count());
        joined.insert(joined.end(), std::begin(kDepthRows), std::end(kDepthRows));
        joined.push_back({nullptr, VT_EMPTY, VT_EMPTY, nullptr, DS_PPG_NONE, nullptr, DS_PPG_BUTTON, DS_PPG_NONE, -1});
        return joined;
    }
};

// The definition of depth property `guid`, or null.
const CDSParamDef* depthDefinition(const GUID& guid)
{
    for (const CDSPropertiesMapEntry* e = DepthPropertiesMap()->entries; e->count != 0; ++e)
        if (e->definition && e->definition->guid == guid)
            return e->definition;
    return nullptr;
}

// The controls Use Lens switches: on, the lens values; off, the radius.
constexpr uint32_t kLensControls[] = {ID_F_STOP, ID_FOCAL_LENGTH, ID_SENSOR_WIDTH, ID_DEPTH_UNIT};

}  // namespace

PPG_DepthPage::PPG_DepthPage()
    : PPG_PageOne(IDD_DEPTH_PAGE, IDS_DEPTH_PAGE_NAME, CLSID_DepthIT),
      radiusInfinity(0),
      useLens(0),
      fStop(0),
      focalLength(0),
      sensorWidth(0),
      depthUnit(0),
      focus(0),
      maxRadius(0),
      depthKind(0),
      layerSpacing(0)
{
}

HRESULT PPG_DepthPage::OpenOn(IUnknown* effect) { return Open(effect, &DepthPageDialog()); }

CDSPPGControlMap* PPG_DepthPage::GetControlMap()
{
    static DepthControlMap depthMap;
    return &depthMap.map;
}

HRESULT PPG_DepthPage::OnInitPage()
{
    const HRESULT status = PPG_PageOne::OnInitPage();
    if (HWND list = GetHwndControl(ID_DEPTH_KIND)) {
        SendMessage(list, CB_RESETCONTENT, 0, 0);
        for (int i = 0; i < kDepthKindCount; ++i)
            SendMessage(list, CB_INSERTSTRING, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(kDepthKindNames[i]));
    }
    for (const CDSPPGControlMapEntry& row : kDepthRows) {
        const CDSParamDef* definition = depthDefinition(*row.property);
        if (!definition || !definition->hasRange() || row.propertyType != VT_R8)
            continue;
        const VARIANT low = VariantReal(definition->minimum), high = VariantReal(definition->maximum);
        SetNumberControlRange(GetHwndControl(row.control), &low, &high);
    }
    return status;
}

HRESULT PPG_DepthPage::UpdateUI(const GUID* property, void* object, void* params, uint32_t flags)
{
    const HRESULT status = PPG_PageOne::UpdateUI(property, object, params, flags);
    showLensControls(useLens != 0);
    return status;
}

void PPG_DepthPage::OnUseLensClicked()
{
    useLens = SendMessage(GetHwndControl(ID_USE_LENS), BM_GETCHECK, 0, 0) == BST_CHECKED ? 1 : 0;
    showLensControls(useLens != 0);
}

void PPG_DepthPage::showLensControls(bool lens)
{
    auto show = [this](uint32_t id, bool shown) {
        for (uint32_t widget : {id, id + 1})
            if (HWND window = GetHwndControl(widget))
                ShowWindow(window, shown ? SW_SHOWNORMAL : SW_HIDE);
    };
    show(ID_RADIUS_INFINITY, !lens);
    for (uint32_t id : kLensControls)
        show(id, lens);
}
