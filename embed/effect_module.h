// EffectModule: the plug-in module loaded at run time, its classes made
// through their class factories.
#pragma once

#include <memory>
#include <string>

#include "hostsdk/IDSImageEffect.h"
#include "hostsdk/module_library.h"
#include "hostsdk/com.h"

// The effect's class, and the class of its interactive tool (the viewer overlay).
inline constexpr GUID kEffectClassId = {0x6888FDA5, 0x1F1F, 0x4662, {0x9C, 0x9E, 0x07, 0x65, 0x50, 0x6D, 0x80, 0xEA}};
inline constexpr GUID kToolClassId = {0xB0142538, 0x3884, 0x42B4, {0x83, 0xF8, 0x55, 0x89, 0x0A, 0x4C, 0x8A, 0xE2}};
// The depth-of-field effect, Lumenveil Depth, the module's second effect.
inline constexpr GUID kDepthEffectClassId = {0xDFBB4C61, 0x2E3D, 0x4EFE, {0xA8, 0x9F, 0x0B, 0xD8, 0xAA, 0x82, 0xF8, 0x6F}};
// The effect's property page, and Lumenveil Depth's.
inline constexpr GUID kPageClassId = {0x31B01C5A, 0xC9EC, 0x4C56, {0x83, 0xCE, 0xFF, 0xEA, 0xC8, 0x17, 0xFA, 0x83}};
inline constexpr GUID kDepthPageClassId = {0xEEB05E03, 0xAF26, 0x4069, {0x88, 0xA9, 0x35, 0xCB, 0xE3, 0x16, 0xC9, 0xD0}};

class EffectModule {
public:
    // Loads the module and registers its classes with the host; Failure with
    // the loader's reason when it cannot.
    explicit EffectModule(const std::string& path);
    ~EffectModule();
    EffectModule(const EffectModule&) = delete;
    EffectModule& operator=(const EffectModule&) = delete;

    // A new effect object (of class `clsid`, the plain effect by default);
    // Failure when the module does not make one.
    ComRef<IDSImageEffect> CreateEffect(const GUID& clsid = kEffectClassId) const;
    // A new object of `clsid` as IUnknown; null with the factory's status in
    // *status when the module does not serve the class.
    ComRef<IUnknown> CreateObject(const GUID& clsid, HRESULT* status) const;
    // The name the module registered for `clsid`, or "" when none.
    std::string ClassName(const GUID& clsid) const;
    const std::string& Path() const { return library->Path(); }

private:
    std::unique_ptr<ModuleLibrary> library;
};
