#include "tools/lumenveil/stale_temporaries.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

#include "tools/lumenveil/staged_file.h"

namespace {

// Whether `name` is a regular file no writer holds locked, removing it then.
bool removeIfStale(const std::string& name)
{
    struct stat status;
    if (lstat(name.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return false;
    const int fd = open(name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return false;
    // A writer holds its temporary locked until it is renamed or removed.
    const bool stale = flock(fd, LOCK_EX | LOCK_NB) == 0 && unlink(name.c_str()) == 0;
    close(fd);
    return stale;
}

}  // namespace

void removeStaleTemporaries(const std::vector<std::string>& targets)
{
    std::vector<std::string> removed;
    for (const std::string& target : targets) {
        const std::string name = temporaryNameOf(target);
        if (removeIfStale(name))
            removed.push_back(name);
    }
    if (removed.empty())
        return;
    if (removed.size() == 1) {
        std::fprintf(stderr, "lumenveil: removed %s, left by an earlier run that was stopped while writing\n",
                     removed[0].c_str());
        return;
    }
    std::string list;
    for (const std::string& name : removed)
        list += (list.empty() ? "" : ", ") + name;
    std::fprintf(stderr, "lumenveil: removed %zu temporary files left by earlier runs stopped while writing: %s\n",
                 removed.size(), list.c_str());
}
