// IDSProperties: a host's access to an object's properties (read, write,
// animate, presets), by GUID, through the object's static map.
#pragma once

#include <string>

#include "hostsdk/CDSParamDef.h"
#include "hostsdk/com.h"

inline constexpr GUID IID_IDSProperties = {0x4c560203, 0x6d66, 0x4966, {0x8a, 0x23, 0x50, 0x52, 0x4f, 0x50, 0x01, 0x03}};

// The time-span length (seconds, VT_R8, read only) that every effect answers.
inline constexpr GUID DSPROPID_TimespanLength = {0x1ED4F2F4, 0xC90F, 0x11D1, {0x95, 0xF2, 0x00, 0x00, 0xF8, 0x75, 0xC4, 0x68}};

struct IDSProperties : IUnknown {
    // The object's map, initialised; it stays valid while the module is loaded.
    virtual HRESULT GetPropertiesMap(const CDSPropertiesMap** map) = 0;
    // The value at `time` in seconds (-1.0: the stored value).
    virtual HRESULT GetProperty(const GUID& guid, VARIANT* value, double time) = 0;
    // Sets the stored value.
    virtual HRESULT SetProperty(const GUID& guid, const VARIANT* value) = 0;
    // Adds or replaces a key of an animated property.
    virtual HRESULT SetPropertyKey(const GUID& guid, double time, double value) = 0;
    // S_OK when the property has keys, S_FALSE when not.
    virtual HRESULT IsPropertyAnimated(const GUID& guid) = 0;
    virtual HRESULT SavePresetText(std::string* text) = 0;
    // E_INVALIDARG with the reason in *error when the preset is refused; the
    // object is then unchanged.
    virtual HRESULT LoadPresetText(const std::string& text, std::string* error) = 0;
};
