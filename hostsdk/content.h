// The host project's properties that effects may read, by name.
#pragma once

#include "hostsdk/hresult.h"
#include "hostsdk/variant.h"

// Names of the project's frame size.
inline constexpr const wchar_t* kProjectFrameWidth = L"Project Frame User Size (X)";
inline constexpr const wchar_t* kProjectFrameHeight = L"Project Frame User Size (Y)";

// The property `name` as a VT_R8 variant; E_INVALIDARG for an unknown name.
// The frame size starts at 720 x 486.
HRESULT DSContentGetProperty(const wchar_t* name, VARIANT* value);
// Sets a project property (a host does this; effects only read).
HRESULT DSContentSetProperty(const wchar_t* name, double value);
