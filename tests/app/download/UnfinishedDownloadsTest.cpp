// Which hidden folders are removed, on real folders with real locks.

#include "app/download/UnfinishedDownloads.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <fstream>
#include <thread>
#include <vector>

namespace quillet {
namespace {

using namespace std::chrono_literals;

struct UnfinishedDownloadsTest : testing::Test {
    TemporaryFolder folder;
    const UnfinishedDownloads downloads{ folder.path() };
    const std::chrono::system_clock::time_point inEightDays = std::chrono::system_clock::now() + 8 * 24h;

    FilePath make(const char* name) const
    {
        std::filesystem::create_directories(folder / name / "parts");
        std::ofstream(folder / name / "parts" / "song.part") << "half";
        return folder / name;
    }

    /// As a download that uses it.
    static int lock(const FilePath& directory)
    {
        const int descriptor = ::open(directory.c_str(), O_RDONLY | O_CLOEXEC);
        EXPECT_EQ(::flock(descriptor, LOCK_EX), 0);
        return descriptor;
    }
};

TEST_F(UnfinishedDownloadsTest, OnlyWhatIsOldAndOursIsSwept)
{
    const FilePath old = make(".quillet-0123456789ab");
    std::vector<FilePath> kept;
    for (const char* name : { "quillet-0123456789ab", ".quillet-0123456789a", ".quillet-0123456789abc", ".quillet-0123456789AB",
                              "song.m4a", ".quillet-00000000000c", ".quillet-00000000000d" })
        kept.push_back(make(name) / "parts" / "song.part");
    for (const FilePath& link : { folder / ".quillet-00000000000a", old / "way out" })
        std::filesystem::create_directory_symlink(folder / "song.m4a", link);
    std::filesystem::last_write_time(kept[5], std::filesystem::file_time_type::clock::now() + 2 * 24h);
    const int used = lock(folder / ".quillet-00000000000d");

    downloads.sweep(inEightDays - 2 * 24h);
    EXPECT_TRUE(std::filesystem::exists(old));
    downloads.sweep(inEightDays);
    EXPECT_FALSE(std::filesystem::exists(old));
    for (const FilePath& file : kept)
        EXPECT_TRUE(std::filesystem::exists(file)) << file;
    EXPECT_TRUE(std::filesystem::is_symlink(folder / ".quillet-00000000000a"));
    ::close(used);
}

TEST_F(UnfinishedDownloadsTest, WhatIsDiscardedIsThatAddressOnceItIsLetGo)
{
    const FilePath its = make(".quillet-f0494a592230");
    const FilePath others = make(".quillet-00000000000a");
    const int ending = lock(its);
    // It has looked at the folder once and let it be.
    const int attempts = ::inotify_init1(IN_CLOEXEC);
    ASSERT_GE(::inotify_add_watch(attempts, its.c_str(), IN_CLOSE_NOWRITE), 0);
    std::thread discarding([this] { downloads.discard(*WebAddress::parse("https://example.com/a.mp3")); });
    inotify_event attempt{};
    EXPECT_GT(::read(attempts, &attempt, sizeof attempt), 0);
    EXPECT_TRUE(std::filesystem::exists(its));
    ::close(ending);
    discarding.join();
    EXPECT_FALSE(std::filesystem::exists(its));
    EXPECT_TRUE(std::filesystem::exists(others));
    ::close(attempts);
}

}  // namespace
}  // namespace quillet
