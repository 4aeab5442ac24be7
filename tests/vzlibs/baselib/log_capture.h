// Captures the library log for the life of the object: the channel writes into
// memory at the given threshold, with nothing printed yet, and take() returns
// the text written since its last call. The whole channel is put back at the end.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

#include "vzlibs/baselib/log.h"

class LogCapture {
public:
    explicit LogCapture(int32_t level = LOG_INFO) : saved(lib_log_channel())
    {
        lib_log_channel().stream = stream;  // if null, take() says so
        lib_log_channel().level = level;
        lib_log_channel().lastLevel = -1;
    }
    ~LogCapture()
    {
        lib_log_channel() = saved;
        if (stream)
            std::fclose(stream);
        std::free(buffer);
    }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::string take()
    {
        if (!stream || std::fflush(stream) != 0)
            return "<log not captured>";
        std::string out(buffer + consumed, size - consumed);
        consumed = size;
        return out;
    }

private:
    const LogChannel saved;
    char* buffer = nullptr;
    size_t size = 0;
    size_t consumed = 0;
    FILE* stream = open_memstream(&buffer, &size);
};
