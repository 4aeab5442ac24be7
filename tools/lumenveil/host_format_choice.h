// Which host pixel format the frames are handed to the effect in.
#pragma once

#include <string>

#include "hostsdk/image_format_geometry.h"
#include "tools/lumenveil/image_file.h"

// The format for `name` (its MFIF_ name with or without the prefix, either
// case, or its code), or when `name` is empty the default for files of
// `depth`: MFIF_RGBA_RAW_32 for 8-bit, MFIF_RGBA_FLOAT for deeper files, so
// that no precision is lost before the effect's 15-bit frame. UsageError for
// an unknown name or a format the effect does not take (see hostFormatSupport).
const HostFormatGeometry* chooseHostFormat(const std::string& name, SampleDepth depth);

// "" when frames can be handed over in `format`, else why not.
std::string hostFormatSupport(const HostFormatGeometry& format);
