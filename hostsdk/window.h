// Widgets of a property page, in place of the host's windows: each widget is a
// record that remembers what was done to it. A window handle points at one.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "hostsdk/variant.h"

struct PageWidget {
    uint32_t id = 0;
    std::string className;                 // "combobox", "static", "checkbox", "button", "number"
    std::string text;                      // label, or a number control's set-up string
    int32_t x = 0, y = 0, width = 0, height = 0;  // dialog units
    bool shown = true;
    bool enabled = true;
    VARIANT value{};                       // what SetControlValue last put there
    std::vector<std::string> listEntries;  // combo box entries
    int32_t selection = -1;                // combo box selection, -1 for none
    int32_t checkState = 0;                // 0 clear, 1 checked, 2 indeterminate
    double rangeLow = 0.0;                 // number control's range
    double rangeHigh = 500.0;
};

typedef PageWidget* HWND;
typedef uintptr_t WPARAM;
typedef intptr_t LPARAM;
typedef intptr_t LRESULT;

enum : int { SW_HIDE = 0, SW_SHOWNORMAL = 1 };
enum : uint32_t {
    BM_GETCHECK = 240,
    BM_SETCHECK = 241,
    CB_INSERTSTRING = 330,
    CB_RESETCONTENT = 331,
    CB_GETCURSEL = 327,
    CB_SETCURSEL = 334,
};
enum : int32_t { BST_UNCHECKED = 0, BST_CHECKED = 1, BST_INDETERMINATE = 2 };

// Enables or disables the widget; returns whether it was disabled before.
bool EnableWindow(HWND window, bool enable);
// Shows (SW_SHOWNORMAL) or hides (SW_HIDE); returns whether it was shown before.
bool ShowWindow(HWND window, int command);
// The messages above: check state, list entries and selection. CB_INSERTSTRING
// takes a `const char*` in lParam and the index in wParam. Unknown messages and
// a null window give 0.
LRESULT SendMessage(HWND window, uint32_t message, WPARAM wParam, LPARAM lParam);

// Sets the range of a number control (className "number") from two VT_R8
// variants; E_NOINTERFACE for any other widget, E_POINTER for null arguments.
int32_t SetNumberControlRange(HWND window, const VARIANT* low, const VARIANT* high);
