// The temporary files a run killed while writing leaves beside its outputs
// (".NAME.partial.EXT"), removed by the next run that writes those outputs.
#pragma once

#include <string>
#include <vector>

// Removes the temporaries of `targets` that no process holds (by their exact
// names alone: never the names with a process id, nor other files), and
// says in one line on stderr which were removed.
void removeStaleTemporaries(const std::vector<std::string>& targets);
