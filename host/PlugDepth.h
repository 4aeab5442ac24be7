// PlugDepth: the depth-of-field effect object, "Lumenveil Depth". A Plug
// whose Lumenveil is a LumenveilDepth, with the depth properties beside the
// shared aperture and emphasis ones (DepthProperties.h), a third input, Depth,
// and an Execute that reads the depth picture before the frame goes the plain
// effect's 16-bit road.
#pragma once

#include <vector>

#include "effect/DepthSettingsVZ.h"
#include "host/Plug.h"
#include "hostsdk/IDSDepthRadius.h"

class LumenveilDepth;

inline constexpr GUID CLSID_PlugDepth = {0xDFBB4C61, 0x2E3D, 0x4EFE, {0xA8, 0x9F, 0x0B, 0xD8, 0xAA, 0x82, 0xF8, 0x6F}};
// Its property page, and the interactive tool that page starts: the focus picker.
inline constexpr GUID CLSID_PPG_DepthPage = {0xEEB05E03, 0xAF26, 0x4069, {0x88, 0xA9, 0x35, 0xCB, 0xE3, 0x16, 0xC9, 0xD0}};
inline constexpr GUID CLSID_DepthIT = {0xF5A6D27E, 0x1C57, 0x4FA5, {0x8E, 0xBB, 0xC7, 0x23, 0x8B, 0x8C, 0x40, 0xB7}};

class PlugDepth : public Plug, public IDSDepthRadius {
public:
    PlugDepth();
    PlugDepth(const PlugDepth& source);

    // Plug's interfaces and IID_IDSDepthRadius, on one count.
    HRESULT QueryInterface(const GUID& iid, void** out) override;
    uint32_t AddRef() override;
    uint32_t Release() override;
    HRESULT GetRadiusPlane(int32_t* width, int32_t* height, const float** radii) override;
    HRESULT RadiusOfDepth(double depth, int32_t width, double time, double* radius) override;

    HRESULT GetName(wchar_t* buffer, int size);
    HRESULT GetLongName(wchar_t* buffer, int size);
    HRESULT GetClassID(GUID* classId);
    const DSInputTableEntry* GetInputTable(uint32_t* count) const override;
    const CDSPropertiesMap* GetStaticPropertiesMap() override;
    uint32_t GetStaticEntryCount() override;
    GUID PresetClassId() const override;
    HRESULT GetInfo(DSFxInfo* info) override;
    // The largest kernel a frame may take: the aperture at the maximum radius.
    HRESULT GetTransformNeeds(int32_t width, int32_t height, double time, int32_t engine,
                              DSTransformNeeds* needs) override;
    HRESULT Clone(const GUID& iid, void** out) override;

    // Stored values of the depth properties, in property order.
    double radiusInfinity;
    int32_t useLens;
    double fStop;
    double focalLength;
    double sensorWidth;
    double depthUnit;
    double focus;
    double maxRadius;
    int32_t depthKind;
    double layerSpacing;

protected:
    void* FindInterface(const GUID& iid) override;
    // E_INVALIDARG, with the output untouched, when the Depth input is missing,
    // not float R G B A or smaller than the region; otherwise as the plain
    // effect's Execute, the blur following the depth.
    HRESULT executeSteps(double time) override;

private:
    void bindDepthValues();
    // The depth properties at `time`.
    DepthSettingsVZ settingsAt(double time);
    LumenveilDepth& depthEffect() const;
    // The depth properties at `time` into the LumenveilDepth.
    void readDepthParameters(double time);
    // The Depth input's region as one float a pixel into `samples`; a status.
    HRESULT readDepth(double time, std::vector<float>* samples);
};
