#include "hostsdk/CDSImageEffect.h"

#include "hostsdk/image_format_geometry.h"

HRESULT CDSPlugInEffect::Init() { return S_OK; }
void CDSPlugInEffect::Term() {}

namespace {

// Structures handed on with each frame; nothing reads them.
const uint32_t kBaseDataA = 0;
const uint32_t kBaseDataB = 0;

template <typename T> void replaceReference(T*& slot, T* image)
{
    if (image)
        image->AddRef();
    if (slot)
        slot->Release();
    slot = image;
}

}  // namespace

CDSImageEffect::CDSImageEffect()
    : timespanLength(0.0),
      sampleRate(25.0),
      host(nullptr),
      coordMan(nullptr),
      inputImage(nullptr),
      outputImage(nullptr),
      preparedValues{0, 0, 0},
      outputRoiX(0),
      outputRoiY(0),
      fieldMask(0),
      inputRoiX(0),
      inputRoiY(0),
      roiWidth(0),
      roiHeight(0),
      channelSelect{1, 1, 1, 1},
      executeContext(0),
      baseDataA(&kBaseDataA),
      baseDataB(&kBaseDataB),
      roiSet(false)
{
}

// A copy takes the settings but no image references, and a count of its own.
CDSImageEffect::CDSImageEffect(const CDSImageEffect& other)
    : CDSPlugInEffect(other),
      CDSComObject(other),
      timespanLength(other.timespanLength),
      sampleRate(other.sampleRate),
      host(other.host),
      coordMan(other.coordMan),
      inputImage(nullptr),
      outputImage(nullptr),
      preparedValues{0, 0, 0},
      outputRoiX(other.outputRoiX),
      outputRoiY(other.outputRoiY),
      fieldMask(other.fieldMask),
      inputRoiX(other.inputRoiX),
      inputRoiY(other.inputRoiY),
      roiWidth(other.roiWidth),
      roiHeight(other.roiHeight),
      channelSelect{other.channelSelect[0], other.channelSelect[1], other.channelSelect[2], other.channelSelect[3]},
      executeContext(other.executeContext),
      baseDataA(other.baseDataA),
      baseDataB(other.baseDataB),
      roiSet(other.roiSet)
{
}

CDSImageEffect::~CDSImageEffect()
{
    replaceReference<IDSImage>(inputImage, nullptr);
    replaceReference<IDSImage>(outputImage, nullptr);
}

void* CDSImageEffect::FindInterface(const GUID& iid)
{
    if (IsEqualGUID(iid, IID_IDSImageEffect))
        return static_cast<IDSImageEffect*>(this);
    if (IsEqualGUID(iid, IID_IDSProperties))
        return static_cast<IDSProperties*>(this);
    return nullptr;
}

HRESULT CDSImageEffect::GetInfo(DSFxInfo* info) { return info ? S_OK : E_POINTER; }
HRESULT CDSImageEffect::GetImageEffectInfo(DSImgFxInfo* info) { return info ? S_OK : E_POINTER; }

HRESULT CDSImageEffect::SetSampleRate(double rate)
{
    sampleRate = rate;
    return S_OK;
}

HRESULT CDSImageEffect::IsFormatSupported(const GUID& format) { return hostFormatCodeOf(format) ? S_OK : S_FALSE; }

HRESULT CDSImageEffect::SetDefaults() { return CDSBasePropertyContainer::SetDefaults(); }

HRESULT CDSImageEffect::SetInput(IDSImage* image)
{
    replaceReference(inputImage, image);
    return S_OK;
}

HRESULT CDSImageEffect::SetOutput(IDSImage* image)
{
    replaceReference(outputImage, image);
    return S_OK;
}

HRESULT CDSImageEffect::SetChannelMask(const int32_t selectors[4])
{
    if (!selectors)
        return E_POINTER;
    for (int i = 0; i < 4; ++i)
        channelSelect[i] = selectors[i];
    return S_OK;
}

HRESULT CDSImageEffect::SetROI(int32_t inputX, int32_t inputY, int32_t outputX, int32_t outputY, int32_t width,
                               int32_t height)
{
    inputRoiX = inputX;
    inputRoiY = inputY;
    outputRoiX = outputX;
    outputRoiY = outputY;
    roiWidth = width;
    roiHeight = height;
    roiSet = true;
    return S_OK;
}

HRESULT CDSImageEffect::SetFieldMask(uint32_t mask)
{
    fieldMask = mask;
    return S_OK;
}

HRESULT CDSImageEffect::Verify() { return outputImage ? S_OK : E_POINTER; }
HRESULT CDSImageEffect::Execute(double) { return E_FAIL; }

HRESULT CDSImageEffect::Clone(const GUID&, void** out)
{
    if (!out)
        return E_POINTER;
    *out = nullptr;
    return E_FAIL;
}

HRESULT CDSImageEffect::SetExecuteContext(uint64_t context)
{
    executeContext = context;
    return S_OK;
}

HRESULT CDSImageEffect::SetEffectHost(IDSImageEffectHost* link)
{
    host = link;
    return S_OK;
}

HRESULT CDSImageEffect::SetCoordMan(IDSCoordMan* manager)
{
    coordMan = manager;
    return S_OK;
}

HRESULT CDSImageEffect::SetTimespan(double length)
{
    timespanLength = length;
    return S_OK;
}

HRESULT CDSImageEffect::PrepareData()
{
    preparedValues[0] = preparedValues[1] = preparedValues[2] = 0;
    if (!inputImage || !outputImage)
        return E_POINTER;
    int32_t outW = 0, outH = 0, inW = 0, inH = 0;
    outputImage->GetDimensions(&outW, &outH);
    inputImage->GetDimensions(&inW, &inH);
    if (!roiSet) {
        inputRoiX = inputRoiY = outputRoiX = outputRoiY = 0;
        roiWidth = outW;
        roiHeight = outH;
    }
    if (roiWidth < 1 || roiHeight < 1 || inputRoiX < 0 || inputRoiY < 0 || outputRoiX < 0 || outputRoiY < 0 ||
        static_cast<int64_t>(inputRoiX) + roiWidth > inW || static_cast<int64_t>(inputRoiY) + roiHeight > inH ||
        static_cast<int64_t>(outputRoiX) + roiWidth > outW || static_cast<int64_t>(outputRoiY) + roiHeight > outH)
        return E_INVALIDARG;
    preparedValues[0] = preparedValues[1] = preparedValues[2] = 1;
    return S_OK;
}

HRESULT CDSImageEffect::GetPropertiesMap(const CDSPropertiesMap** map)
{
    if (!map)
        return E_POINTER;
    *map = GetStaticPropertiesMap();
    return *map ? S_OK : E_FAIL;
}

HRESULT CDSImageEffect::GetProperty(const GUID& guid, VARIANT* value, double time)
{
    if (value && guid == DSPROPID_TimespanLength) {
        value->vt = VT_R8;
        value->dblVal = timespanLength;
        return S_OK;
    }
    return GetValue(guid, value, time);
}

HRESULT CDSImageEffect::SetProperty(const GUID& guid, const VARIANT* value)
{
    return value ? SetValue(guid, *value) : E_POINTER;
}

HRESULT CDSImageEffect::SetPropertyKey(const GUID& guid, double time, double value)
{
    return SetKey(guid, time, value);
}

HRESULT CDSImageEffect::IsPropertyAnimated(const GUID& guid) { return IsAnimated(guid) ? S_OK : S_FALSE; }

HRESULT CDSImageEffect::SavePresetText(std::string* text)
{
    if (!text)
        return E_POINTER;
    *text = SavePreset();
    return S_OK;
}

HRESULT CDSImageEffect::LoadPresetText(const std::string& text, std::string* error)
{
    return LoadPreset(text, error) ? S_OK : E_INVALIDARG;
}
