// The engine's named modes, and VZ_FFT_MODE.
#include "vzlibs/fftlib/fft_modes.h"

#include <cstdlib>
#include <cstring>

#include "vzlibs/baselib/log.h"

namespace {

constexpr int kModeCount = 3;
constexpr const char* kNames[kModeCount] = {"faithful", "fast", "fast-float"};
constexpr uint32_t kModes[kModeCount] = {FFT_MODE_FFTW, FFT_MODE_FAST, FFT_MODE_FAST_FLOAT};

// The value as the log may show it: at most 40 characters, and no per cent
// sign or control character, since the log uses its text as a format again.
void printable(const char* value, char (&out)[41])
{
    size_t n = 0;
    for (; value[n] && n < sizeof out - 1; ++n) {
        const unsigned char c = static_cast<unsigned char>(value[n]);
        out[n] = c == '%' || c < 0x20 || c == 0x7F ? '?' : static_cast<char>(c);
    }
    out[n] = '\0';
}

}  // namespace

int fft_mode_count() { return kModeCount; }

const char* fft_mode_name(int index) { return index >= 0 && index < kModeCount ? kNames[index] : nullptr; }

const char* const* fft_mode_names() { return kNames; }

uint32_t fft_mode_at(int index) { return index >= 0 && index < kModeCount ? kModes[index] : FFT_MODE_FFTW; }

int fft_mode_index(uint32_t mode)
{
    if (mode == 5)
        mode = FFT_MODE_FFTW;
    for (int i = 0; i < kModeCount; ++i)
        if (kModes[i] == mode)
            return i;
    return -1;
}

uint32_t fft_mode_from_environment()
{
    const char* value = std::getenv(FFT_MODE_VARIABLE);
    if (!value || !*value)
        return FFT_MODE_FFTW;
    for (int i = 0; i < kModeCount; ++i)
        if (std::strcmp(value, kNames[i]) == 0)
            return kModes[i];
    char shown[41];
    printable(value, shown);
    lib_log(LOG_WARN, "%s=\"%s\" is not faithful, fast or fast-float; using the faithful transforms",
            FFT_MODE_VARIABLE, shown);
    return FFT_MODE_FFTW;
}
