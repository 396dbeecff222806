#include "tests/support/Command.h"

#include "platform/base/Require.h"

#include <array>
#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quillet {
namespace {

/// Reads both pipes until both have ended; a child never waits for a full pipe.
void drain(std::array<pollfd, 2> pipes, CommandResult& result)
{
    while (pipes[0].fd >= 0 || pipes[1].fd >= 0) {
        if (poll(pipes.data(), pipes.size(), -1) < 0)
            continue;
        for (std::size_t i = 0; i < pipes.size(); ++i) {
            if (pipes[i].fd < 0 || pipes[i].revents == 0)
                continue;
            std::array<char, 65536> bytes;
            const ssize_t count = read(pipes[i].fd, bytes.data(), bytes.size());
            if (count > 0)
                (i == 0 ? result.output : result.errorOutput).append(bytes.data(), static_cast<std::size_t>(count));
            else if (count == 0 || errno != EINTR)
                close(std::exchange(pipes[i].fd, -1));
        }
    }
}

}  // namespace

CommandResult runCommand(const std::vector<std::string>& arguments)
{
    REQUIRE(!arguments.empty());
    std::vector<char*> words;
    for (const std::string& argument : arguments)
        words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);

    std::array<int, 2> output{};
    std::array<int, 2> errors{};
    REQUIRE(pipe2(output.data(), O_CLOEXEC) == 0 && pipe2(errors.data(), O_CLOEXEC) == 0);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors[1], STDERR_FILENO);
    pid_t child = 0;
    const int failure = posix_spawnp(&child, words[0], &actions, nullptr, words.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(output[1]);
    close(errors[1]);

    CommandResult result;
    drain({ pollfd{ output[0], POLLIN, 0 }, pollfd{ errors[0], POLLIN, 0 } }, result);
    if (failure != 0) {
        result.status = 127;
        return result;
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) { }
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return result;
}

}  // namespace quillet
