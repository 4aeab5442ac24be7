// Line format, thresholds and continuations of the library log.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/vzlibs/baselib/log_capture.h"
#include "vzlibs/baselib/log.h"
#include "vzlibs/baselib/machine.h"

namespace {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;

class LogTest : public ::testing::Test {
protected:
    LogCapture log;  // threshold INFO, nothing printed yet
};

TEST_F(LogTest, LineHasPrefixTimeLevelWordAndTextFormattedTwice)
{
    lib_log(LOG_INFO, "hello %d", 42);
    lib_log(LOG_ERROR, "ends in newline\n");
    lib_log(LOG_WARN, "100%%%% sure");  // the first pass leaves "%%", the second "%"
    const std::string stamp = "\\(VZ LIB\\) [0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{2} ";
    EXPECT_THAT(log.take(), MatchesRegex(stamp + "INFO : hello 42\n" + stamp + "ERROR: ends in newline\n" + stamp +
                                         "WARN : 100% sure\n"));
}

TEST_F(LogTest, ThresholdDecidesAndHighLevelsCountAsTrace)
{
    lib_log(LOG_DEBUG, "debug");
    lib_log(LOG_TRACE, "trace");
    lib_log(0, "never");
    EXPECT_EQ(log.take(), "");
    lib_log_channel().level = LOG_TRACE;
    lib_log(7, "seven");
    EXPECT_THAT(log.take(), HasSubstr(" TRACE: seven\n"));
    lib_log_channel().level = -1;
    lib_log(LOG_ERROR, "shut off");
    EXPECT_EQ(log.take(), "");
}

TEST_F(LogTest, ContinuationFollowsTheLastPrintedLine)
{
    lib_log_continue("dropped: nothing printed yet");
    EXPECT_EQ(log.take(), "");
    lib_log(LOG_WARN, "first");
    lib_log(LOG_DEBUG, "suppressed");  // leaves the last printed level as it was
    lib_log_continue("more %s", "detail");
    EXPECT_THAT(log.take(), HasSubstr(" WARN : first\n(VZ LIB)                  : more detail\n"));
    lib_log_channel().level = LOG_ERROR;  // now below the last printed line
    lib_log_continue("hidden");
    EXPECT_EQ(log.take(), "");
}

TEST_F(LogTest, ClockWrapsAtMidnight)
{
    // The clock paired with midnight 25 hours of counter time ago.
    lib_log_channel().clockBase = get_time_seconds() - 25.0 * 3600.0;
    lib_log_channel().dayBase = 0.0;
    lib_log(LOG_INFO, "a day later");
    EXPECT_THAT(log.take(), MatchesRegex("\\(VZ LIB\\) 01:00:.*a day later\n"));
}

TEST_F(LogTest, ConsoleLogCopiesToTheStreamOnlyWhenFileLoggingIsOn)
{
    console_log("quiet %d\n", 1);
    EXPECT_EQ(log.take(), "");
    lib_log_channel().fileLogging = 1;
    console_log("copied %d\n", 2);
    EXPECT_EQ(log.take(), "CONSOLE LOG:copied 2\n");
}

}  // namespace
