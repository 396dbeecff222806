// Several processes over one file, and one that is killed while it writes.
#include "platform/defaults/SqliteDefaultsDomain.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <fstream>
#include <string>

namespace quillet {
namespace {

/// A process that writes numbered values and tells of each that is stored.
class Writer {
public:
    Writer(const FilePath& file, const std::string& name, int count)
    {
        std::array<int, 2> pipe{};
        REQUIRE(pipe2(pipe.data(), O_CLOEXEC) == 0);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, pipe[1], STDOUT_FILENO);
        std::string words[] = { QUILLET_DEFAULTS_WRITER, file.native(), name, std::to_string(count) };
        char* arguments[] = { words[0].data(), words[1].data(), words[2].data(), words[3].data(), nullptr };
        REQUIRE(posix_spawn(&m_process, arguments[0], &actions, nullptr, arguments, environ) == 0);
        posix_spawn_file_actions_destroy(&actions);
        close(pipe[1]);
        m_told = fdopen(pipe[0], "r");
    }
    ~Writer()
    {
        kill();
        finish();
        std::fclose(m_told);
    }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    /// How many values are stored; waits until they are `enough`, or until the process has ended.
    int stored(int enough)
    {
        char line[32];
        while (m_stored < enough && std::fgets(line, sizeof line, m_told) != nullptr)
            ++m_stored;
        return m_stored;
    }
    void kill()
    {
        if (m_process != 0)
            ::kill(m_process, SIGKILL);
    }
    /// Waits for the process's end; its status as waitpid has it.
    int finish()
    {
        int status = 0;
        if (m_process != 0)
            waitpid(m_process, &status, 0);
        m_process = 0;
        return status;
    }

private:
    pid_t m_process = 0;
    std::FILE* m_told = nullptr;
    int m_stored = 0;
};

void expectStored(const DefaultsDomain& domain, const std::string& name, int count)
{
    for (int i = 0; i < count; ++i)
        ASSERT_EQ(domain.integer(name + '.' + std::to_string(i)), i) << name << " of " << count;
}

TEST(DefaultsProcesses, TwoWriteAtOnceFromTheFirstMomentOn)
{
    constexpr int count = 300;
    for (const bool damaged : { false, true }) {
        for (int round = 0; round < 10; ++round) {
            SCOPED_TRACE(testing::Message() << (damaged ? "damaged file" : "no file") << ", round " << round);
            const TemporaryFolder folder;
            const FilePath file = folder / "quillet/defaults.sqlite";
            if (damaged) {
                std::filesystem::create_directories(file.parent_path());
                std::ofstream(file) << "no database at all";
            }
            Writer first(file, "first", count);
            Writer second(file, "second", count);
            SqliteDefaultsDomain domain(file);
            domain.setInteger("third", 3);
            EXPECT_EQ(first.stored(count), count);
            EXPECT_EQ(second.stored(count), count);
            EXPECT_EQ(first.finish(), 0);
            EXPECT_EQ(second.finish(), 0);
            expectStored(domain, "first", count);
            expectStored(domain, "second", count);
            EXPECT_EQ(domain.integer("third"), 3);
        }
    }
}

TEST(DefaultsProcesses, WhatWasStoredOutlivesAKill)
{
    const TemporaryFolder folder;
    const FilePath file = folder / "defaults.sqlite";
    for (int round = 0; round < 30; ++round) {
        const std::string name = "round " + std::to_string(round);
        Writer writer(file, name, 0);
        writer.stored(1 + 37 * round % 200);
        writer.kill();
        EXPECT_TRUE(WIFSIGNALED(writer.finish()));
        const int stored = writer.stored(1 << 30);
        const SqliteDefaultsDomain domain(file);
        expectStored(domain, name, stored);
        expectStored(domain, "round 0", 1);
    }
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

}  // namespace
}  // namespace quillet
