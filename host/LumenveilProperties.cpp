#include "host/LumenveilProperties.h"

#include <mutex>
#include <new>

#include "generic/library/LumenveilInfo.h"
#include "vzlibs/fftlib/fft_modes.h"
#include "hostsdk/CDSBasePropertyContainer.h"
#include "host/LumenveilStrings.h"

void* g_moduleInstance = nullptr;

namespace {

constexpr double kNoMin = 1.0, kNoMax = 0.0;  // min > max: no range

// One row of the property table.
struct PropertyRow {
    GUID guid;
    uint32_t key;
    uint32_t capabilities;
    VARTYPE type;
    uint16_t nameId, shortNameId, longNameId;
    double defaultValue, minimum, maximum;
    const char* const* list = nullptr;  // the names of a list property's values
    int listCount = 0;
};

const PropertyRow kRows[kLumenveilPropertyCount] = {
    {PROPID_Shape, KEY_SHAPE, DS_CAP_ANIMATED, VT_I4, 14, 14, 15, 0, 0, kShapeCount - 1, kShapeNames, kShapeCount},
    {PROPID_MatchRadii, KEY_MATCH_RADII, DS_CAP_PLAIN, VT_BOOL, 17, 17, 18, 1, 0, 1},
    {PROPID_RadiusX, KEY_RADIUS_X, DS_CAP_ANIMATED, VT_R8, 22, 22, 23, 0.03, 0.0, 0.3},
    {PROPID_RadiusY, KEY_RADIUS_Y, DS_CAP_ANIMATED, VT_R8, 26, 26, 27, 0.03, 0.0, 0.3},
    {PROPID_Sides, KEY_SIDES, DS_CAP_ANIMATED, VT_I4, 30, 30, 31, 6, 3, 20},
    {PROPID_Rotation, KEY_ROTATION, DS_CAP_ANIMATED, VT_R8, 34, 34, 35, 0.0, -1000.0, 1000.0},
    {PROPID_BrightEmphasis, KEY_BRIGHT_EMPHASIS, DS_CAP_ANIMATED, VT_R8, 38, 38, 39, 50.0, 1.0, 100.0},
    {PROPID_EmphasiseAlpha, KEY_EMPHASISE_ALPHA, DS_CAP_PLAIN, VT_BOOL, 41, 41, 42, 0, 0, 1},
    {PROPID_ExtremePrecision, KEY_EXTREME_PRECISION, DS_CAP_PLAIN, VT_BOOL, 45, 45, 46, 0, 0, 1},
    {PROPID_CentreX, KEY_CENTRE_X, DS_CAP_ANIMATED, VT_R8, 52, 52, 53, 0.5, 0.0, 1.0},
    {PROPID_CentreY, KEY_CENTRE_Y, DS_CAP_ANIMATED, VT_R8, 54, 54, 55, 0.5, 0.0, 1.0},
    {PROPID_RadiusPSF1, KEY_RADIUS_PSF1, DS_CAP_ANIMATED, VT_R8, 58, 58, 59, 0.1, 0.001, 1.0},
    {PROPID_RadiusPSF2, KEY_RADIUS_PSF2, DS_CAP_ANIMATED, VT_R8, 62, 62, 63, 0.15, 0.001, 1.0},
    {PROPID_LumenveilHandle, KEY_LUMENVEIL_HANDLE, DS_CAP_HIDDEN, VT_UI8, 0, 0, 0, 0, kNoMin, kNoMax},
    {PROPID_LumenveilHandle2, KEY_LUMENVEIL_HANDLE2, DS_CAP_HIDDEN, VT_UI8, 0, 0, 0, 0, kNoMin, kNoMax},
    {PROPID_ChangeCount, KEY_CHANGE_COUNT, DS_CAP_PLAIN, VT_UI4, 0, 0, 0, 0, kNoMin, kNoMax},
    // Scene-linear render, off by default; its highlight emphasis is off (1.0)
    // until given, and acts above a threshold in the frame's own light.
    {PROPID_Linear, KEY_LINEAR, DS_CAP_PLAIN, VT_BOOL, 66, 66, 67, 0, 0, 1},
    {PROPID_HighlightEmphasis, KEY_HIGHLIGHT_EMPHASIS, DS_CAP_ANIMATED, VT_R8, 70, 70, 71, 1.0, 1.0, 100.0},
    {PROPID_HighlightThreshold, KEY_HIGHLIGHT_THRESHOLD, DS_CAP_ANIMATED, VT_R8, 74, 74, 75, 1.0, 0.001, 1000.0},
    // The engine's named modes; the default is set from VZ_FFT_MODE on first use.
    {PROPID_Engine, KEY_ENGINE, DS_CAP_PLAIN, VT_I4, 78, 78, 79, 0, 0, fft_mode_count() - 1.0, fft_mode_names(),
     fft_mode_count()},
};

// The map, built at module load in table order.
struct PropertyMap {
    CDSPropertiesMapEntry entries[kLumenveilPropertyCount + 1];
    uint32_t count = DS_MAP_COUNT_UNSET;
    CDSPropertiesMap descriptor{nullptr, entries, &count, &g_moduleInstance};
    PropertyMap()
    {
        for (int i = 0; i < kLumenveilPropertyCount; ++i) {
            const PropertyRow& r = kRows[i];
            // An allocation that fails leaves a null definition in the entry.
            entries[i].definition = new (std::nothrow)
                CDSParamDef(r.guid, &g_moduleInstance, DS_CLASS_PARAMETER, r.capabilities, r.type, r.nameId,
                            r.shortNameId, r.longNameId, LumenveilStringText(r.nameId),
                            LumenveilStringText(r.longNameId), r.defaultValue, r.minimum, r.maximum, r.list,
                            r.listCount);
            entries[i].key = r.key;
            entries[i].count = 0xFFFFFFFFu;
        }
        entries[kLumenveilPropertyCount] = {nullptr, 0, 0};
    }
    ~PropertyMap()
    {
        for (int i = 0; i < kLumenveilPropertyCount; ++i)
            delete entries[i].definition;
    }
};

PropertyMap g_map;

}  // namespace

CDSPropertiesMap* LumenveilPropertiesMap()
{
    // Effects may be made on several threads at once: the map is set up once.
    static std::once_flag setUp;
    std::call_once(setUp, [] {
        if (*g_map.descriptor.count != DS_MAP_COUNT_UNSET)
            return;
        // Hosts that set no engine get the process's default, read here rather
        // than at load, where the log may not be ready to warn of a bad value.
        for (int i = 0; i < kLumenveilPropertyCount; ++i)
            if (g_map.entries[i].key == KEY_ENGINE && g_map.entries[i].definition)
                g_map.entries[i].definition->defaultValue = fft_mode_index(fft_mode_from_environment());
        CDSBasePropertyContainer::InitStaticPropertyMap(&g_map.descriptor);
    });
    return &g_map.descriptor;
}

CDSParamDef* LumenveilPropertyDefinition(uint32_t key)
{
    const CDSPropertiesMap* map = LumenveilPropertiesMap();
    for (int i = 0; i < kLumenveilPropertyCount; ++i)
        if (map->entries[i].key == key)
            return map->entries[i].definition;
    return nullptr;
}
