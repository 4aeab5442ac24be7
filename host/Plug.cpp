#include "host/Plug.h"

#include <cstring>
#include <new>

#include "effect/Lumenveil.h"
#include "host/LumenveilProperties.h"
#include "host/LumenveilStrings.h"
#include "vzlibs/fftlib/fft_modes.h"
#include "hostsdk/image_format_geometry.h"

namespace {

volatile int32_t g_serverLocks = 0;

// The host's identifiers written into the information records.
constexpr GUID kFxCategory = {0x0BC5A2F0, 0x5C49, 0x11CF, {0xA0, 0x4A, 0x00, 0xA0, 0x24, 0x18, 0xCF, 0xB9}};
constexpr GUID kFxKind = {0x0BC5A2F2, 0x5C49, 0x11CF, {0xA0, 0x4A, 0x00, 0xA0, 0x24, 0x18, 0xCF, 0xB9}};
// Announced to the host after SetDefaults.
constexpr GUID kDefaultsChanged = {0x5B192010, 0x2C0D, 0x11D0, {0x82, 0xAB, 0x00, 0xA0, 0x24, 0x3F, 0x10, 0x13}};
constexpr uint32_t kDefaultsChangedFlags = 0x8000;

const DSInputTableEntry kInputs[2] = {{IDS_INPUT, IDS_INPUT, 0}, {IDS_SPREAD, IDS_SPREAD, 1}};

// The effect's picture: a soft white disc on dark grey.
const EffectBitmap& effectBitmap()
{
    static uint8_t pixels[64 * 51 * 3];
    static const EffectBitmap bitmap = [] {
        for (int y = 0; y < 51; ++y)
            for (int x = 0; x < 64; ++x) {
                const double dx = x - 31.5, dy = y - 25.0;
                const double d = dx * dx + dy * dy;
                const uint8_t v = d < 300.0 ? 240 : d < 400.0 ? 160 : 48;
                for (int c = 0; c < 3; ++c)
                    pixels[(y * 64 + x) * 3 + c] = v;
            }
        return EffectBitmap{64, 51, pixels};
    }();
    return bitmap;
}

HRESULT loadName(uint32_t id, wchar_t* buffer, int size)
{
    if (!buffer)
        return E_POINTER;
    if (size > 0)
        buffer[0] = L'\0';
    return LoadStringW(id, buffer, size) > 0 ? S_OK : E_FAIL;
}

Lumenveil* makePlainLumenveil() { return new (std::nothrow) Lumenveil(); }

}  // namespace

volatile int32_t* g_serverLockCount = &g_serverLocks;

Plug::Plug() : Plug(makePlainLumenveil) {}

Plug::Plug(LumenveilMaker maker)
    : serverLockTaken(0),
      lumenveilHandle(0),
      lumenveilHandle2(0),
      changeCount(0),
      spare(0.0),
      shape(0),
      matchRadii(1),
      radiusX(0.03),
      radiusY(0.03),
      sides(6),
      rotation(0.0),
      brightEmphasis(50.0),
      emphasiseAlpha(0),
      extremePrecision(0),
      centreX(0.5),
      centreY(0.5),
      radiusPsf1(0.1),
      radiusPsf2(0.15),
      linear(0),
      highlightEmphasis(1.0),
      highlightThreshold(1.0),
      engineMode(fft_mode_index(FFT_MODE_FFTW)),
      lumenveil(nullptr),
      sourceEffect(nullptr),
      lumenveilMaker(maker)
{
    bindStoredValues();
    takeServerLock();
    SetPropertyPageClass(CLSID_PPG_PageOne);
    Init();
}

Plug::Plug(const Plug& source)
    : CDSImageMIEffect(source),
      serverLockTaken(0),
      lumenveilHandle(source.lumenveilHandle),
      lumenveilHandle2(source.lumenveilHandle2),
      changeCount(source.changeCount),
      spare(source.spare),
      shape(source.shape),
      matchRadii(source.matchRadii),
      radiusX(source.radiusX),
      radiusY(source.radiusY),
      sides(source.sides),
      rotation(source.rotation),
      brightEmphasis(source.brightEmphasis),
      emphasiseAlpha(source.emphasiseAlpha),
      extremePrecision(source.extremePrecision),
      centreX(source.centreX),
      centreY(source.centreY),
      radiusPsf1(source.radiusPsf1),
      radiusPsf2(source.radiusPsf2),
      linear(source.linear),
      highlightEmphasis(source.highlightEmphasis),
      highlightThreshold(source.highlightThreshold),
      engineMode(source.engineMode),
      lumenveil(source.lumenveil),
      sourceEffect(const_cast<Plug*>(&source)),
      lumenveilMaker(source.lumenveilMaker)
{
    bindStoredValues();  // the copied bindings point at the source's members
    takeServerLock();
    CopyAnimation(source);
}

Plug::~Plug()
{
    // Only the effect that made the Lumenveil deletes it; clones share it.
    if (!sourceEffect) {
        delete lumenveil;
        lumenveil = nullptr;
        Term();
    }
    if (serverLockTaken)
        InterlockedDecrement(g_serverLockCount);
}

void Plug::takeServerLock()
{
    if (g_serverLockCount) {
        InterlockedIncrement(g_serverLockCount);
        serverLockTaken = 1;
    }
}

void Plug::bindStoredValues()
{
    BindStoredValue(KEY_SHAPE, &shape);
    BindStoredValue(KEY_MATCH_RADII, &matchRadii);
    BindStoredValue(KEY_RADIUS_X, &radiusX);
    BindStoredValue(KEY_RADIUS_Y, &radiusY);
    BindStoredValue(KEY_SIDES, &sides);
    BindStoredValue(KEY_ROTATION, &rotation);
    BindStoredValue(KEY_BRIGHT_EMPHASIS, &brightEmphasis);
    BindStoredValue(KEY_EMPHASISE_ALPHA, &emphasiseAlpha);
    BindStoredValue(KEY_EXTREME_PRECISION, &extremePrecision);
    BindStoredValue(KEY_CENTRE_X, &centreX);
    BindStoredValue(KEY_CENTRE_Y, &centreY);
    BindStoredValue(KEY_RADIUS_PSF1, &radiusPsf1);
    BindStoredValue(KEY_RADIUS_PSF2, &radiusPsf2);
    BindStoredValue(KEY_LUMENVEIL_HANDLE, &lumenveilHandle);
    BindStoredValue(KEY_LUMENVEIL_HANDLE2, &lumenveilHandle2);
    BindStoredValue(KEY_CHANGE_COUNT, &changeCount);
    BindStoredValue(KEY_LINEAR, &linear);
    BindStoredValue(KEY_HIGHLIGHT_EMPHASIS, &highlightEmphasis);
    BindStoredValue(KEY_HIGHLIGHT_THRESHOLD, &highlightThreshold);
    BindStoredValue(KEY_ENGINE, &engineMode);
}

HRESULT Plug::Init()
{
    const HRESULT status = CDSPlugInEffect::Init();
    if (FAILED(status))
        return status;
    const HRESULT defaults = static_cast<IDSImageEffect*>(this)->SetDefaults();
    // An effect that no host sets an engine for takes the mode VZ_FFT_MODE
    // names as it is made.
    engineMode = fft_mode_index(fft_mode_from_environment());

    lumenveil = lumenveilMaker();
    lumenveilHandle = reinterpret_cast<uintptr_t>(lumenveil);
    lumenveilHandle2 = 0;
    if (!lumenveil)
        return E_OUTOFMEMORY;
    lumenveil->owner = this;
    lumenveil->renderMonitor = host;
    bindControls();
    setUpOverlay();
    return defaults;
}

void Plug::bindControls()
{
    // Each control: its first widget, its stored member, its property and, for
    // the animated ones, the sample rate that turns frames into host time.
    struct Binding {
        ControlVZ* control;
        uint32_t widget;
        void* member;
        const GUID* guid;
        bool timed;
    };
    Lumenveil& fx = *lumenveil;
    const Binding bindings[] = {
        {&fx.shape, ID_SHAPE, &shape, &PROPID_Shape, false},
        {&fx.matchRadii, ID_MATCH_RADII, &matchRadii, &PROPID_MatchRadii, false},
        {&fx.radiusX, ID_RADIUS_X, &radiusX, &PROPID_RadiusX, true},
        {&fx.radiusY, ID_RADIUS_Y, &radiusY, &PROPID_RadiusY, true},
        {&fx.sides, ID_SIDES, &sides, &PROPID_Sides, true},
        {&fx.rotation, ID_ROTATION, &rotation, &PROPID_Rotation, true},
        {&fx.brightEmphasis, ID_BRIGHT_EMPHASIS, &brightEmphasis, &PROPID_BrightEmphasis, true},
        {&fx.emphasiseAlpha, ID_EMPHASISE_ALPHA, &emphasiseAlpha, &PROPID_EmphasiseAlpha, false},
        {&fx.extremePrecision, ID_EXTREME_PRECISION, &extremePrecision, &PROPID_ExtremePrecision, false},
        {&fx.centre, ID_CENTRE, &centreX, &PROPID_CentreX, true},
        {&fx.radiusPsf1, ID_RADIUS_PSF1, &radiusPsf1, &PROPID_RadiusPSF1, true},
        {&fx.radiusPsf2, ID_RADIUS_PSF2, &radiusPsf2, &PROPID_RadiusPSF2, true},
    };
    for (const Binding& b : bindings) {
        b.control->controlId = b.widget;
        b.control->valuePointer = b.member;
        b.control->propertyGuid = b.guid;
        if (b.timed)
            b.control->timeScale = &sampleRate;
    }
    fx.centre.valuePointerY = &centreY;
    fx.centre.propertyGuidY = &PROPID_CentreY;
}

void Plug::setUpOverlay()
{
    // Overlay items: colours, the OverlayVZ they belong to, their controls.
    Lumenveil& fx = *lumenveil;
    for (int i = 0; i < 4; ++i) {
        fx.crosshair.colour[i] = kOverlayWhite[i];
        fx.innerCircle.colour[i] = fx.outerCircle.colour[i] = kOverlayYellow[i];
    }
    OverlayVZ* overlay = &fx;
    fx.crosshair.owner = fx.innerCircle.owner = fx.outerCircle.owner = overlay;
    fx.crosshair.controlA = &fx.centre;
    fx.innerCircle.controlA = fx.innerCircle.controlB = &fx.radiusPsf1;
    fx.outerCircle.controlA = fx.outerCircle.controlB = &fx.radiusPsf2;
    fx.crosshair.diagonals = 0;
    fx.innerCircle.dashed = 0;
    fx.outerCircle.dashed = 1;
}

HRESULT Plug::QueryInterface(const GUID& iid, void** out) { return CDSImageEffect::QueryInterface(iid, out); }

void* Plug::FindInterface(const GUID& iid)
{
    if (IsEqualGUID(iid, IID_IDSPointSpread))
        return static_cast<IDSPointSpread*>(this);
    if (IsEqualGUID(iid, IID_IDSTransformNeeds))
        return static_cast<IDSTransformNeeds*>(this);
    if (IsEqualGUID(iid, IID_IDSRenderStatus))
        return static_cast<IDSRenderStatus*>(this);
    if (IsEqualGUID(iid, IID_IDSKernelHistory))
        return static_cast<IDSKernelHistory*>(this);
    return CDSImageEffect::FindInterface(iid);
}

uint32_t Plug::AddRef() { return CDSImageEffect::AddRef(); }
uint32_t Plug::Release() { return CDSImageEffect::Release(); }

HRESULT Plug::GetPointSpreadImage(int32_t* width, int32_t* height, int32_t* rowBytes, const uint8_t** pixels)
{
    if (!width || !height || !rowBytes || !pixels)
        return E_POINTER;
    const ImageRec* psf = lumenveil && lumenveil->engine ? lumenveil->engine->psfImage : nullptr;
    if (!psf || !psf->pixels)
        return E_FAIL;
    *width = psf->width;
    *height = psf->height;
    *rowBytes = static_cast<int32_t>(psf->rowBytes);
    *pixels = static_cast<const uint8_t*>(psf->pixels);
    return S_OK;
}

HRESULT Plug::GetName(wchar_t* buffer, int size) { return loadName(IDS_EFFECT_NAME, buffer, size); }
HRESULT Plug::GetLongName(wchar_t* buffer, int size) { return loadName(IDS_EFFECT_LONG_NAME, buffer, size); }

HRESULT Plug::GetBitmap(const EffectBitmap** bitmap)
{
    if (!bitmap)
        return E_POINTER;
    *bitmap = &effectBitmap();
    return S_OK;
}

const DSInputTableEntry* Plug::GetInputTable(uint32_t* count) const
{
    if (count)
        *count = 2;
    return kInputs;
}

HRESULT Plug::GetClassID(GUID* classId)
{
    if (!classId)
        return E_POINTER;
    *classId = CLSID_Plug;
    return S_OK;
}

HRESULT Plug::Aggregate(IUnknown*) { return CLASS_E_NOAGGREGATION; }

const CDSPropertiesMap* Plug::GetStaticPropertiesMap() { return LumenveilPropertiesMap(); }
uint32_t Plug::GetStaticEntryCount() { return *LumenveilPropertiesMap()->count; }
GUID Plug::PresetClassId() const { return CLSID_Plug; }

HRESULT Plug::GetInfo(DSFxInfo* info)
{
    const HRESULT status = CDSImageEffect::GetInfo(info);
    if (FAILED(status))
        return status;
    if (!IsEqualGUID(info->structId, DSFXINFO_ID))
        return E_INVALIDARG;
    info->category = kFxCategory;
    info->kind = kFxKind;
    info->classId = CLSID_Plug;
    info->flagsA = 0;
    info->flagsB = 0;
    return S_OK;
}

HRESULT Plug::GetImageEffectInfo(DSImgFxInfo* info)
{
    const HRESULT status = CDSImageEffect::GetImageEffectInfo(info);
    if (FAILED(status))
        return status;
    if (!IsEqualGUID(info->structId, DSIMGFXINFO_ID))
        return E_INVALIDARG;
    info->value36 = 0;
    info->value40 = 0;
    info->value44 = 8;
    info->value48 = 1;
    std::memset(info->zeroed, 0, sizeof info->zeroed);
    info->value72 = 515;
    return S_OK;
}

HRESULT Plug::IsFormatSupported(const GUID& format)
{
    // All sixteen formats are accepted here, though Execute renders fifteen.
    return hostFormatCodeOf(format) != 0 ? S_OK : S_FALSE;
}

HRESULT Plug::SetDefaults()
{
    const HRESULT status = CDSImageEffect::SetDefaults();
    if (FAILED(status))
        return status;
    return OnPropertyChanged(kDefaultsChanged, nullptr, nullptr, nullptr, 0, kDefaultsChangedFlags);
}

HRESULT Plug::Verify()
{
    const HRESULT status = CDSImageEffect::Verify();
    if (SUCCEEDED(status) && !inputImage)
        return E_POINTER;
    return status;
}

HRESULT Plug::Clone(const GUID& iid, void** out)
{
    if (!out)
        return E_POINTER;
    *out = nullptr;
    Plug* clone = new (std::nothrow) Plug(*this);
    if (!clone)
        return E_OUTOFMEMORY;
    const HRESULT status = clone->QueryInterface(iid, out);
    clone->Release();
    return status;
}
