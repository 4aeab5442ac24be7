#include "host/PlugDepth.h"

#include <algorithm>
#include <memory>
#include <new>
#include <vector>

#include "effect/LumenveilDepth.h"
#include "generic/library/HostLinearFrame.h"
#include "host/DepthProperties.h"
#include "host/LumenveilProperties.h"
#include "host/LumenveilStrings.h"
#include "host/PlugHostBuffers.h"
#include "hostsdk/depth_input.h"
#include "vzlibs/baselib/log.h"
#include "vzlibs/fftlib/fft_modes.h"

namespace {

const DSInputTableEntry kDepthInputs[3] = {
    {IDS_INPUT, IDS_INPUT, 0}, {IDS_SPREAD, IDS_SPREAD, 1}, {IDS_DEPTH, IDS_DEPTH, DS_INPUT_DEPTH}};

Lumenveil* makeDepthLumenveil() { return new (std::nothrow) LumenveilDepth(); }

HRESULT loadName(uint32_t id, wchar_t* buffer, int size)
{
    if (!buffer)
        return E_POINTER;
    if (size > 0)
        buffer[0] = L'\0';
    return LoadStringW(id, buffer, size) > 0 ? S_OK : E_FAIL;
}

}  // namespace

PlugDepth::PlugDepth()
    : Plug(makeDepthLumenveil),
      radiusInfinity(0.02),
      useLens(0),
      fStop(2.8),
      focalLength(50.0),
      sensorWidth(36.0),
      depthUnit(1000.0),
      focus(1.0),
      maxRadius(0.05),
      depthKind(DEPTH_DISTANCE),
      layerSpacing(1.0)
{
    bindDepthValues();
    SetPropertyPageClass(CLSID_PPG_DepthPage);
}

PlugDepth::PlugDepth(const PlugDepth& source)
    : Plug(source),
      radiusInfinity(source.radiusInfinity),
      useLens(source.useLens),
      fStop(source.fStop),
      focalLength(source.focalLength),
      sensorWidth(source.sensorWidth),
      depthUnit(source.depthUnit),
      focus(source.focus),
      maxRadius(source.maxRadius),
      depthKind(source.depthKind),
      layerSpacing(source.layerSpacing)
{
    bindDepthValues();
}

void PlugDepth::bindDepthValues()
{
    BindStoredValue(KEY_RADIUS_INFINITY, &radiusInfinity);
    BindStoredValue(KEY_USE_LENS, &useLens);
    BindStoredValue(KEY_F_STOP, &fStop);
    BindStoredValue(KEY_FOCAL_LENGTH, &focalLength);
    BindStoredValue(KEY_SENSOR_WIDTH, &sensorWidth);
    BindStoredValue(KEY_DEPTH_UNIT, &depthUnit);
    BindStoredValue(KEY_FOCUS, &focus);
    BindStoredValue(KEY_MAX_RADIUS, &maxRadius);
    BindStoredValue(KEY_DEPTH_KIND, &depthKind);
    BindStoredValue(KEY_LAYER_SPACING, &layerSpacing);
}

LumenveilDepth& PlugDepth::depthEffect() const { return *static_cast<LumenveilDepth*>(lumenveil); }

HRESULT PlugDepth::GetName(wchar_t* buffer, int size) { return loadName(IDS_DEPTH_EFFECT_NAME, buffer, size); }
HRESULT PlugDepth::GetLongName(wchar_t* buffer, int size)
{
    return loadName(IDS_DEPTH_EFFECT_LONG_NAME, buffer, size);
}

HRESULT PlugDepth::GetClassID(GUID* classId)
{
    if (!classId)
        return E_POINTER;
    *classId = CLSID_PlugDepth;
    return S_OK;
}

const DSInputTableEntry* PlugDepth::GetInputTable(uint32_t* count) const
{
    if (count)
        *count = 3;
    return kDepthInputs;
}

const CDSPropertiesMap* PlugDepth::GetStaticPropertiesMap() { return DepthPropertiesMap(); }
uint32_t PlugDepth::GetStaticEntryCount() { return *DepthPropertiesMap()->count; }
GUID PlugDepth::PresetClassId() const { return CLSID_PlugDepth; }

HRESULT PlugDepth::GetInfo(DSFxInfo* info)
{
    const HRESULT status = Plug::GetInfo(info);
    if (SUCCEEDED(status))
        info->classId = CLSID_PlugDepth;
    return status;
}

HRESULT PlugDepth::GetTransformNeeds(int32_t width, int32_t height, double time, int32_t engine,
                                     DSTransformNeeds* needs)
{
    if (!needs)
        return E_POINTER;
    const int32_t index = engine == DS_ENGINE_CURRENT ? engineMode : engine;
    if (width < 1 || height < 1 || !fft_mode_name(index))
        return E_INVALIDARG;
    ApertureVZ aperture = apertureAt(time);
    // The largest layer radius, with RadiusY keeping its proportion.
    const double largest = GetValueDirect(KEY_MAX_RADIUS, maxRadius, time);
    const double ratio = aperture.radiusX > 0.0 ? aperture.radiusY / aperture.radiusX : 1.0;
    aperture.radiusX = largest;
    aperture.radiusY = largest * ratio;
    const TransformVZ t = aperture.Transform(width, height, fft_mode_at(index));
    needs->reach = t.reach;
    needs->margin = t.margin;
    needs->width = t.width;
    needs->height = t.height;
    needs->largestSide = t.largestSide;
    needs->fits = t.fits ? 1 : 0;
    return S_OK;
}

HRESULT PlugDepth::QueryInterface(const GUID& iid, void** out) { return Plug::QueryInterface(iid, out); }
uint32_t PlugDepth::AddRef() { return Plug::AddRef(); }
uint32_t PlugDepth::Release() { return Plug::Release(); }

void* PlugDepth::FindInterface(const GUID& iid)
{
    if (IsEqualGUID(iid, IID_IDSDepthRadius))
        return static_cast<IDSDepthRadius*>(this);
    // The depth render builds its kernels per layer, with no history.
    if (IsEqualGUID(iid, IID_IDSKernelHistory))
        return nullptr;
    return Plug::FindInterface(iid);
}

HRESULT PlugDepth::GetRadiusPlane(int32_t* width, int32_t* height, const float** radii)
{
    if (!width || !height || !radii)
        return E_POINTER;
    const LumenveilDepth& fx = depthEffect();
    if (fx.SignedRadii().empty())
        return E_FAIL;
    *width = fx.FrameWidth();
    *height = fx.FrameHeight();
    *radii = fx.SignedRadii().data();
    return S_OK;
}

HRESULT PlugDepth::RadiusOfDepth(double depth, int32_t width, double time, double* radius)
{
    if (!radius)
        return E_POINTER;
    if (width < 1)
        return E_INVALIDARG;
    *radius = settingsAt(time).Lens(width).SignedRadius(static_cast<float>(depth));
    return S_OK;
}

void PlugDepth::readDepthParameters(double time) { depthEffect().depthSettings = settingsAt(time); }

DepthSettingsVZ PlugDepth::settingsAt(double time)
{
    DepthSettingsVZ s;
    s.radiusInfinity = GetValueDirect(KEY_RADIUS_INFINITY, radiusInfinity, time);
    s.useLens = useLens != 0;
    s.fStop = GetValueDirect(KEY_F_STOP, fStop, time);
    s.focalLength = GetValueDirect(KEY_FOCAL_LENGTH, focalLength, time);
    s.sensorWidth = sensorWidth;
    s.depthUnit = depthUnit;
    s.focus = GetValueDirect(KEY_FOCUS, focus, time);
    s.maxRadius = GetValueDirect(KEY_MAX_RADIUS, maxRadius, time);
    s.depthKind = depthKind == DEPTH_NORMALISED ? DEPTH_NORMALISED : DEPTH_DISTANCE;
    s.layerSpacing = std::max(layerSpacing, 0.01);
    return s;
}

HRESULT PlugDepth::readDepth(double time, std::vector<float>* samples)
{
    ComRef<IUnknown> fetched;
    host->FetchInput(DS_INPUT_DEPTH, time, executeContext, reinterpret_cast<IUnknown**>(fetched.out()));
    const ComRef<IDSImage> image = ComRef<IDSImage>::Query(fetched.get(), IID_IDSImage);
    if (!image) {
        failureReason = "Lumenveil Depth needs its Depth input";
        lib_log(LOG_ERROR, "%s", failureReason);
        return E_INVALIDARG;
    }
    const HostBuffer buffer = readBuffer(image.get());
    auto frame = std::unique_ptr<LinearFrameVZ>(new (std::nothrow) LinearFrameVZ(roiWidth, roiHeight));
    if (!frame || !frame->pixels)
        return E_OUTOFMEMORY;
    // Depth is read as it is: no fields, NaN and infinity (at infinity) become 0, which is at infinity too.
    if (hostToLinearFrame(buffer.pixels, buffer.width, buffer.height, roiWidth, roiHeight, inputRoiX, inputRoiY,
                          buffer.code, 0, frame.get()) < 0) {
        failureReason = "the Depth input must be float R G B A (MFIF_RGBA_FLOAT) and cover the frame";
        lib_log(LOG_ERROR, "%s", failureReason);
        return E_INVALIDARG;
    }
    const size_t count = frame->PixelCount();
    samples->resize(count);
    for (size_t i = 0; i < count; ++i)
        (*samples)[i] = frame->pixels[i * kLinearChannels];
    return S_OK;
}

HRESULT PlugDepth::executeSteps(double time)
{
    const HRESULT prepared = PrepareData();
    if (!lumenveil)
        return E_OUTOFMEMORY;
    if (!host)
        return E_FAIL;
    if (hostStopped())
        return S_OK;
    if (FAILED(prepared))
        return prepared;
    std::vector<float> samples;
    const HRESULT read = readDepth(time, &samples);
    if (FAILED(read))
        return read;
    LumenveilDepth& fx = depthEffect();
    readDepthParameters(time);
    fx.depth = DepthSamplesVZ{samples.data(), roiWidth, roiHeight, roiWidth};
    const HRESULT status = Plug::executeSteps(time);
    fx.depth = DepthSamplesVZ{};
    return status;
}

HRESULT PlugDepth::Clone(const GUID& iid, void** out)
{
    if (!out)
        return E_POINTER;
    *out = nullptr;
    PlugDepth* clone = new (std::nothrow) PlugDepth(*this);
    if (!clone)
        return E_OUTOFMEMORY;
    const HRESULT status = clone->QueryInterface(iid, out);
    clone->Release();
    return status;
}
