// Line format, thresholds and continuations of the library log.
#include <gtest/gtest.h>

#include <cstdio>
#include <regex>
#include <string>

#include "vzlibs/baselib/log.h"
#include "vzlibs/baselib/machine.h"

namespace {

class LogTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        LogChannel& ch = lib_log_channel();
        savedStream = ch.stream;
        savedLevel = ch.level;
        savedLast = ch.lastLevel;
        savedClock = ch.clockBase;
        savedDay = ch.dayBase;
        capture = std::tmpfile();
        ASSERT_NE(capture, nullptr);
        ch.stream = capture;
        ch.level = LOG_INFO;
        ch.lastLevel = -1;
    }
    void TearDown() override
    {
        LogChannel& ch = lib_log_channel();
        ch.stream = savedStream;
        ch.level = savedLevel;
        ch.lastLevel = savedLast;
        ch.clockBase = savedClock;
        ch.dayBase = savedDay;
        std::fclose(capture);
    }
    // Everything printed since the last call.
    std::string take()
    {
        std::fflush(capture);
        long end = std::ftell(capture);
        std::string out(static_cast<size_t>(end - consumed), '\0');
        std::fseek(capture, consumed, SEEK_SET);
        size_t got = std::fread(out.data(), 1, out.size(), capture);
        out.resize(got);
        consumed = end;
        std::fseek(capture, 0, SEEK_END);
        return out;
    }

    FILE* capture = nullptr;
    long consumed = 0;
    FILE* savedStream = nullptr;
    int32_t savedLevel = 0, savedLast = 0;
    double savedClock = 0, savedDay = 0;
};

TEST_F(LogTest, LineHasPrefixTimeLevelWordAndText)
{
    lib_log(LOG_INFO, "hello %d", 42);
    lib_log(LOG_ERROR, "bad");
    lib_log(LOG_WARN, "careful");
    const std::string out = take();
    const std::regex line(
        "\\(VZ LIB\\) \\d\\d:\\d\\d:\\d\\d\\.\\d\\d INFO : hello 42\n"
        "\\(VZ LIB\\) \\d\\d:\\d\\d:\\d\\d\\.\\d\\d ERROR: bad\n"
        "\\(VZ LIB\\) \\d\\d:\\d\\d:\\d\\d\\.\\d\\d WARN : careful\n");
    EXPECT_TRUE(std::regex_match(out, line)) << out;
}

TEST_F(LogTest, NewlineIsAddedOnceAndEmptyMessagePrintsAStampedLine)
{
    lib_log(LOG_INFO, "ends in newline\n");
    lib_log(LOG_INFO, "%s", "");
    const std::string out = take();
    EXPECT_TRUE(std::regex_match(out, std::regex("\\(VZ LIB\\) [0-9:.]{11} INFO : ends in newline\n"
                                                 "\\(VZ LIB\\) [0-9:.]{11} INFO : \n")))
        << out;
}

TEST_F(LogTest, FormattedTextIsFormattedAgain)
{
    // The first pass turns "%%%%" into "%%", the second into "%".
    lib_log(LOG_INFO, "100%%%% sure");
    EXPECT_NE(take().find("INFO : 100% sure\n"), std::string::npos);
}

TEST_F(LogTest, ThresholdDecidesAndHighLevelsCountAsTrace)
{
    lib_log(LOG_DEBUG, "debug");
    lib_log(LOG_TRACE, "trace");
    EXPECT_EQ(take(), "");
    lib_log(0, "never");
    lib_log(-3, "never");
    EXPECT_EQ(take(), "");

    lib_log_channel().level = LOG_TRACE;
    lib_log(7, "seven");
    EXPECT_NE(take().find(" TRACE: seven\n"), std::string::npos);
    EXPECT_EQ(lib_log_channel().lastLevel, LOG_TRACE);

    lib_log_channel().level = -1;
    lib_log(LOG_ERROR, "shut off");
    lib_log_continue("shut off too");
    EXPECT_EQ(take(), "");
}

TEST_F(LogTest, ContinuationFollowsTheLastPrintedLine)
{
    lib_log_continue("dropped: nothing printed yet");
    EXPECT_EQ(take(), "");

    lib_log(LOG_WARN, "first");
    lib_log(LOG_DEBUG, "suppressed");  // does not change lastLevel
    EXPECT_EQ(lib_log_channel().lastLevel, LOG_WARN);
    lib_log_continue("more %s", "detail");
    const std::string out = take();
    EXPECT_NE(out.find("(VZ LIB)                  : more detail\n"), std::string::npos) << out;
    EXPECT_EQ(out.find("suppressed"), std::string::npos);

    // A threshold lowered below the last printed line drops its continuation.
    lib_log_channel().level = LOG_ERROR;
    lib_log_continue("hidden");
    EXPECT_EQ(take(), "");
}

TEST_F(LogTest, ClockIsSetOnceAndWrapsAtMidnight)
{
    LogChannel& ch = lib_log_channel();
    ch.clockBase = 0.0;
    lib_log(LOG_INFO, "sets the clock");
    EXPECT_GT(ch.clockBase, 0.0);
    take();

    // Pretend the clock was paired with midnight 25 hours of counter time ago.
    ch.clockBase = get_time_seconds() - 25.0 * 3600.0;
    ch.dayBase = 0.0;
    lib_log(LOG_INFO, "a day later");
    const std::string out = take();
    EXPECT_EQ(out.substr(0, 15), "(VZ LIB) 01:00:") << out;
}

TEST_F(LogTest, ConsoleLogCopiesToTheStreamWhenFileLoggingIsOn)
{
    LogChannel& ch = lib_log_channel();
    console_log("quiet %d\n", 1);
    EXPECT_EQ(take(), "");
    ch.fileLogging = 1;
    console_log("copied %d\n", 2);
    ch.fileLogging = 0;
    EXPECT_EQ(take(), "CONSOLE LOG:copied 2\n");
    // The console is the terminal or, without one, stderr: it can always be had here.
    EXPECT_TRUE(console_write(""));
}

}  // namespace
