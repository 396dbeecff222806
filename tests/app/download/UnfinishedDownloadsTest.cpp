// Which hidden folders are removed, on real folders with real locks.

#include "app/download/UnfinishedDownloads.h"

#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <thread>

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
    for (const char* name : { "quillet-0123456789ab", ".quillet-0123456789a", ".quillet-0123456789abc", ".quillet-0123456789AB",
                              ".quillet-", "song.m4a", "elsewhere" })
        make(name);
    std::filesystem::create_directory_symlink(folder / "elsewhere", folder / ".quillet-00000000000a");
    std::ofstream(folder / ".quillet-00000000000b") << "a file";
    std::filesystem::create_directory_symlink(folder / "elsewhere", old / "way out");
    const FilePath touched = make(".quillet-00000000000c") / "parts" / "song.part";
    std::filesystem::last_write_time(touched, std::filesystem::file_time_type::clock::now() + 2 * 24h);
    const int used = lock(make(".quillet-00000000000d"));
    const auto names = [this] {
        std::vector<std::string> found;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path()))
            found.push_back(entry.path().native());
        std::ranges::sort(found);
        return found;
    };

    auto left = names();
    downloads.sweep(inEightDays - 2 * 24h);
    EXPECT_EQ(names(), left);
    std::erase_if(left, [&](const std::string& name) { return name == old || name.starts_with((old / "").native()); });
    downloads.sweep(inEightDays);
    EXPECT_EQ(names(), left);
    ::close(used);
}

TEST_F(UnfinishedDownloadsTest, WhatIsDiscardedIsThatAddressOnceItIsLetGo)
{
    const FilePath its = make(".quillet-f0494a592230");
    const FilePath others = make(".quillet-00000000000a");
    const int ending = lock(its);
    std::thread discarding([this] { downloads.discard(*WebAddress::parse("https://example.com/a.mp3")); });
    ::close(ending);
    discarding.join();
    EXPECT_FALSE(std::filesystem::exists(its));
    EXPECT_TRUE(std::filesystem::exists(others));
}

}  // namespace
}  // namespace quillet
