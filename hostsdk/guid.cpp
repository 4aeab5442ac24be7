#include "hostsdk/guid.h"

#include <cstdio>
#include <cstring>
#include <tuple>

namespace {

constexpr std::size_t GUID_TEXT_LENGTH = 38;
// Positions of the dashes in the braced text.
constexpr std::size_t DASH_POSITIONS[] = {9, 14, 19, 24};
// Where each field's digits start.
constexpr std::size_t DATA1_AT = 1, DATA2_AT = 10, DATA3_AT = 15, DATA4_HIGH_AT = 20, DATA4_LOW_AT = 25;

int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

bool isDash(std::size_t position)
{
    for (std::size_t dash : DASH_POSITIONS)
        if (position == dash)
            return true;
    return false;
}

// The number written by `digits` hexadecimal digits at `at`; the text is
// already known to hold digits there.
uint32_t readHex(std::string_view text, std::size_t at, std::size_t digits)
{
    uint32_t value = 0;
    for (std::size_t i = 0; i < digits; ++i)
        value = value << 4 | static_cast<uint32_t>(hexValue(text[at + i]));
    return value;
}

}  // namespace

std::optional<GUID> ParseGuid(std::string_view text)
{
    if (text.size() != GUID_TEXT_LENGTH || text.front() != '{' || text.back() != '}')
        return std::nullopt;
    for (std::size_t i = 1; i + 1 < text.size(); ++i) {
        const bool good = isDash(i) ? text[i] == '-' : hexValue(text[i]) >= 0;
        if (!good)
            return std::nullopt;
    }
    GUID guid;
    guid.Data1 = readHex(text, DATA1_AT, 8);
    guid.Data2 = static_cast<uint16_t>(readHex(text, DATA2_AT, 4));
    guid.Data3 = static_cast<uint16_t>(readHex(text, DATA3_AT, 4));
    for (std::size_t i = 0; i < 2; ++i)
        guid.Data4[i] = static_cast<uint8_t>(readHex(text, DATA4_HIGH_AT + 2 * i, 2));
    for (std::size_t i = 0; i < 6; ++i)
        guid.Data4[2 + i] = static_cast<uint8_t>(readHex(text, DATA4_LOW_AT + 2 * i, 2));
    return guid;
}

std::string FormatGuid(const GUID& guid)
{
    char text[GUID_TEXT_LENGTH + 1];
    std::snprintf(text, sizeof text, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                  static_cast<unsigned>(guid.Data1), static_cast<unsigned>(guid.Data2),
                  static_cast<unsigned>(guid.Data3), guid.Data4[0], guid.Data4[1], guid.Data4[2],
                  guid.Data4[3], guid.Data4[4], guid.Data4[5], guid.Data4[6], guid.Data4[7]);
    return text;
}

bool operator==(const GUID& a, const GUID& b) { return std::memcmp(&a, &b, sizeof(GUID)) == 0; }

bool operator<(const GUID& a, const GUID& b)
{
    const auto key = [](const GUID& g) { return std::tie(g.Data1, g.Data2, g.Data3); };
    if (key(a) != key(b))
        return key(a) < key(b);
    return std::memcmp(a.Data4, b.Data4, sizeof a.Data4) < 0;
}
