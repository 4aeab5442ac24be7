// An OpenImageIO I/O proxy that writes a file through its descriptor and
// checks every write to the last byte: a short write, a full disk or a failed
// flush to disk is remembered, whatever the format's writer makes of it.
#pragma once

#include <OpenImageIO/filesystem.h>

#include <cstdint>
#include <string>

class CheckedFile : public OIIO::Filesystem::IOProxy {
public:
    // `descriptor` is open for reading and writing; the caller closes it.
    CheckedFile(const std::string& path, int descriptor);

    const char* proxytype() const override { return "checked"; }
    // The descriptor stays open: Finish settles the file.
    void close() override {}
    bool seek(int64_t offset) override;
    size_t read(void* buffer, size_t size) override;
    size_t write(const void* buffer, size_t size) override;
    size_t pread(void* buffer, size_t size, int64_t offset) override;
    size_t pwrite(const void* buffer, size_t size, int64_t offset) override;
    size_t size() const override;

    // "" when every byte written reached the file and the file is on disk
    // (fsync), else the first reason it is not.
    std::string Finish();
    // Whether any byte was written through the proxy: a writer that says it
    // takes a proxy but writes its file by name leaves it unused.
    bool Used() const { return used; }

private:
    int fd;
    bool used = false;
    int failure = 0;  // the errno of the first failed write, or of a short one
};
