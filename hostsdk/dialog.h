// A property page's dialog as a description: its controls with their ids,
// classes, texts (a number control's text is its set-up string) and places.
#pragma once

#include <cstdint>

struct DSDialogControl {
    uint32_t id;
    const char* className;  // "combobox", "static", "checkbox", "button"; "number" for number controls
    const char* text;
    int32_t x, y, width, height;
};

struct DSDialogTemplate {
    int32_t width, height;  // dialog units
    const char* font;
    int32_t fontSize;
    const DSDialogControl* controls;
    int32_t controlCount;
};
