// Machine-wide settings read from the process environment and configuration files.
#include "vzlibs/baselib/registry.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "vzlibs/baselib/heap.h"

namespace {

// Result buffer of read_registry_environment.
char environmentValue[1024];

}  // namespace

const char* read_registry_environment(const char* name, bool /*machine*/)
{
    if (!name)
        return nullptr;
    const char* value = std::getenv(name);
    if (!value)
        return nullptr;
    const size_t size = std::strlen(value) + 1;  // counted with its NUL, as stored
    if (size >= sizeof environmentValue)
        return nullptr;
    std::memcpy(environmentValue, value, size);
    return environmentValue;
}

char* read_registry_string(const char* subkey, const char* value)
{
    if (!subkey || !value || !*value)
        return nullptr;
    std::string path = subkey[0] == '/' ? std::string(subkey) : std::string(VZ_MACHINE_CONFIG_ROOT "/") + subkey;
    FILE* file = std::fopen(path.c_str(), "r");
    if (!file)
        return nullptr;
    const size_t nameLength = std::strlen(value);
    char* result = nullptr;
    char* line = nullptr;
    size_t capacity = 0;
    ssize_t length;
    while ((length = getline(&line, &capacity, file)) >= 0) {
        while (length > 0 && (line[length - 1] == '\n' || line[length - 1] == '\r'))
            line[--length] = '\0';
        if (line[0] == '#' || static_cast<size_t>(length) <= nameLength || line[nameLength] != '=' ||
            std::strncmp(line, value, nameLength) != 0)
            continue;
        const char* text = line + nameLength + 1;
        result = vz_strdup(text, __FILE__, __LINE__);
        break;
    }
    std::free(line);
    std::fclose(file);
    return result;
}
