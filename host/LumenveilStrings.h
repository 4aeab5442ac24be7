// The module's string resources: names, labels and tooltips by number.
#pragma once

#include <cstdint>

// String numbers the module uses by name.
enum LumenveilString : uint32_t {
    IDS_EFFECT_NAME = 1,
    IDS_EFFECT_LONG_NAME = 2,
    IDS_TOOL_NAME = 4,
    IDS_INPUT = 8,
    IDS_SPREAD = 9,
    IDS_PAGE_NAME = 10,
    IDS_DEPTH_EFFECT_NAME = 100,
    IDS_DEPTH_EFFECT_LONG_NAME = 101,
    IDS_DEPTH = 102,
    IDS_DEPTH_PAGE_NAME = 103,
    IDS_FOCUS_PICKER_NAME = 124,
};

// The text of string `id`, or null when the module has none.
const char* LumenveilStringText(uint32_t id);

// Copies string `id` into the wide buffer of `size` characters, cut to fit and
// always terminated. Returns the characters copied, 0 when the string does not
// exist or the buffer is null or empty.
int LoadStringW(uint32_t id, wchar_t* buffer, int size);
