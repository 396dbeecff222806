#include "platform/files/UserDirectories.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>

namespace quillet {
namespace {

/// A variable of the environment that is set (or unset) for the length of a test.
class Variable {
public:
    Variable(const char* name, const char* value)
        : m_name(name)
    {
        if (const char* before = std::getenv(name))
            m_before = before;
        set(value);
    }
    ~Variable() { set(m_before ? m_before->c_str() : nullptr); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    void set(const char* value) const { value != nullptr ? setenv(m_name, value, 1) : unsetenv(m_name); }

    const char* m_name;
    std::optional<std::string> m_before;
};

TEST(UserDirectories, SettingsLieWhereTheEnvironmentSays)
{
    struct Case {
        const char* configHome;
        const char* home;
        const char* expected;
    };
    const Case cases[] = {
        { "/conf", "/home/ann", "/conf/quillet" },
        { nullptr, "/home/ann", "/home/ann/.config/quillet" },
        { "", "/home/ann", "/home/ann/.config/quillet" },
        { "conf", "/home/ann", "/home/ann/.config/quillet" },
        { nullptr, "/home/\xE9", "/home/\xE9/.config/quillet" },
    };
    for (const Case& c : cases) {
        const Variable configHome("XDG_CONFIG_HOME", c.configHome);
        const Variable home("HOME", c.home);
        EXPECT_EQ(configDirectory(), c.expected);
    }
    const Variable configHome("XDG_CONFIG_HOME", nullptr);
    const Variable home("HOME", nullptr);
    EXPECT_TRUE(configDirectory().is_absolute());
}

}  // namespace
}  // namespace quillet
