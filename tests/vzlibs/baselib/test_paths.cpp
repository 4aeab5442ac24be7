// Home and standard directories, and the machine settings they come from.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "vzlibs/baselib/heap.h"
#include "vzlibs/baselib/log.h"
#include "vzlibs/baselib/paths.h"
#include "vzlibs/baselib/registry.h"

namespace {

// VZ_HOME_DIR and the log are process-wide: each test gets them back at its end.
class PathsTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        const char* home = std::getenv("VZ_HOME_DIR");
        hadHome = home != nullptr;
        if (home)
            savedHome = home;
        LogChannel& ch = lib_log_channel();
        savedStream = ch.stream;
        savedLevel = ch.level;
        savedLast = ch.lastLevel;
        capture = std::tmpfile();
        ASSERT_NE(capture, nullptr);
        ch.stream = capture;
        ch.level = LOG_TRACE;
    }
    void TearDown() override
    {
        if (hadHome)
            setenv("VZ_HOME_DIR", savedHome.c_str(), 1);
        else
            unsetenv("VZ_HOME_DIR");
        LogChannel& ch = lib_log_channel();
        ch.stream = savedStream;
        ch.level = savedLevel;
        ch.lastLevel = savedLast;
        std::fclose(capture);
    }
    std::string take()
    {
        std::fflush(capture);
        const long end = std::ftell(capture);
        std::string out(static_cast<size_t>(end - consumed), '\0');
        std::fseek(capture, consumed, SEEK_SET);
        out.resize(std::fread(out.data(), 1, out.size(), capture));
        consumed = end;
        std::fseek(capture, 0, SEEK_END);
        return out;
    }
    static bool has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

    FILE* capture = nullptr;
    long consumed = 0;
    bool hadHome = false;
    std::string savedHome;
    FILE* savedStream = nullptr;
    int32_t savedLevel = 0, savedLast = 0;
};

TEST_F(PathsTest, HomeVariableGivesTheStandardDirectories)
{
    setenv("VZ_HOME_DIR", "/srv/vz home", 1);
    EXPECT_STREQ(get_home_directory(), "/srv/vz home");
    EXPECT_STREQ(get_standard_directory(VZ_DIR_HOME), "/srv/vz home");
    EXPECT_STREQ(get_standard_directory(VZ_DIR_SETTINGS), "/srv/vz home/Settings");
    const char* logs = get_standard_directory(VZ_DIR_LOGS);
    EXPECT_STREQ(logs, "/srv/vz home/Logs");
    for (uint32_t other : {0u, 1u, 71u, 72u, 74u, 0xFFFFFFFFu})
        EXPECT_STREQ(get_standard_directory(other), " ") << other;
    EXPECT_EQ(get_standard_directory(VZ_DIR_SETTINGS), logs);  // one static buffer

    const std::string out = take();
    EXPECT_TRUE(has(out, " TRACE: get_home_directory() is returning: /srv/vz home\n")) << out;
    EXPECT_TRUE(has(out, " TRACE: get_standard_directory(70) is returning: /srv/vz home/Settings\n")) << out;
    EXPECT_TRUE(has(out, " TRACE: get_standard_directory(0) is returning:  \n")) << out;
}

TEST_F(PathsTest, EmptyHomeVariableCountsAndSettingsStartsWithTheSeparator)
{
    setenv("VZ_HOME_DIR", "", 1);
    EXPECT_STREQ(get_home_directory(), "");
    EXPECT_STREQ(get_standard_directory(VZ_DIR_SETTINGS), "/Settings");
    EXPECT_STREQ(get_standard_directory(VZ_DIR_LOGS), "/Logs");
}

TEST_F(PathsTest, TooLongHomeVariableMovesOnToTheNextSource)
{
    unsetenv("VZ_HOME_DIR");
    const std::string fallback = get_home_directory();
    EXPECT_FALSE(fallback.empty());
    if (access("/etc/" VZ_HOME_CONFIG_FILE, R_OK) != 0) {
        EXPECT_EQ(fallback, VZ_DEFAULT_HOME_DIR);
        EXPECT_TRUE(has(take(), "get_home_directory() is returning utils hardwired DEFAULT: " VZ_DEFAULT_HOME_DIR "\n"));
    }

    // 1022 characters and the NUL fit below 1024; one more does not.
    std::string fits(1022, 'f');
    fits[0] = '/';
    setenv("VZ_HOME_DIR", fits.c_str(), 1);
    EXPECT_EQ(std::string(get_home_directory()), fits);
    for (size_t length : {1023u, 1024u, 5000u}) {
        std::string tooLong(length, 'l');
        tooLong[0] = '/';
        setenv("VZ_HOME_DIR", tooLong.c_str(), 1);
        EXPECT_EQ(std::string(get_home_directory()), fallback) << length;
    }
}

TEST_F(PathsTest, PerCentSignsInThePathPrintAsTheyAre)
{
    setenv("VZ_HOME_DIR", "/data/100%s%d", 1);
    EXPECT_STREQ(get_standard_directory(VZ_DIR_SETTINGS), "/data/100%s%d/Settings");
    const std::string out = take();
    EXPECT_TRUE(has(out, "get_home_directory() is returning: /data/100%s%d\n")) << out;
    EXPECT_TRUE(has(out, "get_standard_directory(70) is returning: /data/100%s%d/Settings\n")) << out;
}

TEST_F(PathsTest, LookupsAreSilentAtTheDefaultThreshold)
{
    lib_log_channel().level = LOG_INFO;
    setenv("VZ_HOME_DIR", "/quiet", 1);
    get_standard_directory(VZ_DIR_SETTINGS);
    unsetenv("VZ_HOME_DIR");
    get_standard_directory(VZ_DIR_LOGS);
    EXPECT_EQ(take(), "");
}

TEST_F(PathsTest, EnvironmentReadKeepsTheSizeLimit)
{
    unsetenv("VZ_HOME_DIR");
    EXPECT_EQ(read_registry_environment("VZ_HOME_DIR", true), nullptr);
    EXPECT_EQ(read_registry_environment(nullptr, false), nullptr);
    setenv("VZ_HOME_DIR", "/one", 1);
    const char* first = read_registry_environment("VZ_HOME_DIR", true);
    ASSERT_NE(first, nullptr);
    EXPECT_STREQ(first, "/one");
    setenv("VZ_HOME_DIR", "/two", 1);
    EXPECT_EQ(read_registry_environment("VZ_HOME_DIR", false), first);  // same buffer, new value
    EXPECT_STREQ(first, "/two");
    setenv("VZ_HOME_DIR", std::string(1023, 'x').c_str(), 1);
    EXPECT_EQ(read_registry_environment("VZ_HOME_DIR", true), nullptr);
}

// A configuration file in a temporary place, removed at the end.
class ConfigFileTest : public PathsTest {
protected:
    void SetUp() override
    {
        PathsTest::SetUp();
        char name[] = "/tmp/vzconfXXXXXX";
        const int fd = mkstemp(name);
        ASSERT_GE(fd, 0);
        close(fd);
        path = name;
    }
    void TearDown() override
    {
        std::remove(path.c_str());
        PathsTest::TearDown();
    }
    void write(const char* text)
    {
        FILE* f = std::fopen(path.c_str(), "w");
        ASSERT_NE(f, nullptr);
        std::fputs(text, f);
        std::fclose(f);
    }
    std::string read(const char* name)
    {
        char* value = read_registry_string(path.c_str(), name);
        if (!value)
            return "<null>";
        std::string copy = value;
        vz_free(value, __FILE__, __LINE__);
        return copy;
    }
    std::string path;
};

TEST_F(ConfigFileTest, ValuesAreFoundByWholeNameFirstLineWins)
{
    write("# ProgramFilesDir=/commented\n"
          "ProgramFilesDirX=/longer name\n"
          "ProgramFilesDir=/srv/apps\r\n"
          "ProgramFilesDir=/second\n"
          "Empty=\n"
          "no equals sign here\n"
          "Last=/no/newline");
    EXPECT_EQ(read("ProgramFilesDir"), "/srv/apps");
    EXPECT_EQ(read("ProgramFilesDirX"), "/longer name");
    EXPECT_EQ(read("Empty"), "");
    EXPECT_EQ(read("Last"), "/no/newline");
    EXPECT_EQ(read("Missing"), "<null>");
    EXPECT_EQ(read(""), "<null>");
    EXPECT_EQ(read_registry_string("/nonexistent/dir/file.conf", "ProgramFilesDir"), nullptr);
    EXPECT_EQ(read_registry_string(nullptr, "ProgramFilesDir"), nullptr);
}

}  // namespace
