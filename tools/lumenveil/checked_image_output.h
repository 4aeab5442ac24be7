// An image file written by OpenImageIO's writer for its name onto a staged
// temporary file, confirmed to hold the whole image before it is handed on
// for renaming. Writers that take an I/O proxy write through CheckedFile,
// which checks each write and flushes the file to disk; for the few that
// write their files themselves (FITS, HEIF, ICO, RLA, SGI, zfile), or leave
// the proxy unused, the file is flushed to disk and read back whole by the
// format's reader, which must find every pixel of the image written.
#pragma once

#include <OpenImageIO/imageio.h>

#include <memory>
#include <string>

#include "tools/lumenveil/checked_file.h"
#include "tools/lumenveil/staged_file.h"

class CheckedImageOutput {
public:
    // The writer open on a temporary beside `target` with `layout`; Failure
    // when no writer takes the name or the file cannot be opened.
    CheckedImageOutput(const std::string& target, const OIIO::ImageSpec& layout);
    ~CheckedImageOutput();
    CheckedImageOutput(const CheckedImageOutput&) = delete;
    CheckedImageOutput& operator=(const CheckedImageOutput&) = delete;

    OIIO::ImageOutput& Writer() { return *out; }
    // OpenImageIO's name of the format written: "openexr", "png", ...
    std::string FormatName() const { return out->format_name(); }
    // Failure naming the target and the writer's reason (after a call of
    // Writer() returned false); the temporary is removed.
    [[noreturn]] void Fail();
    // Closes the writer and confirms the temporary holds the whole image;
    // Failure otherwise, the temporary removed.
    StagedFile Close();

private:
    [[noreturn]] void failWith(const std::string& reason);

    StagedFile staged;
    OIIO::ImageSpec layout;
    std::unique_ptr<CheckedFile> proxy;  // null for writers that take none
    std::unique_ptr<OIIO::ImageOutput> out;
    bool open = false;
};

// OpenImageIO's name of the file format `path` is written in, by its name;
// Failure when no writer takes the name, or its writer makes no file (the
// null and terminal writers).
std::string imageOutputFormat(const std::string& path);
