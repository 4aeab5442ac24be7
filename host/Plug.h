// Plug: the effect object a host creates for each use of the effect. It holds
// the stored values of the properties, owns the Lumenveil that does the image
// work (shared with its clones), and renders a frame through Execute.
#pragma once

#include <cstdint>

#include "hostsdk/CDSImageEffect.h"
#include "hostsdk/IDSKernelHistory.h"
#include "hostsdk/IDSPointSpread.h"
#include "hostsdk/IDSRenderStatus.h"
#include "hostsdk/IDSTransformNeeds.h"

class ApertureVZ;
class Lumenveil;
class VZImage;
class LinearFrameVZ;
struct HostBuffer;

// The effect's class identifier, and that of its property page.
inline constexpr GUID CLSID_Plug = {0x6888FDA5, 0x1F1F, 0x4662, {0x9C, 0x9E, 0x07, 0x65, 0x50, 0x6D, 0x80, 0xEA}};
inline constexpr GUID CLSID_PPG_PageOne = {0x31B01C5A, 0xC9EC, 0x4C56, {0x83, 0xCE, 0xFF, 0xEA, 0xC8, 0x17, 0xFA, 0x83}};
inline constexpr GUID CLSID_IT = {0xB0142538, 0x3884, 0x42B4, {0x83, 0xF8, 0x55, 0x89, 0x0A, 0x4C, 0x8A, 0xE2}};

// The effect's picture for the host: 64 x 51 pixels, 24 bits, rows top down.
struct EffectBitmap {
    int32_t width;
    int32_t height;
    const uint8_t* pixels;  // B G R
};

class Plug : public CDSImageMIEffect,
             public IDSPointSpread,
             public IDSTransformNeeds,
             public IDSRenderStatus,
             public IDSKernelHistory {
public:
    // Makes the Lumenveil an effect object works with (Init calls it).
    typedef Lumenveil* (*LumenveilMaker)();

    // Complete on return: Init has run.
    Plug();
    // A clone: the stored values, the Lumenveil and the animation of `source`.
    Plug(const Plug& source);
    ~Plug() override;

    HRESULT Init() override;

    // The base's interfaces, IID_IDSPointSpread, IID_IDSTransformNeeds,
    // IID_IDSRenderStatus and IID_IDSKernelHistory, on one count.
    HRESULT QueryInterface(const GUID& iid, void** out) override;
    uint32_t AddRef() override;
    uint32_t Release() override;
    // The engine's point-spread image of the last frame.
    HRESULT GetPointSpreadImage(int32_t* width, int32_t* height, int32_t* rowBytes, const uint8_t** pixels) override;
    // By the aperture at `time` and the engine's size rule; `engine` is a
    // value of the Engine property or DS_ENGINE_CURRENT.
    HRESULT GetTransformNeeds(int32_t width, int32_t height, double time, int32_t engine,
                              DSTransformNeeds* needs) override;
    // What the last Execute came to: S_OK when its frame reached the output.
    HRESULT GetRenderStatus(HRESULT* status, const char** reason) override;
    // The kernel decisions of the frames before a render's first.
    HRESULT TrackKernel(double time, int32_t* builds) override;
    HRESULT BuildKernel(double time, double* trace) override;
    HRESULT ForgetKernel() override;

    HRESULT GetName(wchar_t* buffer, int size);
    HRESULT GetLongName(wchar_t* buffer, int size);
    HRESULT GetBitmap(const EffectBitmap** bitmap);
    const DSInputTableEntry* GetInputTable(uint32_t* count) const override;
    HRESULT GetClassID(GUID* classId);
    // Aggregation is never supported.
    HRESULT Aggregate(IUnknown* outer);

    const CDSPropertiesMap* GetStaticPropertiesMap() override;
    uint32_t GetStaticEntryCount() override;
    GUID PresetClassId() const override;

    HRESULT GetInfo(DSFxInfo* info) override;
    HRESULT GetImageEffectInfo(DSImgFxInfo* info) override;
    HRESULT IsFormatSupported(const GUID& format) override;
    HRESULT SetDefaults() override;
    HRESULT Verify() override;
    HRESULT Execute(double time) override;
    HRESULT Clone(const GUID& iid, void** out) override;

    // Channel merge by selectors: for R, G, B, A in turn, a selector of 0 keeps
    // the input's sample; s3 == 2 makes the input's alpha the effect's matte.
    static void mergeChannels(const VZImage* input, VZImage* output, int32_t s0, int32_t s1, int32_t s2, int32_t s3);
    // The same on scene-linear frames: alpha as the matte is limited to 0..1,
    // and a selected channel becomes input x (1 - a) + output x a.
    static void mergeLinearChannels(const LinearFrameVZ& input, LinearFrameVZ& output, int32_t s0, int32_t s1,
                                    int32_t s2, int32_t s3);

    int32_t serverLockTaken;
    uint64_t lumenveilHandle;   // address of `lumenveil`, for the page and the tool
    uint64_t lumenveilHandle2;  // read and unused
    uint32_t changeCount;       // raised by the page so that the host sees a change
    double spare;
    // Stored property values, in property order.
    int32_t shape;              // 0 Circle, 1 Ellipse, 2 Polygon, 3 Image
    int32_t matchRadii;
    double radiusX;
    double radiusY;
    int32_t sides;
    double rotation;
    double brightEmphasis;
    int32_t emphasiseAlpha;
    int32_t extremePrecision;
    double centreX;
    double centreY;
    double radiusPsf1;
    double radiusPsf2;
    int32_t linear;             // scene-linear render of float R G B A frames
    double highlightEmphasis;
    double highlightThreshold;
    int32_t engineMode;         // the engine's transforms: an index of the engine's named modes
    Lumenveil* lumenveil;       // shared with clones; owned by the effect that made it
    Plug* sourceEffect;         // the effect this one was cloned from, or null

protected:
    // Execute's steps for one frame, once the effect has its turn (Execute
    // waits while the effect or one of its clones renders: they share one
    // Lumenveil) and before its result is kept for GetRenderStatus.
    virtual HRESULT executeSteps(double time);
    // Asks the host whether to go on; notes a stop for the render status.
    bool hostStopped();
    // A failure's own reason for the render status, set where it is found;
    // without one the status names the failure by its code.
    const char* failureReason = nullptr;

    // An effect whose Lumenveil `maker` makes (a derived effect's own kind).
    explicit Plug(LumenveilMaker maker);
    void* FindInterface(const GUID& iid) override;
    // The values that shape the kernel at `time`.
    ApertureVZ apertureAt(double time);

    LumenveilMaker lumenveilMaker;

private:
    // Execute once the effect has its turn; with `kernelOnly` the frame's
    // kernel is built and nothing is rendered.
    HRESULT executeInTurn(double time, bool kernelOnly);
    // Sets the render status from Execute's result and the render's outcome.
    void settleRenderStatus(HRESULT executed);
    HRESULT renderStatus = E_FAIL;
    const char* renderReason = "no frame has been rendered";
    bool stopped = false;

    // Ties the properties' keys to the stored members above.
    void bindStoredValues();
    // Takes one count of the server lock when one exists.
    void takeServerLock();
    // Gives each control of the Lumenveil its widget, stored member and
    // property; and the overlay items their colours, owner and controls.
    void bindControls();
    void setUpOverlay();
    // Reads the properties at `time` into the Lumenveil's controls.
    void readParameters(double time);
    HRESULT runRender(double position);
    // The Spread input's image at `time`, or null.
    ComRef<IDSImage> fetchSpread(double time);
    // The pixel aspect from the coordinate manager (left as it is without one)
    // and the frames' scale from the project's frame width.
    void readFrameValues(double* aspect, float* scale);
    // Execute of a scene-linear render (Linear on), from step 6 on: float
    // R G B A frames through Lumenveil::RenderLinear.
    HRESULT executeLinear(double time, double position, uint32_t fieldFlags);
    // Execute of a 16-bit render once the host images are read: the frames
    // converted, rendered, merged and written back.
    HRESULT executeFrames(double time, double position, const HostBuffer& in, const HostBuffer& spread,
                          const HostBuffer& out, uint32_t fieldFlags);
    // Its render of `frame` in place and the write into the output image;
    // `input`, when given, is the frame as read, for the channel selectors.
    HRESULT renderLinear(LinearFrameVZ& frame, const LinearFrameVZ* input, const HostBuffer& out, double time,
                         double position, uint32_t fieldFlags);
};

// The module's server lock count: held by every factory and object while it
// lives; null until the first class factory sets it.
extern volatile int32_t* g_serverLockCount;
