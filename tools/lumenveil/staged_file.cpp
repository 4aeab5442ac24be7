#include "tools/lumenveil/staged_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "tools/lumenveil/cli_error.h"

namespace fs = std::filesystem;

namespace {

// ".STEM" + `tag` + ".EXT" beside `path`.
std::string hiddenBeside(const fs::path& path, const std::string& tag)
{
    std::string name(".");
    name += path.stem().string();
    name += tag;
    name += path.extension().string();
    return (path.parent_path() / name).string();
}

}  // namespace

std::string temporaryNameOf(const std::string& target) { return hiddenBeside(fs::path(target), ".partial"); }

StagedFile::StagedFile(const std::string& targetPath) : target(targetPath)
{
    // The same name on every run, since some formats (DPX) record the name
    // they were written under; while another writer holds it, a unique one.
    static std::atomic<unsigned> serial{0};
    const fs::path path(target);
    const std::string first = temporaryNameOf(target);
    for (std::string name = first;;) {
        const int fd = open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd >= 0) {
            flock(fd, LOCK_EX);
            descriptor = fd;
            temporary = name;
            return;
        }
        if (errno != EEXIST)
            throw Failure("cannot write " + target + ": " + std::strerror(errno));
        name = hiddenBeside(path, ".partial-" + std::to_string(getpid()) + "-" + std::to_string(serial++));
    }
}

StagedFile::~StagedFile() { Discard(); }

StagedFile::StagedFile(StagedFile&& other) noexcept
    : target(std::move(other.target)), temporary(std::move(other.temporary)), descriptor(other.descriptor)
{
    other.temporary.clear();
    other.descriptor = -1;
}

StagedFile& StagedFile::operator=(StagedFile&& other) noexcept
{
    if (this != &other) {
        Discard();
        target = std::move(other.target);
        temporary = std::move(other.temporary);
        descriptor = other.descriptor;
        other.temporary.clear();
        other.descriptor = -1;
    }
    return *this;
}

void StagedFile::Commit()
{
    if (std::rename(temporary.c_str(), target.c_str()) != 0) {
        const int error = errno;
        Discard();
        throw Failure("cannot write " + target + ": " + std::strerror(error));
    }
    temporary.clear();
    if (descriptor >= 0)
        close(descriptor);
    descriptor = -1;
}

void StagedFile::Discard()
{
    // Unlinked while still locked, so that no other run takes it for a stale one.
    if (!temporary.empty())
        unlink(temporary.c_str());
    if (descriptor >= 0)
        close(descriptor);
    temporary.clear();
    descriptor = -1;
}

void StagedFiles::CommitAll()
{
    for (StagedFile& file : files)
        file.Commit();
    files.clear();
}
