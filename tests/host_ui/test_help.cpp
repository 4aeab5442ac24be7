// The help page opens through the desktop's opener, which the host never has
// to reap; a missing page is refused and remembered.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

#include "host/Help.h"

namespace {

TEST(Help, OpensThePageThroughTheOpenerAndLeavesNoChild)
{
    char made[] = "/tmp/lumenveil-help-XXXXXX";
    ASSERT_NE(mkdtemp(made), nullptr);
    const std::string dir = made, page = dir + "/page.html", opened = dir + "/opened";
    std::ofstream(page) << "<html></html>";
    std::ofstream(dir + "/xdg-open") << "#!/bin/sh\necho \"$1\" > \"$(dirname \"$0\")/opened.part\"\n"
                                        "mv \"$(dirname \"$0\")/opened.part\" \"$(dirname \"$0\")/opened\"\n";
    std::filesystem::permissions(dir + "/xdg-open", std::filesystem::perms::owner_all);
    const std::string path = std::getenv("PATH") ? std::getenv("PATH") : "";
    setenv("PATH", (dir + ":" + path).c_str(), 1);
    setenv("LUMENVEIL_HELP_PAGE", page.c_str(), 1);
    reset_help_state();

    EXPECT_EQ(html_help(nullptr, nullptr, 0, 0), 1);
    EXPECT_FALSE(help_load_failed());
    for (int i = 0; i < 500 && !std::filesystem::exists(opened); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    std::string text;
    std::getline(std::ifstream(opened), text);
    EXPECT_EQ(text, page);
    errno = 0;
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child of the host is left to reap";
    EXPECT_EQ(errno, ECHILD);
    setenv("LUMENVEIL_HELP_PAGE", (dir + "/missing.html").c_str(), 1);
    reset_help_state();
    EXPECT_EQ(html_help(nullptr, nullptr, 0, 0), 0);
    EXPECT_TRUE(help_load_failed());

    setenv("PATH", path.c_str(), 1);
    unsetenv("LUMENVEIL_HELP_PAGE");
    reset_help_state();
    std::filesystem::remove_all(dir);
}

}  // namespace
