// Home and standard directories of the installation.
#include "vzlibs/baselib/paths.h"

#include <cstdio>
#include <cstring>

#include "vzlibs/baselib/heap.h"
#include "vzlibs/baselib/log.h"
#include "vzlibs/baselib/registry.h"

namespace {

// Home directory built from the configured ProgramFilesDir.
char builtHome[4096];
// Result of get_standard_directory: the home directory and a short name.
char standardDirectory[4096 + 16];

// lib_log formats its text twice; doubling '%' in a path lets it print as it is.
// Too long a path is cut at the buffer's end.
const char* logSafe(const char* text, char* buffer, size_t size)
{
    size_t n = 0;
    for (const char* p = text; *p && n + 2 < size; ++p) {
        if (*p == '%')
            buffer[n++] = '%';
        buffer[n++] = *p;
    }
    buffer[n] = '\0';
    return buffer;
}

}  // namespace

const char* get_home_directory()
{
    char safe[2 * sizeof builtHome];
    if (const char* home = read_registry_environment("VZ_HOME_DIR", true)) {
        lib_log(LOG_TRACE, "get_home_directory() is returning: %s\n", logSafe(home, safe, sizeof safe));
        return home;
    }
    if (char* programs = read_registry_string(VZ_HOME_CONFIG_FILE, VZ_HOME_CONFIG_VALUE)) {
        // A value too long for the buffer counts as absent rather than being cut.
        const int length = std::snprintf(builtHome, sizeof builtHome, "%s/%s", programs, VZ_HOME_SUBDIR);
        if (length > 0 && static_cast<size_t>(length) < sizeof builtHome) {
            lib_log(LOG_TRACE, "No VZ_HOME_DIR: get_home_directory() got Registry ProgramFilesDir entry: %s\n",
                    logSafe(programs, safe, sizeof safe));
            lib_log(LOG_TRACE, "get_home_directory() is returning: %s\n", logSafe(builtHome, safe, sizeof safe));
            // The value is released here: builtHome holds all that is needed.
            vz_free(programs, __FILE__, __LINE__);
            return builtHome;
        }
        vz_free(programs, __FILE__, __LINE__);
    }
    lib_log(LOG_TRACE, "get_home_directory() is returning utils hardwired DEFAULT: %s\n", VZ_DEFAULT_HOME_DIR);
    return VZ_DEFAULT_HOME_DIR;
}

const char* get_standard_directory(uint32_t number)
{
    const char* home = get_home_directory();
    const char* leaf = number == VZ_DIR_SETTINGS ? "Settings" : number == VZ_DIR_LOGS ? "Logs" : nullptr;
    if (number == VZ_DIR_HOME)
        std::snprintf(standardDirectory, sizeof standardDirectory, "%s", home);
    else if (leaf)
        std::snprintf(standardDirectory, sizeof standardDirectory, "%s/%s", home, leaf);
    else
        std::strcpy(standardDirectory, " ");
    char safe[2 * sizeof standardDirectory];
    lib_log(LOG_TRACE, "get_standard_directory(%d) is returning: %s\n", static_cast<int>(number),
            logSafe(standardDirectory, safe, sizeof safe));
    return standardDirectory;
}
