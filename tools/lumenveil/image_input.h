// Opening image files for reading: only regular files (a directory, FIFO or
// device is refused before it is opened, so nothing waits on it), never a
// movie container (refused by its content and name before any reader sees
// it), and the reader's complaints taken through its error calls, so that
// each failure is one line of ours.
#pragma once

#include <OpenImageIO/imageio.h>

#include <memory>
#include <string>

// Failure unless `path` names a regular file (perhaps through a link); the
// message names it as `label`.
void checkRegularFile(const std::string& path, const std::string& label);
inline void checkRegularFile(const std::string& path) { checkRegularFile(path, path); }

// "" when the first bytes of a file (`head`) and its name are not those of a
// movie container (MP4, QuickTime, Matroska, WebM, AVI, MPEG, ...), else the
// kind of container.
std::string movieContainerOf(const std::string& head, const std::string& path);

// The first line of a reader's or writer's error text, in words that hold
// (libtiff names the row before the first as scanline 4294967295);
// `otherwise` when it is empty.
std::string readerReason(const std::string& error, const std::string& otherwise = "the file is damaged");

// `path` open for reading with `config` (may be null), its layout in
// `layout`; Failure "cannot read LABEL: why" when it is not a regular file,
// is a movie, or no reader opens it.
std::unique_ptr<OIIO::ImageInput> openImageInput(const std::string& path, const std::string& label,
                                                 OIIO::ImageSpec& layout, const OIIO::ImageSpec* config = nullptr);
