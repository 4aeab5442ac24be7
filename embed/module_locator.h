// Where the effect module file is found.
#pragma once

#include <string>

// The module path: `explicitPath` when not empty, else $LUMENVEIL_MODULE, else
// libLumenveilVZ.so beside the host's own file (`hostDirectory`, or the
// running program's directory when that is empty), in ../lib, ../lib/lumenveil
// or ../lumenveil from it, then where `make install` puts it beside PREFIX/bin,
// and last the path the build tree put it at. Gives
// the first that exists (or the last tried).
std::string locateModule(const std::string& explicitPath, const std::string& hostDirectory = "");
