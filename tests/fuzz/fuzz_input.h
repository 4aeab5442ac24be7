// Reading a fuzzer's input a piece at a time: small numbers from its first
// bytes, the rest as a block. A short input reads as zeros.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

struct FuzzInput {
    const uint8_t* data;
    size_t size;

    uint8_t Byte()
    {
        if (size == 0)
            return 0;
        --size;
        return *data++;
    }
    uint32_t Word()
    {
        uint32_t value = 0;
        for (int i = 0; i < 4; ++i)
            value = value << 8 | Byte();
        return value;
    }
    std::string Rest() const { return std::string(reinterpret_cast<const char*>(data), size); }
};
