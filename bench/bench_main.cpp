// Entry point of the benchmark program; each subject registers its benchmarks in
// its own source file.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "vzlibs/baselib/paths.h"

int main(int argc, char** argv)
{
    // With wisdom on, the engine reads and writes its file in the settings
    // directory, which no library function creates: a program using the engine
    // sees to it at start-up.
    if (std::getenv("VZ_USE_FFTW_WISDOM")) {
        const char* settings = get_standard_directory(VZ_DIR_SETTINGS);
        std::error_code error;
        std::filesystem::create_directories(settings, error);
        if (error)
            std::fprintf(stderr, "lumenveil_bench: cannot create the settings directory \"%s\": %s; "
                                 "wisdom will not be kept\n", settings, error.message().c_str());
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
