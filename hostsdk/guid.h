// GUID: the host's 16-byte identifier, in the usual Data1..Data4 layout, with
// its text form "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}" and comparisons.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

struct GUID {
    uint32_t Data1;
    uint16_t Data2;
    uint16_t Data3;
    uint8_t Data4[8];
};

static_assert(sizeof(GUID) == 16, "a GUID is 16 bytes with no padding");

// Reads the braced text form: 38 characters, hexadecimal digits of either case,
// dashes after the 8th, 12th, 16th and 20th digit. Anything else (no braces,
// wrong length, a stray character, text before or after) gives no value.
std::optional<GUID> ParseGuid(std::string_view text);

// The braced text form with upper-case digits; ParseGuid reads it back.
std::string FormatGuid(const GUID& guid);

// Equal when all 16 bytes are.
bool operator==(const GUID& a, const GUID& b);
// A strict weak order: Data1, Data2, Data3, then the Data4 bytes in turn, each
// compared as an unsigned number; it sorts GUIDs as their text forms sort.
bool operator<(const GUID& a, const GUID& b);
