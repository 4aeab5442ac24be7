// The library log: line format and clock, thresholds, level words, continuations.
#include <gtest/gtest.h>

#include <ctime>
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
    EXPECT_EQ(log.take(), "(VZ LIB) 13:05:07.50 INFO : hello 42\n(VZ LIB) 14:05:07.50 ERROR: ends in newline\n"
                          "(VZ LIB) 14:05:07.50 WARN : 100% sure\n(VZ LIB) 14:05:07.50 INFO : \n");

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

}  // namespace
