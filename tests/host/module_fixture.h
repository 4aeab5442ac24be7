// Drives the effect module as a host does: load it, get the effect's class
// factory, create an effect, hand it images and parameters, Execute.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "effect/Lumenveil.h"
#include "host/LumenveilProperties.h"
#include "host/Plug.h"
#include "hostsdk/IDSImage.h"
#include "hostsdk/IDSImageEffect.h"
#include "hostsdk/IDSImageEffectHost.h"
#include "hostsdk/IDSProperties.h"
#include "hostsdk/image_formats.h"
#include "hostsdk/module_library.h"

// Releases a COM reference when it goes.
template <typename T> struct Ref {
    T* p = nullptr;
    Ref() = default;
    explicit Ref(T* object) : p(object) {}
    ~Ref()
    {
        if (p)
            p->Release();
    }
    Ref(const Ref&) = delete;
    Ref& operator=(const Ref&) = delete;
    T* operator->() const { return p; }
    void** out() { return reinterpret_cast<void**>(&p); }
};

class ModuleFixture : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        std::string error;
        module = ModuleLibrary::Open(LUMENVEIL_MODULE_PATH, &error).release();
        ASSERT_NE(module, nullptr) << error;
    }
    static void TearDownTestSuite()
    {
        delete module;
        module = nullptr;
    }

    // A new effect through the factory, as its IDSImageEffect.
    IDSImageEffect* create()
    {
        Ref<IClassFactory> factory;
        EXPECT_EQ(module->DllGetClassObject(CLSID_Plug, IID_IClassFactory, factory.out()), S_OK);
        IDSImageEffect* effect = nullptr;
        EXPECT_EQ(factory->CreateInstance(nullptr, IID_IDSImageEffect, reinterpret_cast<void**>(&effect)), S_OK);
        return effect;
    }
    static IDSProperties* properties(IDSImageEffect* effect)
    {
        IDSProperties* props = nullptr;
        effect->QueryInterface(IID_IDSProperties, reinterpret_cast<void**>(&props));
        props->Release();  // the effect keeps it alive
        return props;
    }
    static void set(IDSImageEffect* effect, const GUID& guid, double value)
    {
        VARIANT v;
        VariantInit(&v);
        v.vt = VT_R8;
        v.dblVal = value;
        ASSERT_EQ(properties(effect)->SetProperty(guid, &v), S_OK);
    }
    static double get(IDSImageEffect* effect, const GUID& guid, double time = -1.0)
    {
        VARIANT v;
        VariantInit(&v);
        properties(effect)->GetProperty(guid, &v, time);
        switch (v.vt) {
        case VT_I4:
            return v.lVal;
        case VT_BOOL:
            return v.boolVal != 0;
        case VT_UI4:
            return v.ulVal;
        case VT_UI8:
            return static_cast<double>(v.ullVal);
        default:
            return v.dblVal;
        }
    }
    // The effect's Lumenveil, through the handle property the page and tool read.
    static const Lumenveil* lumenveilOf(IDSImageEffect* effect)
    {
        VARIANT v;
        VariantInit(&v);
        properties(effect)->GetProperty(PROPID_LumenveilHandle, &v, -1.0);
        return reinterpret_cast<const Lumenveil*>(static_cast<uintptr_t>(v.ullVal));
    }
    // Sets images and host on an effect; keeps the output.
    void connect(IDSImageEffect* effect, MemoryImage* input, MemoryImage* output)
    {
        effect->SetEffectHost(&host);
        effect->SetInput(input);
        effect->SetOutput(output);
    }

    // An 8-bit R G B A image, top-down, filled by `pixel(x, y, channel)`.
    template <typename F> static MemoryImage* rgba8(int w, int h, F pixel)
    {
        MemoryImage* image = MemoryImage::Create(MFIF_RGBA_RAW_32, w, h);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                for (int c = 0; c < 4; ++c)
                    image->Data()[(size_t(y) * w + x) * 4 + c] = static_cast<uint8_t>(pixel(x, y, c));
        return image;
    }
    static uint8_t at8(MemoryImage* image, int w, int x, int y, int c) { return image->Data()[(size_t(y) * w + x) * 4 + c]; }

    static inline ModuleLibrary* module = nullptr;
    ImageEffectHost host;
};
