#include "embed/module_locator.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <vector>

namespace {

constexpr const char* kModuleFile = "libLumenveilVZ.so";

std::filesystem::path programDirectory()
{
    std::error_code error;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::filesystem::path() : self.parent_path();
}

}  // namespace

std::string locateModule(const std::string& explicitPath, const std::string& hostDirectory)
{
    if (!explicitPath.empty())
        return explicitPath;
    if (const char* fromEnvironment = std::getenv("LUMENVEIL_MODULE"); fromEnvironment && *fromEnvironment)
        return fromEnvironment;
    std::vector<std::filesystem::path> candidates;
    const std::filesystem::path here = hostDirectory.empty() ? programDirectory() : std::filesystem::path(hostDirectory);
    if (!here.empty())
        for (const char* place : {".", "../lib", "../lib/lumenveil", "../lumenveil"})
            candidates.push_back(here / place / kModuleFile);
#ifdef LUMENVEIL_INSTALL_MODULE_DIR
    // Where `make install` puts the module, from a program in PREFIX/bin.
    if (!here.empty())
        candidates.push_back(here / ".." / LUMENVEIL_INSTALL_MODULE_DIR / kModuleFile);
#endif
#ifdef LUMENVEIL_BUILD_MODULE_PATH
    candidates.push_back(LUMENVEIL_BUILD_MODULE_PATH);
#endif
    std::error_code error;
    for (const std::filesystem::path& candidate : candidates)
        if (std::filesystem::is_regular_file(candidate, error))
            return candidate.string();
    return candidates.empty() ? std::string(kModuleFile) : candidates.back().string();
}
