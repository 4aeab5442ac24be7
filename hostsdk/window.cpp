#include "hostsdk/window.h"

bool EnableWindow(HWND window, bool enable)
{
    if (!window)
        return false;
    const bool wasDisabled = !window->enabled;
    window->enabled = enable;
    return wasDisabled;
}

bool ShowWindow(HWND window, int command)
{
    if (!window)
        return false;
    const bool wasShown = window->shown;
    window->shown = command != SW_HIDE;
    return wasShown;
}

LRESULT SendMessage(HWND window, uint32_t message, WPARAM wParam, LPARAM lParam)
{
    if (!window)
        return 0;
    switch (message) {
    case BM_GETCHECK:
        return window->checkState;
    case BM_SETCHECK:
        window->checkState = static_cast<int32_t>(wParam);
        return 0;
    case CB_RESETCONTENT:
        window->listEntries.clear();
        window->selection = -1;
        return 0;
    case CB_INSERTSTRING: {
        const char* text = reinterpret_cast<const char*>(lParam);
        const size_t at = wParam < window->listEntries.size() ? wParam : window->listEntries.size();
        window->listEntries.insert(window->listEntries.begin() + static_cast<std::ptrdiff_t>(at), text ? text : "");
        return static_cast<LRESULT>(at);
    }
    case CB_GETCURSEL:
        return window->selection;
    case CB_SETCURSEL:
        window->selection = static_cast<int32_t>(wParam);
        return window->selection;
    default:
        return 0;
    }
}

int32_t SetNumberControlRange(HWND window, const VARIANT* low, const VARIANT* high)
{
    if (!window || !low || !high)
        return static_cast<int32_t>(0x80004003u);
    if (window->className != "number")
        return static_cast<int32_t>(0x80004002u);
    window->rangeLow = low->dblVal;
    window->rangeHigh = high->dblVal;
    return 0;
}
