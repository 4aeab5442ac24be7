#include "hostsdk/IDSImageEffectHost.h"

ImageEffectHost::~ImageEffectHost()
{
    for (auto& [index, image] : inputs)
        if (image)
            image->Release();
}

void ImageEffectHost::SetInput(int32_t index, IUnknown* image)
{
    if (image)
        image->AddRef();
    IUnknown*& slot = inputs[index];
    if (slot)
        slot->Release();
    slot = image;
}

HRESULT ImageEffectHost::FetchInput(int32_t index, double, uint64_t, IUnknown** out)
{
    if (!out)
        return E_POINTER;
    auto it = inputs.find(index);
    *out = it == inputs.end() ? nullptr : it->second;
    if (!*out)
        return E_FAIL;
    (*out)->AddRef();
    return S_OK;
}

int32_t ImageEffectHost::ShouldContinue()
{
    ++polls;
    return stopped.load() ? 0 : 1;
}

void ImageEffectHost::Stop(bool stop) { stopped.store(stop); }
