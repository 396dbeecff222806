#include "platform/files/UserDirectories.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace quillet {
namespace {

TEST(UserDirectories, SettingsLieWhereTheEnvironmentSays)
{
    struct Case {
        const char* configHome;
        const char* home;
        const char* expected;
    };
    const Case cases[] = {
        { "/conf", "/home/ann", "/conf/quillet" },
        { "", "/home/ann", "/home/ann/.config/quillet" },
        { "conf", "/home/ann", "/home/ann/.config/quillet" },
        { "", "/home/\xE9", "/home/\xE9/.config/quillet" },
    };
    for (const Case& c : cases) {
        setenv("XDG_CONFIG_HOME", c.configHome, 1);
        setenv("HOME", c.home, 1);
        EXPECT_EQ(configDirectory(), c.expected);
    }
    unsetenv("XDG_CONFIG_HOME");
    unsetenv("HOME");
    EXPECT_TRUE(configDirectory().is_absolute());
}

}  // namespace
}  // namespace quillet
