// The colour families and matrices of the host pixel formats; their buffer
// geometry is hostsdk's (image_format_geometry.h).
//
// The family table is indexed by format code 0..16 (row 0, "not recognised", is
// 0). Both directions read the same tables. Matrices are indexed by colour
// family 1..6 (row 0 unused) and are single-precision constants:
//   decode, row-major, rows R G B, columns Y Cb Cr;
//   encode, row-major, rows Y Cb Cr, columns R G B.
// Families: 1/2 8-bit 601/709, 3/4 signed 2.14 601/709, 5/6 float 601/709.
#pragma once

#include <cstdint>

constexpr int kHostFormatCodeCount = 17;   // codes 0..16
constexpr int kHostColourFamilyCount = 7;  // families 0..6

extern const uint8_t hostColourFamily[kHostFormatCodeCount];     // 0 RGB, else the matrix pair 1..6

extern const float hostDecodeMatrix[kHostColourFamilyCount][9];
extern const float hostEncodeMatrix[kHostColourFamilyCount][9];
