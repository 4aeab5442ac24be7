// IDSImageEffectHost: the host's side of a running effect (its other inputs,
// and whether to go on); and ImageEffectHost, a host link a program can use.
#pragma once

#include <atomic>
#include <cstdint>
#include <map>

#include "hostsdk/com.h"

struct IDSImageEffectHost {
    virtual ~IDSImageEffectHost() = default;
    // A counted reference to the image of input `index` at `time`, or null.
    virtual HRESULT FetchInput(int32_t index, double time, uint64_t executeContext, IUnknown** out) = 0;
    // Zero means stop; a positive value, go on. May be called from any thread.
    virtual int32_t ShouldContinue() = 0;
};

// Inputs set by index; ShouldContinue answers 1 until Stop (from any thread).
class ImageEffectHost : public IDSImageEffectHost {
public:
    ImageEffectHost() = default;
    ~ImageEffectHost() override;
    ImageEffectHost(const ImageEffectHost&) = delete;
    ImageEffectHost& operator=(const ImageEffectHost&) = delete;

    // Holds a reference to `image` for input `index` (null disconnects it).
    void SetInput(int32_t index, IUnknown* image);
    HRESULT FetchInput(int32_t index, double time, uint64_t executeContext, IUnknown** out) override;
    int32_t ShouldContinue() override;
    // Makes ShouldContinue answer 0 from now on (or 1 again with false).
    void Stop(bool stop = true);
    // Number of ShouldContinue calls so far.
    int32_t Polls() const { return polls.load(); }

private:
    std::map<int32_t, IUnknown*> inputs;
    std::atomic<bool> stopped{false};
    std::atomic<int32_t> polls{0};
};
