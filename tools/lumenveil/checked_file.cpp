#include "tools/lumenveil/checked_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

CheckedFile::CheckedFile(const std::string& path, int descriptor) : IOProxy(path, Write), fd(descriptor) {}

bool CheckedFile::seek(int64_t offset)
{
    if (offset < 0)
        return false;
    m_pos = offset;
    return true;
}

size_t CheckedFile::read(void* buffer, size_t size)
{
    const size_t n = pread(buffer, size, m_pos);
    m_pos += static_cast<int64_t>(n);
    return n;
}

size_t CheckedFile::write(const void* buffer, size_t size)
{
    const size_t n = pwrite(buffer, size, m_pos);
    m_pos += static_cast<int64_t>(n);
    return n;
}

size_t CheckedFile::pread(void* buffer, size_t size, int64_t offset)
{
    size_t done = 0;
    while (done < size) {
        const ssize_t n = ::pread(fd, static_cast<char*>(buffer) + done, size - done, offset + done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        done += static_cast<size_t>(n);
    }
    return done;
}

size_t CheckedFile::pwrite(const void* buffer, size_t size, int64_t offset)
{
    used = true;
    size_t done = 0;
    while (done < size) {
        const ssize_t n = ::pwrite(fd, static_cast<const char*>(buffer) + done, size - done, offset + done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0) {
            // A write that stores nothing and names no error is a full disk.
            if (failure == 0)
                failure = n < 0 ? errno : ENOSPC;
            break;
        }
        done += static_cast<size_t>(n);
    }
    return done;
}

size_t CheckedFile::size() const
{
    struct stat status;
    return fstat(fd, &status) == 0 ? static_cast<size_t>(status.st_size) : 0;
}

std::string CheckedFile::Finish()
{
    if (failure == 0 && fsync(fd) != 0)
        failure = errno;
    return failure == 0 ? "" : std::strerror(failure);
}
