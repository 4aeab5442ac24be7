#include "host/DepthProperties.h"

#include <mutex>
#include <new>

#include "host/LumenveilProperties.h"
#include "host/LumenveilStrings.h"
#include "hostsdk/CDSBasePropertyContainer.h"

namespace {

// The plain effect's properties the depth effect shares: the aperture, the
// emphasis, the hidden links and the engine. Not Linear and its highlight
// curve: the depth render is a 16-bit render.
constexpr uint32_t kSharedKeys[] = {
    KEY_SHAPE,          KEY_MATCH_RADII,       KEY_RADIUS_X,          KEY_RADIUS_Y,   KEY_SIDES,
    KEY_ROTATION,       KEY_BRIGHT_EMPHASIS,   KEY_EMPHASISE_ALPHA,   KEY_EXTREME_PRECISION,
    KEY_CENTRE_X,       KEY_CENTRE_Y,          KEY_RADIUS_PSF1,       KEY_RADIUS_PSF2,
    KEY_LUMENVEIL_HANDLE, KEY_LUMENVEIL_HANDLE2, KEY_CHANGE_COUNT,    KEY_ENGINE,
};
constexpr int kSharedCount = sizeof kSharedKeys / sizeof kSharedKeys[0];

struct DepthRow {
    GUID guid;
    uint32_t key;
    uint32_t capabilities;
    VARTYPE type;
    uint16_t nameId, longNameId;
    double defaultValue, minimum, maximum;
    const char* const* list = nullptr;
    int listCount = 0;
};

// Radii are fractions of half the frame's width, as RadiusX; lengths in millimetres.
const DepthRow kDepthRows[] = {
    {PROPID_RadiusInfinity, KEY_RADIUS_INFINITY, DS_CAP_ANIMATED, VT_R8, 104, 105, 0.02, 0.0, 0.3},
    {PROPID_UseLens, KEY_USE_LENS, DS_CAP_PLAIN, VT_BOOL, 106, 107, 0, 0, 1},
    {PROPID_FStop, KEY_F_STOP, DS_CAP_ANIMATED, VT_R8, 108, 109, 2.8, 0.5, 64.0},
    {PROPID_FocalLength, KEY_FOCAL_LENGTH, DS_CAP_ANIMATED, VT_R8, 110, 111, 50.0, 1.0, 2000.0},
    {PROPID_SensorWidth, KEY_SENSOR_WIDTH, DS_CAP_PLAIN, VT_R8, 112, 113, 36.0, 1.0, 100.0},
    {PROPID_DepthUnit, KEY_DEPTH_UNIT, DS_CAP_PLAIN, VT_R8, 114, 115, 1000.0, 0.001, 1.0e6},
    {PROPID_Focus, KEY_FOCUS, DS_CAP_ANIMATED, VT_R8, 116, 117, 1.0, kFocusLowest, kFocusHighest},
    {PROPID_MaxRadius, KEY_MAX_RADIUS, DS_CAP_ANIMATED, VT_R8, 118, 119, 0.05, 0.0, 0.3},
    {PROPID_DepthKind, KEY_DEPTH_KIND, DS_CAP_PLAIN, VT_I4, 120, 121, 0, 0, kDepthKindCount - 1, kDepthKindNames,
     kDepthKindCount},
    {PROPID_LayerSpacing, KEY_LAYER_SPACING, DS_CAP_PLAIN, VT_R8, 122, 123, 1.0, 0.25, 4.0},
};
constexpr int kDepthCount = sizeof kDepthRows / sizeof kDepthRows[0];

// Built on first use, after the plain map, whose definitions it points at.
struct DepthMap {
    CDSPropertiesMapEntry entries[kSharedCount + kDepthCount + 1];
    uint32_t count = DS_MAP_COUNT_UNSET;
    CDSPropertiesMap descriptor{nullptr, entries, &count, &g_moduleInstance};
    DepthMap()
    {
        int n = 0;
        for (uint32_t key : kSharedKeys)
            entries[n++] = {LumenveilPropertyDefinition(key), key, 0xFFFFFFFFu};
        for (const DepthRow& r : kDepthRows)
            entries[n++] = {new (std::nothrow) CDSParamDef(r.guid, &g_moduleInstance, DS_CLASS_PARAMETER,
                                                           r.capabilities, r.type, r.nameId, r.nameId, r.longNameId,
                                                           LumenveilStringText(r.nameId),
                                                           LumenveilStringText(r.longNameId), r.defaultValue,
                                                           r.minimum, r.maximum, r.list, r.listCount),
                            r.key, 0xFFFFFFFFu};
        entries[n] = {nullptr, 0, 0};
    }
    ~DepthMap()
    {
        for (int i = kSharedCount; i < kSharedCount + kDepthCount; ++i)
            delete entries[i].definition;
    }
};

}  // namespace

CDSPropertiesMap* DepthPropertiesMap()
{
    static DepthMap map;
    // Effects may be made on several threads at once: the map is set up once.
    static std::once_flag setUp;
    std::call_once(setUp, [] {
        if (*map.descriptor.count == DS_MAP_COUNT_UNSET)
            CDSBasePropertyContainer::InitStaticPropertyMap(&map.descriptor);
    });
    return &map.descriptor;
}
