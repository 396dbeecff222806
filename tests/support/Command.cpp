#include "tests/support/Command.h"

#include "platform/base/Require.h"

#include <cerrno>

#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quillet {
namespace {

/// A file in memory: a child never waits for somebody to read.
int scratch() { return memfd_create("output", MFD_CLOEXEC); }

std::string takeAll(int descriptor)
{
    std::string bytes(static_cast<std::size_t>(lseek(descriptor, 0, SEEK_END)), '\0');
    REQUIRE(pread(descriptor, bytes.data(), bytes.size(), 0) == std::ssize(bytes));
    close(descriptor);
    return bytes;
}

}  // namespace

CommandResult runCommand(const std::vector<std::string>& arguments)
{
    REQUIRE(!arguments.empty());
    std::vector<char*> words;
    for (const std::string& argument : arguments)
        words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);

    const int output = scratch();
    const int errors = scratch();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors, STDERR_FILENO);
    pid_t child = 0;
    const int failure = posix_spawnp(&child, words[0], &actions, nullptr, words.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    while (failure == 0 && waitpid(child, &status, 0) < 0 && errno == EINTR) { }
    const int exit = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return { failure == 0 ? exit : 127, takeAll(output), takeAll(errors) };
}

}  // namespace quillet
