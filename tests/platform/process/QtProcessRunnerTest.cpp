// Real child processes: what reaches them, what comes back, and that nothing of them is left.

#include "platform/process/QtProcessRunner.h"

#include "tests/support/EventLoop.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <csignal>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>

namespace quillet {
namespace {

using End = std::expected<ProcessEnd, ProcessStartError>;

/// One that has ended may still be waiting for its parent to hear of it.
bool runs(pid_t pid)
{
    std::string state;
    std::getline(std::ifstream("/proc/" + std::to_string(pid) + "/stat"), state);
    return !state.empty() && !state.contains(") Z ");
}

struct QtProcessRunnerTest : testing::Test {
    EventLoop loop;
    TemporaryFolder folder;
    QtProcessRunner runner;

    static ProcessRequest shell(const std::string& script, std::vector<std::string> arguments = {})
    {
        arguments.insert(arguments.begin(), { "-c", script, "script" });
        return { "/bin/sh", arguments, "/" };
    }

    End run(const ProcessRequest& request, const std::function<void(std::string_view)>& listen = {})
    {
        std::optional<End> result;
        const auto child = runner.run(request, { {}, listen, [&result](End end) { result = std::move(end); } });
        EXPECT_FALSE(result) << "answered inside the call";
        EXPECT_TRUE(loop.runUntil([&] { return result.has_value(); }));
        return result.value_or(End(std::unexpected(ProcessStartError{ "no answer" })));
    }
};

TEST_F(QtProcessRunnerTest, ArgumentsArriveLetterByLetter)
{
    const std::vector<std::string> nasty{ "",   "a b", "$HOME",    "`id`",   "\"'\\",           "-x",
                                          "--", "*;",  "one\ntwo", "%(id)s", "\xF0\x9F\x8E\xB8" };
    const End end = run(shell(R"(pwd; for word; do printf '<%s>' "$word"; done)", nasty));
    ASSERT_TRUE(end);
    std::string expected = "/\n";
    for (const std::string& word : nasty)
        expected += "<" + word + ">";
    EXPECT_EQ(end->standardOutput, expected);
    EXPECT_EQ(end->status, 0);
}

TEST_F(QtProcessRunnerTest, BothPipesAreDrainedWhileItRuns)
{
    std::string asTheyCame;
    const End end = run(shell("head -c 1000000 /dev/zero; head -c 1000000 /dev/zero >&2; printf last >&2; exit 3"),
                        [&](std::string_view piece) { asTheyCame += piece; });
    ASSERT_TRUE(end);
    EXPECT_EQ(end->standardOutput.size(), 1000000);
    EXPECT_EQ(asTheyCame.size(), 1000004);
    EXPECT_EQ(end->standardError, "");
    EXPECT_EQ(end->status, 3);
}

TEST_F(QtProcessRunnerTest, WhatCannotStartOrIsKilledIsSaid)
{
    std::ofstream(folder / "text") << "no program";
    for (const FilePath& program : { folder / "missing", folder / "text", folder.path() }) {
        const End end = run({ program, {}, "/" });
        ASSERT_FALSE(end) << program;
        EXPECT_FALSE(end.error().description.empty());
    }
    const End killed = run(shell("kill -TERM $$"));
    ASSERT_TRUE(killed);
    EXPECT_EQ(killed->status, SIGTERM);
}

TEST_F(QtProcessRunnerTest, AnAnswerMayStartTheNextAndChildrenRunSideBySide)
{
    std::string order;
    std::unique_ptr<RunningProcess> second;
    const auto slow = runner.run(shell("exec sleep 60"), { {}, {}, [&](const End&) { order += "slow "; } });
    const auto first =
        runner.run(shell("true"), { {}, {}, [&](const End&) {
                                       order += "first ";
                                       second = runner.run(shell("true"), { {}, {}, [&](const End&) { order += "second "; } });
                                   } });
    EXPECT_TRUE(loop.runUntil([&] { return order.ends_with("second "); }));
    EXPECT_EQ(order, "first second ");
}

TEST_F(QtProcessRunnerTest, EverythingThatAChildHasStartedEndsWithIt)
{
    using Child = std::unique_ptr<RunningProcess>;
    std::unique_ptr<QtProcessRunner> ending;
    struct Case {
        const char* name;
        std::function<void(Child& child, pid_t leader)> end;
        bool isAnswered;
    };
    for (const Case& test : {
             Case{ "nobody wants it", [](Child& child, pid_t) { child.reset(); }, false },
             Case{ "the program ends", [&](Child&, pid_t) { ending.reset(); }, false },
             Case{ "killed from outside", [](Child&, pid_t leader) { kill(leader, SIGKILL); }, true },
         }) {
        const FilePath pids = folder / test.name;
        bool isAnswered = false;
        ending = std::make_unique<QtProcessRunner>();
        // A child of the child, deaf to polite requests, goes on as long as the folder is there.
        Child child = ending->run(
            shell(
                R"(echo $$ > "$1"; sh -c 'trap "" TERM HUP; echo $$ >> "$1"; while [ -e "$1" ]; do sleep 0.05; done' inner "$1" & wait)",
                { pids.native() }),
            { {}, {}, [&](const End&) { isAnswered = true; } });
        std::vector<pid_t> running;
        ASSERT_TRUE(loop.runUntil([&] {
            std::ifstream file(pids);
            running.assign(std::istream_iterator<pid_t>(file), {});
            return running.size() == 2;
        }));
        test.end(child, running.front());
        for (const pid_t pid : running)
            EXPECT_TRUE(loop.runUntil([pid] { return !runs(pid); })) << test.name << ": still there: " << pid;
        EXPECT_TRUE(loop.runUntil([&] { return isAnswered == test.isAnswered; })) << test.name;
    }
}

TEST_F(QtProcessRunnerTest, AHandlerMayEndItsChild)
{
    std::unique_ptr<RunningProcess> loud;
    pid_t pid = 0;
    int calls = 0;
    const auto end = [&](std::string_view piece) {
        ++calls;
        pid = std::stoi(std::string(piece));
        loud.reset();
    };
    loud = runner.run(shell("echo $$; while echo more; do :; done"), { end, {}, [&](const End&) { ++calls; } });
    EXPECT_TRUE(loop.runUntil([&] { return pid != 0 && !runs(pid); }));
    EXPECT_EQ(calls, 1);
}

}  // namespace
}  // namespace quillet
