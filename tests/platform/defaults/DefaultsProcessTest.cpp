// Several processes over one file, and one that is killed while it writes.
#include "platform/defaults/SqliteDefaultsDomain.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <climits>
#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <fstream>
#include <memory>
#include <string>

namespace quillet {
namespace {

/// A process that writes numbered values and tells of each that is stored.
struct Writer {
    /// How many more values are stored: up to `most`, or until the process has ended.
    [[nodiscard]] int stored(int most) const
    {
        int count = 0;
        while (count < most && std::fgetc(told.get()) != EOF)
            ++count;
        return count;
    }
    /// The status with which it ends.
    [[nodiscard]] int end() const
    {
        int status = 0;
        waitpid(process, &status, 0);
        return status;
    }

    pid_t process = 0;
    std::unique_ptr<std::FILE, decltype([](std::FILE* file) { std::fclose(file); })> told;
};

Writer startWriter(const FilePath& file, const std::string& name, int count)
{
    std::array<int, 2> pipe{};
    REQUIRE(pipe2(pipe.data(), O_CLOEXEC) == 0);
    const pid_t process = fork();
    if (process == 0) {
        auto domain = std::make_unique<SqliteDefaultsDomain>(file);
        for (int i = 0; i < count; ++i) {
            domain->setInteger(name + std::to_string(i), i);
            REQUIRE(write(pipe[1], "", 1) == 1);
        }
        domain.reset();
        _exit(0);
    }
    close(pipe[1]);
    return { process, { fdopen(pipe[0], "r"), {} } };
}

void expectStored(const DefaultsDomain& domain, const std::string& name, int count)
{
    for (int i = 0; i < count; ++i)
        ASSERT_EQ(domain.integer(name + std::to_string(i)), i) << name << " of " << count;
}

TEST(DefaultsProcesses, TwoWriteAtOnceFromTheFirstMomentOn)
{
    constexpr int count = 300;
    for (int round = 0; round < 20; ++round) {
        SCOPED_TRACE(round);
        const TemporaryFolder folder;
        const FilePath file = folder / "defaults.sqlite";
        if (round % 2 != 0)
            std::ofstream(file) << "no database at all";
        const Writer first = startWriter(file, "first", count);
        const Writer second = startWriter(file, "second", count);
        SqliteDefaultsDomain domain(file);
        domain.setInteger("third", 3);
        EXPECT_EQ(first.end(), 0);
        EXPECT_EQ(second.end(), 0);
        expectStored(domain, "first", count);
        expectStored(domain, "second", count);
        EXPECT_EQ(domain.integer("third"), 3);
    }
}

TEST(DefaultsProcesses, WhatWasStoredOutlivesAKill)
{
    const TemporaryFolder folder;
    const FilePath file = folder / "defaults.sqlite";
    for (int round = 0; round < 30; ++round) {
        const std::string name = "round " + std::to_string(round) + '.';
        const Writer writer = startWriter(file, name, INT_MAX);
        const int atFirst = writer.stored(1 + 37 * round % 200);
        kill(writer.process, SIGKILL);
        EXPECT_TRUE(WIFSIGNALED(writer.end()));
        const SqliteDefaultsDomain domain(file);
        expectStored(domain, name, atFirst + writer.stored(INT_MAX));
        expectStored(domain, "round 0.", 1);
    }
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

}  // namespace
}  // namespace quillet
