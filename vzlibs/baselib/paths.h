// Where the installation's directories are. Paths use '/' and carry no '/' at
// the end. Nothing here creates a directory or tests that it exists.
#pragma once

#include <cstdint>

// Standard directory numbers for get_standard_directory.
constexpr uint32_t VZ_DIR_HOME = 69;      // the home directory itself
constexpr uint32_t VZ_DIR_SETTINGS = 70;  // "Settings" under the home directory
constexpr uint32_t VZ_DIR_LOGS = 73;      // "Logs" under the home directory

// Machine-wide configuration file and value that name the directory holding
// installed programs (the second source of get_home_directory).
#define VZ_HOME_CONFIG_FILE "quillfen/machine.conf"
#define VZ_HOME_CONFIG_VALUE "ProgramFilesDir"
// Name of the installation under that directory.
#define VZ_HOME_SUBDIR "Quillfen"
// The home directory when no source names one.
#define VZ_DEFAULT_HOME_DIR "/opt/Quillfen"

// The installation's home directory, never null, looked up afresh on every call:
// the environment variable VZ_HOME_DIR as it stands (an empty value included);
// else VZ_HOME_SUBDIR under the configured ProgramFilesDir, in a static buffer;
// else VZ_DEFAULT_HOME_DIR. Logs its choice at level 5 (TRACE). Not safe from
// two threads at once: it shares static buffers.
const char* get_home_directory();

// Standard directory `number` (VZ_DIR_HOME, VZ_DIR_SETTINGS or VZ_DIR_LOGS) in a
// static buffer, never null; any other number gives a single blank. Logs its
// result at level 5. Not safe from two threads at once.
const char* get_standard_directory(uint32_t number);
