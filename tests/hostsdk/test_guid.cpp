// GUID text: the braced form read and written, malformed text refused, and the
// order agreeing with the order of the text.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "hostsdk/guid.h"

namespace {

const char* const EFFECT_TEXT = "{6888FDA5-1F1F-4662-9C9E-0765506D80EA}";

TEST(Guid, ReadsEachFieldFromItsDigits)
{
    const std::optional<GUID> guid = ParseGuid(EFFECT_TEXT);
    ASSERT_TRUE(guid.has_value());
    EXPECT_EQ(guid->Data1, 0x6888FDA5u);
    EXPECT_EQ(guid->Data2, 0x1F1Fu);
    EXPECT_EQ(guid->Data3, 0x4662u);
    const uint8_t data4[8] = {0x9C, 0x9E, 0x07, 0x65, 0x50, 0x6D, 0x80, 0xEA};
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(guid->Data4[i], data4[i]) << "byte " << i;
}

TEST(Guid, TextRoundTripsInUpperCase)
{
    EXPECT_EQ(FormatGuid(*ParseGuid(EFFECT_TEXT)), EFFECT_TEXT);
    const GUID fromLower = *ParseGuid("{ae0d7c31-95aa-11d0-b685-00a024191ae0}");
    EXPECT_EQ(FormatGuid(fromLower), "{AE0D7C31-95AA-11D0-B685-00A024191AE0}");
    const GUID zeroPadded = {0x1, 0x2, 0x3, {0, 0, 0, 0, 0, 0, 0, 0x4}};
    EXPECT_EQ(FormatGuid(zeroPadded), "{00000001-0002-0003-0000-000000000004}");
    EXPECT_TRUE(*ParseGuid(FormatGuid(zeroPadded)) == zeroPadded);
}

TEST(Guid, RefusesMalformedText)
{
    const char* const malformed[] = {
        "",
        "6888FDA5-1F1F-4662-9C9E-0765506D80EA",     // no braces
        "{6888FDA5-1F1F-4662-9C9E-0765506D80EA",    // no closing brace
        "{6888FDA5-1F1F-4662-9C9E-0765506D80E}",    // a digit short
        "{6888FDA5-1F1F-4662-9C9E-0765506D80EAA}",  // a digit over
        "{6888FDA5-1F1F-4662-9C9E-0765506D80EG}",   // not a hex digit
        "{6888FDA51-F1F-4662-9C9E-0765506D80EA}",   // dash moved
        "{6888FDA5-1F1F-4662-9C9E+0765506D80EA}",   // not a dash
        "{6888FDA5-1F1F-4662-9C9E-0765506D80EA} ",  // text after
        " {6888FDA5-1F1F-4662-9C9E-0765506D80EA}",  // text before
        "[6888FDA5-1F1F-4662-9C9E-0765506D80EA]",   // wrong brackets
        "{6888FDA5-1F1F-4662-9C9E-0765506D 0EA}",   // a space inside
    };
    for (const char* text : malformed)
        EXPECT_FALSE(ParseGuid(text).has_value()) << text;
}

TEST(Guid, EqualityIsAllSixteenBytes)
{
    const GUID a = *ParseGuid(EFFECT_TEXT);
    GUID b = a;
    EXPECT_TRUE(a == b);
    b.Data4[7] ^= 1;
    EXPECT_FALSE(a == b);
}

// Sorting by the order gives the order of the text: the fields count as
// numbers, not as their bytes in memory.
TEST(Guid, OrderFollowsTheText)
{
    std::vector<std::string> texts = {
        "{10000000-0000-0000-0000-000000000000}", "{00000001-0000-0000-0000-000000000000}",
        "{00000000-0100-0000-0000-000000000000}", "{00000000-0001-0000-0000-000000000000}",
        "{00000000-0000-0100-0000-000000000000}", "{00000000-0000-0001-0000-000000000000}",
        "{00000000-0000-0000-8000-000000000000}", "{00000000-0000-0000-0000-000000000001}",
        "{00000000-0000-0000-0000-000000000000}", "{FFFFFFFF-0000-0000-0000-000000000000}",
    };
    std::vector<GUID> guids;
    for (const std::string& text : texts)
        guids.push_back(*ParseGuid(text));
    std::sort(guids.begin(), guids.end());
    std::sort(texts.begin(), texts.end());
    for (std::size_t i = 0; i < texts.size(); ++i)
        EXPECT_EQ(FormatGuid(guids[i]), texts[i]) << "position " << i;
    for (const GUID& g : guids)
        EXPECT_FALSE(g < g);
}

}  // namespace
