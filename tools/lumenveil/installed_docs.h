// The documents that `make install` puts beside the tool: the user guide, the
// farm recipes, the pictures and the effect's help page, in
// PREFIX/share/doc/lumenveil, found from the program's own place
// (PREFIX/bin); in the build tree, the source tree's docs folder.
#pragma once

#include <string>

// The folder of the documents, or "" when neither is there.
std::string documentsDirectory();

// Points the effect's help requests at the help page of that folder, unless
// LUMENVEIL_HELP_PAGE or VZ_HOME_DIR already says where help is.
void useInstalledHelpPage();
