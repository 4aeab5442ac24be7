// Machine-wide settings: the counterparts of the two registry reads of the
// original platform.
//
// Environment variables come from the process environment, where Linux puts both
// the machine's settings (/etc/environment, the service manager) and the user's.
// Configuration values come from plain text files of "name=value" lines; a line
// starting with '#' is a comment, and the first line with the name wins.
#pragma once

// Directory under which a relative configuration file name is looked up.
#define VZ_MACHINE_CONFIG_ROOT "/etc"

// The value of environment variable `name` in a static buffer of 1024 characters
// (the same address on every call, good until the next), or null if the variable
// is absent or its value, with its NUL, does not fit below 1024 characters. An
// empty value is returned as an empty string. `machine` chose the machine's or
// the user's store on the original platform; both read the same store here.
const char* read_registry_environment(const char* name, bool machine);

// The value `value` of configuration file `subkey` (a path, relative to
// VZ_MACHINE_CONFIG_ROOT unless it starts with '/'), as a string from vz_malloc
// that the caller owns and returns with vz_free; null if the file cannot be read
// or holds no line for the name. Values are taken as they stand, unexpanded.
char* read_registry_string(const char* subkey, const char* value);
