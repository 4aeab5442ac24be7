// The effect base classes, from the property container up to the multi-input
// image effect. CDSImageEffect keeps what a frame's execution reads (images,
// region of interest, field mask, channel selectors, host link, coordinate
// manager, sample rate, time span, execute context) and implements the
// default operations of IDSImageEffect; a concrete effect overrides Execute
// and what else it needs.
#pragma once

#include <cstdint>

#include "hostsdk/CDSBasePropertyContainer.h"
#include "hostsdk/IDSCoordMan.h"
#include "hostsdk/IDSImage.h"
#include "hostsdk/IDSImageEffect.h"
#include "hostsdk/IDSImageEffectHost.h"
#include "hostsdk/IDSProperties.h"
#include "hostsdk/com_object.h"

class CDSPropertyContainer : public CDSBasePropertyContainer {};
class CDSAliasedPropertyContainer : public CDSPropertyContainer {};

// An effect that a host loads: Init and Term around its life, and the class of
// its property page.
class CDSPlugInEffect : public CDSAliasedPropertyContainer {
public:
    virtual HRESULT Init();
    virtual void Term();
    void SetPropertyPageClass(const GUID& clsid) { pageClass = clsid; }
    const GUID& PropertyPageClass() const { return pageClass; }

private:
    GUID pageClass{};
};

class CDSImageEffect : public CDSPlugInEffect, public CDSComObject<IDSImageEffect, IDSProperties> {
public:
    CDSImageEffect();
    CDSImageEffect(const CDSImageEffect& other);
    ~CDSImageEffect() override;
    CDSImageEffect& operator=(const CDSImageEffect&) = delete;

    // Defaults: GetInfo and GetImageEffectInfo check the pointer only; SetDefaults
    // sets the properties to their defaults; Verify checks the output is set;
    // Execute and Clone are E_FAIL until a concrete effect gives them.
    HRESULT GetInfo(DSFxInfo* info) override;
    HRESULT SetSampleRate(double rate) override;
    HRESULT GetImageEffectInfo(DSImgFxInfo* info) override;
    HRESULT IsFormatSupported(const GUID& format) override;
    HRESULT SetDefaults() override;
    HRESULT SetInput(IDSImage* image) override;
    HRESULT SetOutput(IDSImage* image) override;
    HRESULT SetChannelMask(const int32_t selectors[4]) override;
    HRESULT SetROI(int32_t inputX, int32_t inputY, int32_t outputX, int32_t outputY, int32_t width,
                   int32_t height) override;
    HRESULT SetFieldMask(uint32_t mask) override;
    HRESULT Verify() override;
    HRESULT Execute(double time) override;
    HRESULT Clone(const GUID& iid, void** out) override;
    HRESULT SetExecuteContext(uint64_t context) override;
    HRESULT SetEffectHost(IDSImageEffectHost* host) override;
    HRESULT SetCoordMan(IDSCoordMan* coordMan) override;
    HRESULT SetTimespan(double length) override;

    HRESULT GetPropertiesMap(const CDSPropertiesMap** map) override;
    HRESULT GetProperty(const GUID& guid, VARIANT* value, double time) override;
    HRESULT SetProperty(const GUID& guid, const VARIANT* value) override;
    HRESULT SetPropertyKey(const GUID& guid, double time, double value) override;
    HRESULT IsPropertyAnimated(const GUID& guid) override;
    HRESULT SavePresetText(std::string* text) override;
    HRESULT LoadPresetText(const std::string& text, std::string* error) override;

    // Works out the frame's members from what was set: the region defaults to
    // the whole output; E_POINTER without an input or output image, E_INVALIDARG
    // for a region that is empty or outside a buffer.
    HRESULT PrepareData();

    double timespanLength;
    double sampleRate;
    IDSImageEffectHost* host;
    IDSCoordMan* coordMan;
    IDSImage* inputImage;
    IDSImage* outputImage;
    uint32_t preparedValues[3];  // non-zero after a successful PrepareData
    int32_t outputRoiX;
    int32_t outputRoiY;
    uint32_t fieldMask;
    int32_t inputRoiX;
    int32_t inputRoiY;
    int32_t roiWidth;
    int32_t roiHeight;
    int32_t channelSelect[4];
    uint64_t executeContext;
    const void* baseDataA;  // opaque structures handed on with each frame
    const void* baseDataB;

protected:
    // IID_IDSImageEffect and IID_IDSProperties (IID_IUnknown is the first).
    void* FindInterface(const GUID& iid) override;

private:
    bool roiSet;
};

class CDSImageEffectEx : public CDSImageEffect {
public:
    CDSImageEffectEx() = default;
    CDSImageEffectEx(const CDSImageEffectEx& other) = default;
};

// One row of an effect's input table: name string, long name string, index.
struct DSInputTableEntry {
    uint32_t nameString;
    uint32_t longNameString;
    uint32_t index;
};

class CDSImageMIEffect : public CDSImageEffectEx {
public:
    CDSImageMIEffect() = default;
    CDSImageMIEffect(const CDSImageMIEffect& other) = default;
    // The effect's inputs and their number.
    virtual const DSInputTableEntry* GetInputTable(uint32_t* count) const = 0;
};
