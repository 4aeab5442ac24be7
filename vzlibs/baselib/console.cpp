// The debug console. Linux has no console window to create, so the console is the
// controlling terminal when the process has one, else stderr.
#include <fcntl.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "vzlibs/baselib/log.h"

#pragma GCC diagnostic ignored "-Wformat-nonliteral"

namespace {
// Output descriptor of the console; -1 until it has been opened.
int consoleOutput = -1;
}  // namespace

bool console_write(const char* text)
{
    if (consoleOutput < 0) {
        int fd = open("/dev/tty", O_WRONLY | O_NOCTTY | O_CLOEXEC);
        if (fd < 0 && fcntl(STDERR_FILENO, F_GETFD) != -1)
            fd = STDERR_FILENO;
        if (fd < 0)
            return false;  // the text is lost; the next call tries again
        consoleOutput = fd;
    }
    // The result is ignored, as a console write's would be.
    ssize_t written = write(consoleOutput, text, strlen(text));
    (void)written;
    return true;
}

void console_printf(const char* format, ...)
{
    char buffer[1024];
    va_list args;
    va_start(args, format);
    vsnprintf(buffer, sizeof buffer, format, args);
    va_end(args);
    console_write(buffer);
}

void console_log(const char* format, ...)
{
    char buffer[1024];
    va_list args;
    va_start(args, format);
    vsnprintf(buffer, sizeof buffer, format, args);
    va_end(args);
    LogChannel& channel = lib_log_channel();
    if (channel.stream && channel.fileLogging)
        fprintf(channel.stream, "CONSOLE LOG:%s", buffer);
    console_write(buffer);
}
