// The library log: line format and clock, thresholds, level words, continuations.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <regex>
#include <string>

#include "tests/vzlibs/baselib/test_support.h"
#include "vzlibs/baselib/log.h"
#include "vzlibs/baselib/machine.h"

namespace {

class LogTest : public ::testing::Test {
protected:
    LogChannel& channel = lib_log_channel();
    LogCapture log;  // threshold INFO, nothing printed yet
};

TEST_F(LogTest, LinesShowTheTimeOfDayFromTheClockPairingWrappedAtMidnight)
{
    // Paired with 13:05:07.501 a hundred seconds ago, then 49 hours ago.
    const double day = (13 * 60 + 5) * 60 + 7.501;
    channel.clockBase = get_time_seconds() - 100.0;
    channel.dayBase = day - 100.0;
    lib_log(LOG_INFO, "hello %d", 42);
    channel.clockBase = get_time_seconds() - 49 * 3600.0;
    channel.dayBase = day;
    lib_log(LOG_ERROR, "ends in newline\n");
    lib_log(LOG_WARN, "100%%%% sure");  // formatted twice: "%%%%" to "%%" to "%"
    lib_log(LOG_INFO, "%s", "");
    // The hundredths depend on how long the lines took; they are left out.
    EXPECT_EQ(std::regex_replace(log.take(), std::regex("(\\.5)[0-9] "), "$1x "),
              "(VZ LIB) 13:05:07.5x INFO : hello 42\n(VZ LIB) 14:05:07.5x ERROR: ends in newline\n"
              "(VZ LIB) 14:05:07.5x WARN : 100% sure\n(VZ LIB) 14:05:07.5x INFO : \n");

    // Unpaired, or paired with a later reading: the wall clock is read again.
    for (const double base : {0.0, get_time_seconds() + 1000.0}) {
        channel.clockBase = base;
        const std::time_t wall = std::time(nullptr);
        std::tm local{};
        localtime_r(&wall, &local);
        lib_log(LOG_INFO, "paired");
        EXPECT_NEAR(channel.clockBase, get_time_seconds(), 1.0);
        EXPECT_NEAR(channel.dayBase, (local.tm_hour * 60 + local.tm_min) * 60 + local.tm_sec, 2.0);
    }
}

TEST_F(LogTest, ThresholdLevelWordsAndContinuations)
{
    lib_log_continue("dropped: nothing printed yet");
    channel.level = LOG_TRACE;
    for (int level : {1, 2, 3, 4, 5, 7, 0, -1})
        lib_log(level, "level %d", level);
    EXPECT_EQ(channel.lastLevel, LOG_TRACE);
    EXPECT_EQ(log.untimed(), "(VZ LIB) ERROR: level 1\n(VZ LIB) WARN : level 2\n(VZ LIB) INFO : level 3\n"
                             "(VZ LIB) DEBUG: level 4\n(VZ LIB) TRACE: level 5\n(VZ LIB) TRACE: level 7\n");

    channel.level = LOG_INFO;
    lib_log(LOG_WARN, "first");
    lib_log(LOG_DEBUG, "suppressed");  // the last printed level stays
    EXPECT_EQ(channel.lastLevel, LOG_WARN);
    lib_log_continue("more %s", "detail");
    EXPECT_EQ(log.untimed(), "(VZ LIB) WARN : first\n(VZ LIB)                  : more detail\n");
    channel.level = LOG_ERROR;  // now below the last printed line
    lib_log_continue("hidden");
    channel.level = -1;
    lib_log(LOG_ERROR, "shut off");
    lib_log_continue("shut off");
    EXPECT_EQ(log.take(), "");

    // A channel without a stream takes stderr, even for a line it does not print.
    FILE* captured = channel.stream;
    channel.stream = nullptr;
    channel.level = LOG_INFO;
    lib_log(LOG_DEBUG, "too high");
    EXPECT_EQ(channel.stream, stderr);
    channel.stream = captured;
}

TEST_F(LogTest, ConsoleLogCopiesToTheStreamOnlyWhenFileLoggingIsOn)
{
    console_log("quiet %d\n", 1);
    EXPECT_EQ(log.take(), "");
    channel.fileLogging = 1;
    console_log("copied %d\n", 2);
    EXPECT_EQ(log.take(), "CONSOLE LOG:copied 2\n");
}

TEST_F(LogTest, ConsoleEchoCopiesLinesAndContinuationsUnlessTheProcessHasAConsole)
{
    // The console is the terminal if there is one, else stderr, sent to a file here.
    std::FILE* file = std::tmpfile();
    const int savedStderr = dup(2);
    dup2(fileno(file), 2);
    for (const int owned : {0, 1})
        for (const int hasConsole : {0, 1}) {
            log_console_echo_owned = static_cast<uint8_t>(owned);
            channel.hasConsole = static_cast<uint8_t>(hasConsole);
            log_console_echo = 1;
            lib_log(LOG_INFO, "echo %d%d", owned, hasConsole);
            lib_log_continue("continued");
            log_console_echo = log_console_echo_owned = 0;
        }
    dup2(savedStderr, 2);
    close(savedStderr);
    std::string echoed(4096, '\0');
    std::rewind(file);
    echoed.resize(std::fread(echoed.data(), 1, echoed.size(), file));
    std::fclose(file);
    log.take();
    if (echoed.empty())
        GTEST_SKIP() << "the console is a terminal";
    EXPECT_EQ(std::regex_replace(echoed, std::regex("\\d\\d:\\d\\d:\\d\\d\\.\\d\\d "), ""),
              "(VZ LIB) INFO : echo 00\n(VZ LIB)                  : continued\n(VZ LIB) INFO : echo 10\n"
              "(VZ LIB)                  : continued\n(VZ LIB) INFO : echo 11\n(VZ LIB)                  : continued\n");
}

}  // namespace
