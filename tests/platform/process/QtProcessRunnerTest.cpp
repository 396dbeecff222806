// Real child processes: what reaches them, what comes back, and that nothing of them is left.

#include "platform/process/QtProcessRunner.h"

#include "tests/support/EventLoop.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <csignal>
#include <fstream>
#include <optional>

namespace quillet {
namespace {

using End = std::expected<ProcessEnd, ProcessStartError>;

struct QtProcessRunnerTest : testing::Test {
    EventLoop loop;
    TemporaryFolder folder;
    QtProcessRunner runner;

    static ProcessRequest shell(const std::string& script, std::vector<std::string> arguments = {})
    {
        arguments.insert(arguments.begin(), { "-c", script, "script" });
        return { "/bin/sh", arguments, "/" };
    }

    End run(const ProcessRequest& request, std::string* errorsAsTheyCame = nullptr)
    {
        std::optional<End> result;
        const auto listen = [errorsAsTheyCame](std::string_view bytes) {
            if (errorsAsTheyCame != nullptr)
                *errorsAsTheyCame += bytes;
        };
        runner.run(request, { listen, [&result](End end) { result = std::move(end); } });
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
    const End end =
        run(shell("head -c 1000000 /dev/zero; head -c 1000000 /dev/zero >&2; printf last >&2; exit 3"), &asTheyCame);
    ASSERT_TRUE(end);
    EXPECT_EQ(end->standardOutput.size(), 1000000);
    EXPECT_EQ(end->standardError.size(), 1000004);
    EXPECT_EQ(asTheyCame, end->standardError);
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
    runner.run(shell("sleep 0.4"), { {}, [&](const End&) { order += "slow "; } });
    runner.run(shell("true"), { {}, [&](const End&) {
                                   order += "first ";
                                   runner.run(shell("true"), { {}, [&](const End&) { order += "second "; } });
                               } });
    EXPECT_TRUE(loop.runUntil([&] { return order.ends_with("slow "); }));
    EXPECT_EQ(order, "first second slow ");
}

TEST_F(QtProcessRunnerTest, EverythingThatWasStartedEndsWithTheRunner)
{
    const FilePath pids = folder / "pids";
    bool answered = false;
    // A child of the child, deaf to polite requests, writes on for ever.
    runner.run(
        shell(R"(sh -c 'trap "" TERM HUP; echo $$ >> "$1"; while :; do sleep 0.05; done' inner "$1" & echo $$ >> "$1"; wait)",
              { pids.native() }),
        { {}, [&](const End&) { answered = true; } });
    std::vector<pid_t> running;
    ASSERT_TRUE(loop.runUntil([&] {
        std::ifstream file(pids);
        running.assign(std::istream_iterator<pid_t>(file), {});
        return running.size() == 2;
    }));
    runner.endAll();
    for (const pid_t pid : running)
        EXPECT_TRUE(loop.runUntil([pid] { return kill(pid, 0) != 0; })) << "still there: " << pid;
    EXPECT_FALSE(answered);
}

}  // namespace
}  // namespace quillet
