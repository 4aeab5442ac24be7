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

struct IDSImageEffect : IUnknown {
    virtual HRESULT GetInfo(DSFxInfo* info) = 0;
    virtual HRESULT SetSampleRate(double rate) = 0;
    virtual HRESULT GetImageEffectInfo(DSImgFxInfo* info) = 0;
    // 0 when the effect takes frames in `format`, else 1.
    virtual HRESULT IsFormatSupported(const GUID& format) = 0;
    virtual HRESULT SetDefaults() = 0;
    virtual HRESULT SetInput(IDSImage* image) = 0;
    virtual HRESULT SetOutput(IDSImage* image) = 0;
    // Per channel R, G, B, A: 0 keeps the input, non-zero takes the effect's;
    // 2 in the fourth place uses the input's alpha as the matte.
    virtual HRESULT SetChannelMask(const int32_t selectors[4]) = 0;
    // The region of interest: its size, its place in the input (and Spread) and
    // in the output buffer.
    virtual HRESULT SetROI(int32_t inputX, int32_t inputY, int32_t outputX, int32_t outputY, int32_t width,
                           int32_t height) = 0;
    // Bit value 1 and bit value 2 select one field each; 0 processes every row.
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
