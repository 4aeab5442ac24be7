// The class the test module serves and registers, for the module and the loader's tests.
#pragma once
#include "hostsdk/guid.h"
inline constexpr GUID TEST_MODULE_CLASS = {0x1A2B3C4D, 0x5E6F, 0x4071, {0x82, 0x93, 0xA4, 0xB5, 0xC6, 0xD7, 0xE8, 0xF9}};
inline constexpr const char* TEST_MODULE_NAME = "Loader Test Module";
