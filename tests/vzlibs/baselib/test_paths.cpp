// Home and standard directories, and the machine settings they come from.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <string>

#include "tests/vzlibs/baselib/log_capture.h"
#include "vzlibs/baselib/heap.h"
#include "vzlibs/baselib/paths.h"
#include "vzlibs/baselib/registry.h"

namespace {

using ::testing::HasSubstr;

// VZ_HOME_DIR is process-wide: each test gets it back at its end. The lookups
// log at TRACE, which the captured log shows.
class PathsTest : public ::testing::Test {
protected:
    void TearDown() override { saved ? setenv("VZ_HOME_DIR", saved->c_str(), 1) : unsetenv("VZ_HOME_DIR"); }
    const std::optional<std::string> saved =
        std::getenv("VZ_HOME_DIR") ? std::optional<std::string>(std::getenv("VZ_HOME_DIR")) : std::nullopt;
    LogCapture log{LOG_TRACE};
};

TEST_F(PathsTest, HomeVariableGivesTheStandardDirectoriesAndIsLoggedAsItIs)
{
    setenv("VZ_HOME_DIR", "/srv/100%s home", 1);
    EXPECT_STREQ(get_standard_directory(VZ_DIR_HOME), "/srv/100%s home");
    EXPECT_STREQ(get_standard_directory(VZ_DIR_SETTINGS), "/srv/100%s home/Settings");
    EXPECT_STREQ(get_standard_directory(VZ_DIR_LOGS), "/srv/100%s home/Logs");
    EXPECT_STREQ(get_standard_directory(0), " ");
    const std::string out = log.take();
    EXPECT_THAT(out, HasSubstr(" TRACE: get_home_directory() is returning: /srv/100%s home\n"));
    EXPECT_THAT(out, HasSubstr(" TRACE: get_standard_directory(70) is returning: /srv/100%s home/Settings\n"));

    setenv("VZ_HOME_DIR", "", 1);  // empty still counts
    EXPECT_STREQ(get_standard_directory(VZ_DIR_SETTINGS), "/Settings");
}

TEST_F(PathsTest, TooLongHomeVariableMovesOnToTheNextSource)
{
    unsetenv("VZ_HOME_DIR");
    const std::string fallback = get_home_directory();
    if (access("/etc/" VZ_HOME_CONFIG_FILE, R_OK) != 0) {
        EXPECT_EQ(fallback, VZ_DEFAULT_HOME_DIR);
    }
    // 1022 characters and the NUL fit below 1024; one more does not.
    std::string path(1022, 'p');
    path[0] = '/';
    setenv("VZ_HOME_DIR", path.c_str(), 1);
    EXPECT_EQ(get_home_directory(), path);
    setenv("VZ_HOME_DIR", (path + "q").c_str(), 1);
    EXPECT_EQ(get_home_directory(), fallback);
}

TEST(ConfigFile, ValuesAreFoundByWholeNameAndTheFirstLineWins)
{
    const std::string path = ::testing::TempDir() + "vz_machine.conf";
    std::ofstream(path) << "# Dir=/commented\nDirX=/longer name\nDir=/srv/apps\r\nDir=/second\nEmpty=\nLast=/end";
    std::string found;
    for (const char* name : {"Dir", "DirX", "Empty", "Last", "Missing"}) {
        char* value = read_registry_string(path.c_str(), name);
        found += std::string(name) + "=" + (value ? value : "<null>") + ";";
        vz_free(value, __FILE__, __LINE__);
    }
    std::remove(path.c_str());
    EXPECT_EQ(found, "Dir=/srv/apps;DirX=/longer name;Empty=;Last=/end;Missing=<null>;");
    EXPECT_EQ(read_registry_string(path.c_str(), "Dir"), nullptr);  // no file
}

}  // namespace
