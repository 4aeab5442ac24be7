// Files checked for being whole from their own headers before a reader sees
// them. libpng prints its own complaint about a PNG that ends early to
// stderr and leaves it by longjmp through the reader, so a PNG that ends
// inside a chunk or before its IEND chunk is refused here, from the chunk
// headers alone; a DPX file shorter than the size its header records is
// refused with that reason, which its reader does not give, and one whose
// user data is larger than the file (its reader allocates that size first);
// an OpenEXR file whose header names an attribute larger than the rest of
// the file is refused, since its library would first allocate that size.
#pragma once

#include <string>

// "" when the file at `path` is not a PNG, DPX or OpenEXR file, or is whole as
// far as its headers tell, else what is wrong.
std::string fileStructureProblem(const std::string& path);
