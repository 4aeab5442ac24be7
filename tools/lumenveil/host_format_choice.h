// Which host pixel format the frames are handed to the effect in.
#pragma once

#include <string>

#include "hostsdk/image_format_geometry.h"
#include "tools/lumenveil/image_file.h"

// The format for `name` (its MFIF_ name with or without the prefix, either
// case, or its code), or when `name` is empty the default for files of
// `depth` (defaultHostFormat, embed/host_frame.h). UsageError for
// an unknown name or a format the effect does not take (see hostFormatSupport).
const HostFormatGeometry* chooseHostFormat(const std::string& name, SampleDepth depth);

// "" when frames can be handed over in `format`, else why not.
std::string hostFormatSupport(const HostFormatGeometry& format);
