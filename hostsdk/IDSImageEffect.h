// IDSImageEffect: what a host calls on an image effect, and the information
// records it fills.
#pragma once

#include <cstddef>
#include <cstdint>

#include "hostsdk/com.h"

struct IDSImage;
struct IDSImageEffectHost;
struct IDSCoordMan;

inline constexpr GUID IID_IDSImageEffect = {0x4c560202, 0x6d66, 0x4966, {0x8a, 0x22, 0x49, 0x46, 0x46, 0x58, 0x01, 0x02}};
// Identifiers of the two information records, in their first GUID.
inline constexpr GUID DSFXINFO_ID = {0x5E3D73B1, 0xD900, 0x11CF, {0x82, 0x8E, 0x00, 0xA0, 0x24, 0x3F, 0x10, 0x13}};
inline constexpr GUID DSIMGFXINFO_ID = {0x6024B980, 0xB7F4, 0x11D0, {0x82, 0xD3, 0x00, 0xA0, 0x24, 0x3F, 0x10, 0x13}};

// General effect information, byte positions as the host reads them.
struct DSFxInfo {
    GUID structId;    // 0: DSFXINFO_ID
    GUID category;    // 16
    GUID kind;        // 32
    GUID classId;     // 48
    uint32_t flagsA;  // 64
    uint32_t flagsB;  // 68
};
static_assert(offsetof(DSFxInfo, classId) == 48 && offsetof(DSFxInfo, flagsB) == 68);

// Image effect information, byte positions as the host reads them.
struct DSImgFxInfo {
    uint32_t size;          // 0
    GUID structId;          // 4: DSIMGFXINFO_ID
    uint8_t hostArea[16];   // 20
    uint32_t value36;       // 36
    uint32_t value40;       // 40
    uint32_t value44;       // 44
    uint32_t value48;       // 48
    uint8_t zeroed[20];     // 52
    uint32_t value72;       // 72
};
static_assert(offsetof(DSImgFxInfo, value36) == 36 && offsetof(DSImgFxInfo, value72) == 72);

// A channel selector of SetChannelMask: what the effect does to one channel.
enum DSChannelSelector : int32_t {
    DS_CHANNEL_KEEP = 0,    // the channel stays as the input has it
    DS_CHANNEL_EFFECT = 1,  // the effect's result (any value but 0, and 2 in the alpha place)
    DS_CHANNEL_MATTE = 2,   // alpha place only: the effect's result where the input's alpha is full
};

// The places in SetChannelMask's array. Green and blue are crossed: the
// second selector governs blue and the third green.
enum DSChannelPlace : int {
    DS_PLACE_RED = 0,
    DS_PLACE_BLUE = 1,
    DS_PLACE_GREEN = 2,
    DS_PLACE_ALPHA = 3,
};
inline constexpr int DS_CHANNEL_PLACES = 4;

// The bits of SetFieldMask, counting rows of the frame from the top row, 0.
enum DSFieldMask : uint32_t {
    DS_FIELDS_BOTH = 0,  // every row
    DS_FIELD_EVEN = 1,   // rows 0, 2, 4, ...; the others stay as the output had them
    DS_FIELD_ODD = 2,    // rows 1, 3, 5, ...
};

struct IDSImageEffect : IUnknown {
    virtual HRESULT GetInfo(DSFxInfo* info) = 0;
    virtual HRESULT SetSampleRate(double rate) = 0;
    virtual HRESULT GetImageEffectInfo(DSImgFxInfo* info) = 0;
    // 0 when the effect takes frames in `format`, else 1.
    virtual HRESULT IsFormatSupported(const GUID& format) = 0;
    virtual HRESULT SetDefaults() = 0;
    virtual HRESULT SetInput(IDSImage* image) = 0;
    virtual HRESULT SetOutput(IDSImage* image) = 0;
    // One selector (DSChannelSelector) per place of DSChannelPlace: red, blue,
    // green, alpha, in that order.
    virtual HRESULT SetChannelMask(const int32_t selectors[DS_CHANNEL_PLACES]) = 0;
    // The region of interest: its size, its place in the input (and Spread) and
    // in the output buffer.
    virtual HRESULT SetROI(int32_t inputX, int32_t inputY, int32_t outputX, int32_t outputY, int32_t width,
                           int32_t height) = 0;
    // DSFieldMask: one field, or every row.
    virtual HRESULT SetFieldMask(uint32_t mask) = 0;
    virtual HRESULT Verify() = 0;
    // Renders the frame at `time` (seconds).
    virtual HRESULT Execute(double time) = 0;
    virtual HRESULT Clone(const GUID& iid, void** out) = 0;
    virtual HRESULT SetExecuteContext(uint64_t context) = 0;
    virtual HRESULT SetEffectHost(IDSImageEffectHost* host) = 0;
    virtual HRESULT SetCoordMan(IDSCoordMan* coordMan) = 0;
    // The effect's length in seconds.
    virtual HRESULT SetTimespan(double length) = 0;
};
