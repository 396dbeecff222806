#include "platform/files/FileExists.h"
#include "platform/files/SystemFileAttributes.h"
#include "platform/files/UserDirectories.h"
#include "tests/support/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <fstream>

namespace quillet {
namespace {

void setModificationTime(const FilePath& path, timespec time)
{
    const timespec times[] = { time, time };
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

TEST(Files, AreWhatThePathLeadsTo)
{
    const TemporaryFolder folder;
    const SystemFileAttributes files;
    std::ofstream(folder / "song").put('x');
    EXPECT_NEAR(files.attributes(folder / "song")->modificationDate, currentDate(), 60);
    std::filesystem::resize_file(folder / "song", 5'000'000'000);
    setModificationTime(folder / "song", { 978'307'200 + 3600, 250'000'000 });
    std::filesystem::create_symlink("song", folder / "link");
    for (const char* name : { "song", "link" }) {
        const auto attributes = files.attributes(folder / name);
        ASSERT_TRUE(attributes) << name;
        EXPECT_EQ(attributes->sizeBytes, 5'000'000'000) << name;
        EXPECT_DOUBLE_EQ(attributes->modificationDate, 3600.25) << name;
    }
    setModificationTime(folder / "song", { 978'307'200 - 2, 500'000'000 });
    EXPECT_DOUBLE_EQ(files.attributes(folder / "song")->modificationDate, -1.5);

    // Nobody writes to the pipe: opening it would wait for ever.
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    std::ofstream(folder / "\xE9").put('x');
    std::filesystem::create_symlink("nowhere", folder / "broken");
    std::filesystem::create_symlink("circle", folder / "circle");
    for (const char* name : { "song", "link", "pipe", "\xE9", "." })
        EXPECT_TRUE(files.attributes(folder / name) && fileExists(folder / name)) << name;
    for (const char* name : { "missing", "broken", "circle", "song/x" })
        EXPECT_FALSE(files.attributes(folder / name) || fileExists(folder / name)) << name;
    EXPECT_FALSE(fileExists(FilePath()));
}

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
