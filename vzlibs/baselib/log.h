// The base library's log and debug console.
//
// One process-wide LogChannel prints lines of the form
//   "(VZ LIB) 14:03:27.55 INFO : text"
// to its stream (stderr unless set). Levels: 1 ERROR, 2 WARN, 3 INFO, 4 DEBUG,
// 5 TRACE; the threshold is 3. The message text is formatted twice: the result of
// the caller's format is used as the format of the line, so a per cent sign in it
// acts as a conversion again. Callers keep messages free of stray per cent signs.
#pragma once

#include <cstdint>
#include <cstdio>

enum LogLevel : int32_t {
    LOG_NONE = 0,
    LOG_ERROR = 1,
    LOG_WARN = 2,
    LOG_INFO = 3,
    LOG_DEBUG = 4,
    LOG_TRACE = 5,
    LOG_CONTINUE = 6,
};

struct LogChannel {
    explicit LogChannel(FILE* stream);

    // Prints one line at `level` if the threshold allows; `format` is used as it is.
    void print(int32_t level, const char* format, ...) __attribute__((format(printf, 3, 4)));
    // Prints a continuation line after the last printed line.
    void printContinue(const char* format, ...) __attribute__((format(printf, 2, 3)));

    double clockBase;    // get_time_seconds() when the line clock was set; 0 until then
    double dayBase;      // local time of day at that reading, seconds since midnight
    int32_t level;       // threshold; lines at or below it print; negative shuts the log
    int32_t lastLevel;   // level of the last line printed, -1 at first
    int32_t reserved;
    FILE* stream;        // null until the first line, then stderr unless set
    char text[4096];     // the line being printed
    char prefix[80];     // "(VZ LIB)"
    uint8_t fileLogging; // with a stream, console_log copies its text there
    uint8_t hasConsole;  // has_process_console() at construction

private:
    void writeLine(int32_t lineLevel);
};

// The process-wide channel that lib_log writes through.
LogChannel& lib_log_channel();

// Switches for echoing log lines to the debug console; 0 at load.
extern uint8_t log_console_echo;
extern uint8_t log_console_echo_owned;

void lib_log(int32_t level, const char* format, ...) __attribute__((format(printf, 2, 3)));
void lib_log_continue(const char* format, ...) __attribute__((format(printf, 1, 2)));

// True if the process has a terminal of its own on stderr.
bool has_process_console();

// Formats into a 1024-character buffer and writes it with console_write.
void console_printf(const char* format, ...) __attribute__((format(printf, 1, 2)));
// As console_printf; also copies "CONSOLE LOG:" and the text to the log's stream
// when that stream is set and fileLogging is on.
void console_log(const char* format, ...) __attribute__((format(printf, 1, 2)));
// Writes text to the debug console, opening it on first use: the controlling
// terminal if the process has one, else stderr. False if neither can be had.
bool console_write(const char* text);
