// The library log (line format and clock, thresholds, level words, continuations,
// console copies) and the home and standard directories with the settings they come from.
#include <gtest/gtest.h>

#include <cstdio>
#include <ctime>
#include <fstream>
#include <optional>
#include <regex>
#include <string>

#include "tests/vzlibs/baselib/test_support.h"
#include "vzlibs/baselib/machine.h"
#include "vzlibs/baselib/paths.h"
#include "vzlibs/baselib/registry.h"

namespace {

class LogTest : public ::testing::Test {
protected:
    LogChannel& channel = lib_log_channel();
    LogCapture log;  // threshold INFO, nothing printed yet
};

TEST_F(LogTest, LinesShowTheTimeOfDayFromTheClockPairingWrappedAtMidnight)
{
    // Paired with 13:05:07.501 a hundred seconds ago, then 49 and 25 hours ago.
    const double day = (13 * 60 + 5) * 60 + 7.501;
    channel.clockBase = get_time_seconds() - 100.0;
    channel.dayBase = day - 100.0;
    lib_log(LOG_INFO, "hello %d", 42);
    channel.clockBase = get_time_seconds() - 49 * 3600.0;
    channel.dayBase = day;
    lib_log(LOG_ERROR, "ends in newline\n");
    channel.clockBase = get_time_seconds() - 25 * 3600.0;
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
}

TEST_F(LogTest, ConsoleCopiesOfLinesUnlessTheProcessHasAConsoleAndOfConsoleLogWhenFileLogging)
{
    console_log("quiet %d\n", 1);
    EXPECT_EQ(log.take(), "");
    channel.fileLogging = 1;
    console_log("copied %d\n", 2);
    EXPECT_EQ(log.take(), "CONSOLE LOG:copied 2\n");

    // The console is the terminal if there is one, else stderr, captured here.
    ::testing::internal::CaptureStderr();
    for (const int echo : {0, 1, 2, 3}) {  // owned x 2 + has a console
        log_console_echo_owned = static_cast<uint8_t>(echo / 2);
        channel.hasConsole = static_cast<uint8_t>(echo % 2);
        log_console_echo = 1;
        lib_log(LOG_INFO, "echo %d", echo);
        lib_log_continue("more");
        log_console_echo = log_console_echo_owned = 0;
    }
    const std::string echoed = ::testing::internal::GetCapturedStderr();
    if (echoed.empty())
        GTEST_SKIP() << "the console is a terminal";
    EXPECT_EQ(std::regex_replace(echoed, std::regex("\\d\\d:\\d\\d:\\d\\d\\.\\d\\d "), ""),
              "(VZ LIB) INFO : echo 0\n(VZ LIB)                  : more\n(VZ LIB) INFO : echo 2\n"
              "(VZ LIB)                  : more\n(VZ LIB) INFO : echo 3\n(VZ LIB)                  : more\n");
}

// VZ_HOME_DIR is put back at the end; the lookups log at TRACE, which the capture shows.
class PathsTest : public ::testing::Test {
protected:
    ~PathsTest() override { saved ? setenv("VZ_HOME_DIR", saved->c_str(), 1) : unsetenv("VZ_HOME_DIR"); }
    const std::optional<std::string> saved =
        std::getenv("VZ_HOME_DIR") ? std::optional<std::string>(std::getenv("VZ_HOME_DIR")) : std::nullopt;
    LogCapture log{LOG_TRACE};
};

TEST_F(PathsTest, HomeVariableGivesTheStandardDirectoriesAndIsLoggedAsItIsUnlessTooLong)
{
    setenv("VZ_HOME_DIR", "/srv/100%s home", 1);
    EXPECT_STREQ(get_standard_directory(70), "/srv/100%s home/Settings");  // the published numbers
    EXPECT_EQ(log.untimed(), "(VZ LIB) TRACE: get_home_directory() is returning: /srv/100%s home\n"
                             "(VZ LIB) TRACE: get_standard_directory(70) is returning: /srv/100%s home/Settings\n");
    std::string all;
    for (const uint32_t number : {69u, 73u, 0u, 71u})
        all += std::string(get_standard_directory(number)) + "|";
    EXPECT_EQ(all, "/srv/100%s home|/srv/100%s home/Logs| | |");
    setenv("VZ_HOME_DIR", "", 1);  // empty still counts
    EXPECT_STREQ(get_standard_directory(VZ_DIR_SETTINGS), "/Settings");
    // 1022 characters and the NUL fit below 1024; one more moves on to the next source.
    unsetenv("VZ_HOME_DIR");
    const std::string fallback = get_home_directory(), path = "/" + std::string(1021, 'p');
    setenv("VZ_HOME_DIR", path.c_str(), 1);
    EXPECT_EQ(get_home_directory(), path);
    setenv("VZ_HOME_DIR", (path + "q").c_str(), 1);
    EXPECT_EQ(get_home_directory(), fallback);
}

TEST(ConfigFile, ValuesAreFoundByWholeNameOutsideCommentsAndTheFirstLineWins)
{
    const std::string path = ::testing::TempDir() + "vz_machine.conf";
    std::ofstream(path) << "# Dir=/commented\nDirX=/longer name\nDir=/srv/apps\r\nDir=/second\nEmpty=\nLast=/end";
    std::string found;
    for (const char* name : {"Dir", "DirX", "Empty", "Last", "Missing", "# Dir"}) {
        char* value = read_registry_string(path.c_str(), name);
        found += std::string(name) + "=" + (value ? value : "<null>") + ";";
        vz_free(value, __FILE__, __LINE__);
    }
    std::remove(path.c_str());
    EXPECT_EQ(found, "Dir=/srv/apps;DirX=/longer name;Empty=;Last=/end;Missing=<null>;# Dir=<null>;");
    EXPECT_EQ(read_registry_string(path.c_str(), "Dir"), nullptr);  // no file
}

}  // namespace
