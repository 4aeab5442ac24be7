#include "host/Help.h"

#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "vzlibs/baselib/paths.h"

extern char** environ;

namespace {

// Process-wide state of the help viewer: the opener, and whether looking for
// it failed.
std::string g_opener;
bool g_helpLoadFailed = false;

bool isFile(const std::string& path)
{
    struct stat info;
    return !path.empty() && stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

// The desktop's opener on the search path, or empty.
std::string findOpener()
{
    const char* path = std::getenv("PATH");
    std::string dirs = path ? path : "/usr/bin:/bin";
    size_t start = 0;
    while (start <= dirs.size()) {
        const size_t end = dirs.find(':', start);
        const std::string dir = dirs.substr(start, end == std::string::npos ? std::string::npos : end - start);
        const std::string candidate = (dir.empty() ? "." : dir) + "/xdg-open";
        if (access(candidate.c_str(), X_OK) == 0)
            return candidate;
        if (end == std::string::npos)
            break;
        start = end + 1;
    }
    return {};
}

}  // namespace

std::string find_help_page()
{
    if (const char* page = std::getenv("LUMENVEIL_HELP_PAGE"))
        return isFile(page) ? page : std::string();
    const char* home = get_home_directory();
    const std::string page = std::string(home ? home : "") + "/docs/help/lumenveil.html";
    return isFile(page) ? page : std::string();
}

void reset_help_state()
{
    g_opener.clear();
    g_helpLoadFailed = false;
}

bool help_load_failed() { return g_helpLoadFailed; }

int html_help(void*, const wchar_t*, unsigned, unsigned)
{
    if (g_helpLoadFailed)
        return 0;
    const std::string page = find_help_page();
    if (page.empty()) {
        g_helpLoadFailed = true;
        return 0;
    }
    if (g_opener.empty())
        g_opener = findOpener();
    if (g_opener.empty()) {
        std::fprintf(stderr, "Lumenveil help: %s\n", page.c_str());
        g_helpLoadFailed = true;
        return 0;
    }
    // A shell starts the opener in the background and ends at once, so it is
    // reaped here and the opener, left to the system, never lingers as a
    // zombie of the host.
    pid_t child = 0;
    char shell[] = "/bin/sh", dashC[] = "-c", script[] = "\"$0\" \"$1\" >/dev/null 2>&1 &";
    char* const argv[] = {shell, dashC, script, const_cast<char*>(g_opener.c_str()), const_cast<char*>(page.c_str()),
                          nullptr};
    int status = 0;
    if (posix_spawn(&child, shell, nullptr, nullptr, argv, environ) != 0 || waitpid(child, &status, 0) != child ||
        !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        g_helpLoadFailed = true;
        return 0;
    }
    return 1;
}
