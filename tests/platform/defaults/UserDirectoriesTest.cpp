#include "platform/files/UserDirectories.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace quillet {
namespace {

TEST(UserDirectories, SettingsLieWhereTheEnvironmentSays)
{
    const char* cases[][3] = {
        { "/conf", "/home/ann", "/conf/quillet" },
        { "", "/home/ann", "/home/ann/.config/quillet" },
        { "conf", "/home/\xE9", "/home/\xE9/.config/quillet" },
    };
    for (const auto& [configHome, home, expected] : cases) {
        setenv("XDG_CONFIG_HOME", configHome, 1);
        setenv("HOME", home, 1);
        EXPECT_EQ(configDirectory(), expected);
    }
    unsetenv("XDG_CONFIG_HOME");
    unsetenv("HOME");
    EXPECT_TRUE(configDirectory().is_absolute());
}

}  // namespace
}  // namespace quillet
