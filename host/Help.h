// The effect's help: the page string of the help request, and the viewer that
// opens it. On this platform the help is an HTML page shipped with the effect
// and opened with the desktop's opener.
#pragma once

#include <string>

// The page string a help request hands to the viewer.
inline constexpr const wchar_t* kHelpPage = L"c:\\Program files\\Quillfen\\Help\\Quillfen_DS.chm::/dsHTML/Lumenveil.html";

// Opens the help page named by `file` (the page string above). The help page
// is docs/help/lumenveil.html under the home directory (VZ_HOME_DIR and its
// fall-backs), or LUMENVEIL_HELP_PAGE when that variable names a file. The
// opener (xdg-open) is looked for once: when none exists, or no page, the
// request is remembered as failed and later requests do nothing at all. With
// an opener the page is opened in the background; without one the page's path
// is written to stderr once. Returns 1 when a viewer was started, else 0.
int html_help(void* window, const wchar_t* file, unsigned command, unsigned data);

// Where the help page is, or empty when it is not found.
std::string find_help_page();

// Forgets a failed load (for hosts that install the help later, and tests).
void reset_help_state();
// Whether a help request has failed and later ones are skipped.
bool help_load_failed();
