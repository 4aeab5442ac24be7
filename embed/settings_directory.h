// The installation's settings directory, where the engine keeps its FFT
// wisdom file when VZ_USE_FFTW_WISDOM is set.
#pragma once

#include <string>

// $VZ_HOME_DIR/Settings; without VZ_HOME_DIR, ProgramFilesDir of
// /etc/quillfen/machine.conf plus /Quillfen/Settings; else /opt/Quillfen/Settings.
std::string settingsDirectory();

// With wisdom on, creates the settings directory if it is missing; says on
// stderr (and goes on) when it cannot.
void prepareSettingsDirectory();
