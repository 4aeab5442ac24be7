// VZ_FFT_MODE: which back end an engine asked for FFT_MODE_FFTW gets.
#include "vzlibs/fftlib/fft_mode_environment.h"

#include <cstdlib>
#include <cstring>

#include "vzlibs/baselib/log.h"
#include "vzlibs/fftlib/FftEngine.h"

namespace {

struct NamedMode {
    const char* name;
    uint32_t mode;
};
constexpr NamedMode kNamedModes[] = {
    {"faithful", FFT_MODE_FFTW},
    {"fast", FFT_MODE_FAST},
    {"fast-float", FFT_MODE_FAST_FLOAT},
};

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

uint32_t fft_mode_from_environment()
{
    const char* value = std::getenv(FFT_MODE_VARIABLE);
    if (!value || !*value)
        return FFT_MODE_FFTW;
    for (const NamedMode& named : kNamedModes)
        if (std::strcmp(value, named.name) == 0)
            return named.mode;
    char shown[41];
    printable(value, shown);
    lib_log(LOG_WARN, "%s=\"%s\" is not faithful, fast or fast-float; using the faithful transforms",
            FFT_MODE_VARIABLE, shown);
    return FFT_MODE_FFTW;
}
