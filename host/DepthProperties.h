// The properties of the depth-of-field effect, Lumenveil Depth: the plain
// effect's aperture, emphasis, hidden and engine properties, shared with it
// (the same definitions, keys and GUIDs, so presets and hosts read them
// alike), and the depth properties of its own. Their order, GUIDs and keys are
// the saved format of a depth effect and must not change.
#pragma once

#include <cstdint>

#include "hostsdk/CDSParamDef.h"

inline constexpr GUID PROPID_RadiusInfinity = {0xDCB8CDC0, 0x7C80, 0x4998, {0xAD, 0x8A, 0x15, 0x44, 0xAA, 0x03, 0xBD, 0xBF}};
inline constexpr GUID PROPID_UseLens = {0xA341BEFE, 0x14C5, 0x4D42, {0x90, 0xF6, 0x14, 0xDA, 0xF6, 0xC0, 0x6C, 0xF5}};
inline constexpr GUID PROPID_FStop = {0x97CC03F3, 0x7707, 0x488A, {0xBD, 0x67, 0x04, 0x16, 0x5E, 0x81, 0xF4, 0x98}};
inline constexpr GUID PROPID_FocalLength = {0x574944A9, 0x3A9C, 0x4731, {0xBD, 0xF1, 0xFE, 0xF5, 0xB4, 0x09, 0xF5, 0xA6}};
inline constexpr GUID PROPID_SensorWidth = {0x789F1807, 0xE046, 0x447D, {0xBC, 0x6A, 0x68, 0x5D, 0xF1, 0x75, 0xED, 0x40}};
inline constexpr GUID PROPID_DepthUnit = {0x1D0350E6, 0x1123, 0x4025, {0xA3, 0x38, 0x7B, 0xE3, 0xD9, 0xDD, 0x6A, 0xBD}};
inline constexpr GUID PROPID_Focus = {0xDE8029E7, 0x888A, 0x4E4B, {0x9E, 0xA7, 0xCF, 0xC1, 0x0F, 0x62, 0x72, 0xB5}};
inline constexpr GUID PROPID_MaxRadius = {0x39EB8F02, 0x3290, 0x46EF, {0xA6, 0xF8, 0xBE, 0x83, 0x89, 0xF3, 0x10, 0xE5}};
inline constexpr GUID PROPID_DepthKind = {0x6DE81786, 0x3878, 0x4784, {0x95, 0x67, 0x0C, 0x56, 0x23, 0x11, 0xCB, 0xC6}};
inline constexpr GUID PROPID_LayerSpacing = {0xCD99948D, 0xE6AE, 0x47FB, {0xAE, 0xBD, 0x8C, 0x91, 0xE8, 0x12, 0x8F, 0x9A}};

// Keys of the depth properties, after the plain effect's.
enum DepthPropertyKey : uint32_t {
    KEY_RADIUS_INFINITY = 0xFFFF0400,
    KEY_USE_LENS = 0xFFFF0408,
    KEY_F_STOP = 0xFFFF0410,
    KEY_FOCAL_LENGTH = 0xFFFF0418,
    KEY_SENSOR_WIDTH = 0xFFFF0420,
    KEY_DEPTH_UNIT = 0xFFFF0428,
    KEY_FOCUS = 0xFFFF0430,
    KEY_MAX_RADIUS = 0xFFFF0438,
    KEY_DEPTH_KIND = 0xFFFF0440,
    KEY_LAYER_SPACING = 0xFFFF0448,
};

// The Focus property's range, in the depth's unit or scale.
inline constexpr double kFocusLowest = 0.001;
inline constexpr double kFocusHighest = 1.0e6;

// The Depth Kind list's texts, in list order (DepthKind).
inline constexpr const char* kDepthKindNames[] = {"Distance", "Normalised"};
inline constexpr int kDepthKindCount = 2;

// The map's descriptor, with its count initialised: the shared properties in
// the plain effect's order, then the depth properties.
CDSPropertiesMap* DepthPropertiesMap();
