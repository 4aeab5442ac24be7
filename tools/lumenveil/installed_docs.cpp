#include "tools/lumenveil/installed_docs.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace {

constexpr const char* kUserGuide = "user-guide.md";
constexpr const char* kHelpPage = "help/lumenveil.html";

std::filesystem::path programDirectory()
{
    std::error_code error;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::filesystem::path() : self.parent_path();
}

bool holdsGuide(const std::filesystem::path& folder)
{
    std::error_code error;
    return !folder.empty() && std::filesystem::is_regular_file(folder / kUserGuide, error);
}

}  // namespace

std::string documentsDirectory()
{
    const std::filesystem::path installed = programDirectory() / ".." / LUMENVEIL_INSTALL_DOC_DIR;
    if (holdsGuide(installed))
        return installed.lexically_normal().string();
    if (holdsGuide(LUMENVEIL_SOURCE_DOC_DIR))
        return LUMENVEIL_SOURCE_DOC_DIR;
    return "";
}

void useInstalledHelpPage()
{
    if (std::getenv("LUMENVEIL_HELP_PAGE") || std::getenv("VZ_HOME_DIR"))
        return;
    const std::string folder = documentsDirectory();
    if (!folder.empty())
        setenv("LUMENVEIL_HELP_PAGE", (std::filesystem::path(folder) / kHelpPage).c_str(), 0);
}
