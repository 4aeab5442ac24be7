#include "embed/settings_directory.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace {

// The value of `name=` in the machine's configuration file, or "".
std::string machineSetting(const std::string& name)
{
    std::ifstream file("/etc/quillfen/machine.conf");
    std::string line;
    while (std::getline(file, line)) {
        while (!line.empty() && (line.back() == '\r' || line.back() == '\n'))
            line.pop_back();
        if (!line.empty() && line[0] != '#' && line.size() > name.size() && line[name.size()] == '=' &&
            line.compare(0, name.size(), name) == 0)
            return line.substr(name.size() + 1);
    }
    return "";
}

}  // namespace

std::string settingsDirectory()
{
    std::string home;
    if (const char* fromEnvironment = std::getenv("VZ_HOME_DIR"))
        home = fromEnvironment;
    else if (const std::string programs = machineSetting("ProgramFilesDir"); !programs.empty())
        home = programs + "/Quillfen";
    else
        home = "/opt/Quillfen";
    return home + "/Settings";
}

void prepareSettingsDirectory()
{
    if (!std::getenv("VZ_USE_FFTW_WISDOM"))
        return;
    const std::string directory = settingsDirectory();
    std::error_code error;
    std::filesystem::create_directories(directory, error);
    if (error)
        std::fprintf(stderr, "lumenveil: cannot create the settings directory %s: %s; wisdom will not be kept\n",
                     directory.c_str(), error.message().c_str());
}
