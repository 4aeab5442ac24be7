#include "vzlibs/baselib/log.h"

#include <unistd.h>

#include <cmath>
#include <cstdarg>
#include <cstring>
#include <ctime>

#include "vzlibs/baselib/machine.h"

#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"

uint8_t log_console_echo = 0;
uint8_t log_console_echo_owned = 0;

namespace {

// Five-character level words, by level 0 to 5.
const char* const kLevelWords[] = {"NONE ", "ERROR", "WARN ", "INFO ", "DEBUG", "TRACE"};

// The first formatting pass of lib_log and lib_log_continue lands here.
char logFormatBuffer[4096];

}  // namespace

// Constructed at load, before any user of the log.
static LogChannel globalChannel(nullptr);

LogChannel& lib_log_channel() { return globalChannel; }

bool has_process_console()
{
    // A terminal on stderr plays the part of a console the process owns.
    return isatty(STDERR_FILENO) == 1;
}

LogChannel::LogChannel(FILE* s)
    : clockBase(0.0),
      dayBase(0.0),
      level(LOG_INFO),
      lastLevel(-1),
      reserved(0),
      stream(s),
      text{},
      prefix{"(VZ LIB)"},
      fileLogging(0),
      hasConsole(has_process_console() ? 1 : 0)
{
}

void LogChannel::print(int32_t lineLevel, const char* format, ...)
{
    if (level < 0)
        return;
    if (!stream)
        stream = stderr;
    if (lineLevel > LOG_TRACE)
        lineLevel = LOG_TRACE;
    if (lineLevel <= 0 || lineLevel > level)
        return;
    va_list args;
    va_start(args, format);
    vsnprintf(text, sizeof text - 1, format, args);
    va_end(args);
    writeLine(lineLevel);
    lastLevel = lineLevel;
}

void LogChannel::printContinue(const char* format, ...)
{
    if (level < 0 || lastLevel <= 0 || lastLevel > level)
        return;
    if (!stream)
        stream = stderr;
    va_list args;
    va_start(args, format);
    vsnprintf(text, sizeof text - 1, format, args);
    va_end(args);
    writeLine(LOG_CONTINUE);
}

void LogChannel::writeLine(int32_t lineLevel)
{
    // text is formatted into at most sizeof text - 2 characters, leaving room here.
    size_t n = strlen(text);
    if (n == 0 || text[n - 1] != '\n') {
        text[n] = '\n';
        text[n + 1] = '\0';
    }

    // A process with a console of its own already sees stderr, unless the echo owns it.
    const bool echo = log_console_echo != 0 && (!hasConsole || log_console_echo_owned != 0);
    if (lineLevel == LOG_CONTINUE) {
        fprintf(stream, "%s                  : %s", prefix, text);
        if (echo)
            console_printf("%s                  : %s", prefix, text);
        return;
    }

    const double now = get_time_seconds();
    if (now < clockBase || clockBase == 0.0) {
        time_t wall = time(nullptr);
        tm local{};
        localtime_r(&wall, &local);
        dayBase = static_cast<double>((local.tm_hour * 60 + local.tm_min) * 60 + local.tm_sec);
        clockBase = now;
    }
    double t = now - clockBase + dayBase;
    if (t >= 86400.0)
        t -= std::floor(t * 1.1574074074074073e-05) * 86400.0;
    const int whole = static_cast<int>(t);
    const int hours = whole / 3600;
    const int minutes = (whole % 3600) / 60;
    const double seconds = t - static_cast<double>((hours * 60 + minutes) * 60);
    fprintf(stream, "%s %02d:%02d:%05.2f %s: %s", prefix, hours, minutes, seconds, kLevelWords[lineLevel], text);
    if (echo)
        console_printf("%s %02d:%02d:%05.2f %s: %s", prefix, hours, minutes, seconds, kLevelWords[lineLevel], text);
}

void lib_log(int32_t level, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    vsnprintf(logFormatBuffer, sizeof logFormatBuffer, format, args);
    va_end(args);
    // The formatted text becomes the format of the line: a second pass.
    globalChannel.print(level, logFormatBuffer);
}

void lib_log_continue(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    vsnprintf(logFormatBuffer, sizeof logFormatBuffer, format, args);
    va_end(args);
    globalChannel.printContinue(logFormatBuffer);
}
