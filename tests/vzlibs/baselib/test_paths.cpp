// Home and standard directories, and the machine settings they come from.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <optional>
#include <string>

#include "tests/vzlibs/baselib/test_support.h"
#include "vzlibs/baselib/paths.h"
#include "vzlibs/baselib/registry.h"

namespace {

// VZ_HOME_DIR is put back at the end; the lookups log at TRACE, which the capture shows.
class PathsTest : public ::testing::Test {
protected:
    ~PathsTest() override { saved ? setenv("VZ_HOME_DIR", saved->c_str(), 1) : unsetenv("VZ_HOME_DIR"); }
    const std::optional<std::string> saved =
        std::getenv("VZ_HOME_DIR") ? std::optional<std::string>(std::getenv("VZ_HOME_DIR")) : std::nullopt;
    LogCapture log{LOG_TRACE};
};

TEST_F(PathsTest, HomeVariableGivesTheStandardDirectoriesAndIsLoggedAsItIs)
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
}

TEST_F(PathsTest, TooLongHomeVariableMovesOnToTheNextSource)
{
    unsetenv("VZ_HOME_DIR");
    const std::string fallback = get_home_directory();
    if (access("/etc/" VZ_HOME_CONFIG_FILE, R_OK) != 0) {
        EXPECT_EQ(fallback, VZ_DEFAULT_HOME_DIR);
        EXPECT_EQ(log.untimed(), "(VZ LIB) TRACE: get_home_directory() is returning utils hardwired DEFAULT: "
                                 VZ_DEFAULT_HOME_DIR "\n");
    }
    // 1022 characters and the NUL fit below 1024; one more does not.
    const std::string path = "/" + std::string(1021, 'p');
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
