// What becomes of the file: kept between runs, for its owner alone, shared by processes, moved aside when it is damaged, and
// waited for while it cannot be written.
#include "platform/defaults/SqliteDefaultsDomain.h"

#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <linux/capability.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <functional>
#include <future>
#include <iterator>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace quillet {
namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;
using Trouble = DefaultsHealth::Trouble;
using std::chrono::milliseconds;

constexpr DefaultsRetryTimes anyLockIsTrouble{ milliseconds(1), milliseconds(1), milliseconds(0) };
constexpr DefaultsRetryTimes noLockIsTrouble{ milliseconds(1), milliseconds(1), std::chrono::hours(1) };

std::string contentOf(const FilePath& file)
{
    std::ifstream stream(file, std::ios::binary);
    return { std::istreambuf_iterator<char>(stream), {} };
}

mode_t modeOf(const FilePath& file) { return static_cast<mode_t>(std::filesystem::status(file).permissions()); }

/// Another program's connection to the file.
struct OtherProgram {
    explicit OtherProgram(const FilePath& file) { EXPECT_EQ(sqlite3_open(file.c_str(), &database), SQLITE_OK); }
    ~OtherProgram() { sqlite3_close(database); }
    OtherProgram(const OtherProgram&) = delete;
    OtherProgram& operator=(const OtherProgram&) = delete;
    void execute(const char* sql) const { EXPECT_EQ(sqlite3_exec(database, sql, nullptr, nullptr, nullptr), SQLITE_OK); }

    sqlite3* database = nullptr;
};

/// A database of some pages, closed in good order.
void makeDatabase(const FilePath& file)
{
    SqliteDefaultsDomain domain(file);
    for (int i = 0; i < 200; ++i)
        domain.setString("key " + std::to_string(i), std::string(500, 'x'));
}

/// Zeros from the second page on.
void zeroPages(const FilePath& file)
{
    std::filesystem::resize_file(file, 4096);
    std::filesystem::resize_file(file, 100'000);
}

/// What a domain reports. It must not be reported well twice.
struct Reports {
    explicit Reports(SqliteDefaultsDomain& domain)
    {
        domain.onHealthChange([this](const DefaultsHealth& now) {
            health.push_back(now);
            if (now.trouble == Trouble::none)
                well.set_value();
        });
    }
    void waitUntilWell() { well.get_future().wait(); }

    std::vector<DefaultsHealth> health;
    std::promise<void> well;
};

/// Root may write everywhere; from now on this thread, and those that it starts, may do no more than others.
void dropPrivileges()
{
    __user_cap_header_struct header{ _LINUX_CAPABILITY_VERSION_3, 0 };
    __user_cap_data_struct capabilities[2]{};
    REQUIRE(syscall(SYS_capget, &header, capabilities) == 0);
    capabilities[0].effective &= ~(1U << CAP_DAC_OVERRIDE | 1U << CAP_DAC_READ_SEARCH);
    REQUIRE(syscall(SYS_capset, &header, capabilities) == 0);
}

void setLargestFile(rlim_t bytes)
{
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{};
    REQUIRE(getrlimit(RLIMIT_FSIZE, &limit) == 0);
    limit.rlim_cur = std::min(bytes, limit.rlim_max);
    REQUIRE(setrlimit(RLIMIT_FSIZE, &limit) == 0);
}

TEST(SqliteDefaultsDomain, KeepsItsValuesForWhoeverOpensItNextAndForTheOwnerAlone)
{
    const TemporaryFolder folder;
    const FilePath file = folder / "config/quillet/defaults.sqlite";
    const mode_t before = umask(0);
    for (const bool widened : { false, true }) {
        if (widened)
            chmod(file.c_str(), 0644);
        SqliteDefaultsDomain domain(file);
        SqliteDefaultsDomain atTheSameTime(file);
        domain.setString("key", "value");
        EXPECT_EQ(atTheSameTime.string("key"), "value");
        atTheSameTime.remove("key");
        EXPECT_EQ(domain.string("key"), std::nullopt);
        domain.setStringArray("list", { "a", "b" });
        for (const char* part : { "", "-wal", "-shm" })
            EXPECT_EQ(modeOf(file.native() + part), 0600U) << part << widened;
    }
    umask(before);
    EXPECT_EQ(modeOf(file.parent_path()), 0700U);
    EXPECT_EQ(SqliteDefaultsDomain(file).stringArray("list"), (std::vector<std::string>{ "a", "b" }));
}

/// A process that writes numbered values under the name, and ends well.
pid_t startWriter(const FilePath& file, const std::string& name, int count)
{
    const pid_t process = fork();
    if (process == 0) {
        auto domain = std::make_unique<SqliteDefaultsDomain>(file);
        for (int i = 0; i < count; ++i)
            domain->setInteger(name + std::to_string(i), i);
        domain.reset();
        _exit(0);
    }
    return process;
}

TEST(SqliteDefaultsDomain, SeveralProcessesWriteAtOnceFromTheFirstMomentOn)
{
    constexpr int count = 300;
    for (int round = 0; round < 20; ++round) {
        SCOPED_TRACE(round);
        const TemporaryFolder folder;
        const FilePath file = folder / "defaults.sqlite";
        if (round % 2 != 0)
            std::ofstream(file) << "no database at all";
        const pid_t writers[] = { startWriter(file, "first", count), startWriter(file, "second", count) };
        SqliteDefaultsDomain domain(file);
        domain.setInteger("third", 3);
        for (const pid_t writer : writers) {
            int status = -1;
            EXPECT_EQ(waitpid(writer, &status, 0), writer);
            EXPECT_EQ(status, 0);
        }
        for (int i = 0; i < count; ++i)
            for (const char* name : { "first", "second" })
                ASSERT_EQ(domain.integer(name + std::to_string(i)), i) << name;
        EXPECT_EQ(domain.integer("third"), 3);
    }
}

TEST(SqliteDefaultsDomain, MovesAFileThatIsNoSoundDatabaseAsideAndStartsEmpty)
{
    void (*const damages[])(const FilePath&) = {
        [](const FilePath& file) { std::ofstream(file) << "volume = 11\n"; },
        [](const FilePath& file) { std::filesystem::resize_file(file, 40'960); },
        zeroPages,
        [](const FilePath& file) { OtherProgram(file).execute("DROP TABLE defaults; CREATE TABLE defaults (name, text)"); },
    };
    const TemporaryFolder folder;
    const FilePath file = folder / "defaults.sqlite";
    std::set<FilePath> names;
    for (const auto& damage : damages) {
        SCOPED_TRACE(&damage - damages);
        makeDatabase(file);
        damage(file);
        const std::string damaged = contentOf(file);
        {
            SqliteDefaultsDomain domain(file);
            domain.setInteger("new", 1);
            EXPECT_THAT(domain.allKeys(), UnorderedElementsAre("new"));
            Reports reports(domain);
            ASSERT_THAT(reports.health, ElementsAre(domain.health()));
            EXPECT_TRUE(contentOf(domain.health().movedAside.value()) == damaged);
            EXPECT_TRUE(names.insert(*domain.health().movedAside).second) << "replaced another";
            EXPECT_TRUE(domain.health().movedAside->native().starts_with(file.native() + ".damaged-20"));
        }
        EXPECT_EQ(SqliteDefaultsDomain(file).health(), (DefaultsHealth{ Trouble::none, file, {} }));
        EXPECT_THAT(SqliteDefaultsDomain(file).allKeys(), UnorderedElementsAre("new"));
        std::filesystem::remove(file);
    }
}

TEST(SqliteDefaultsDomain, DamageThatAppearsDuringTheRunIsMovedAsideWithItsLog)
{
    for (const bool late : { false, true }) {
        SCOPED_TRACE(late ? "found by a write that is late" : "found by a read");
        const TemporaryFolder folder;
        const FilePath file = folder / "defaults.sqlite";
        makeDatabase(file);
        SqliteDefaultsDomain domain(file, anyLockIsTrouble);
        domain.setInteger("in the log", 1);
        OtherProgram other(file);
        if (late) {
            other.execute("BEGIN IMMEDIATE");
            domain.setInteger("new", 1);
        }
        Reports reports(domain);
        zeroPages(file);
        if (late) {
            other.execute("COMMIT");
            reports.waitUntilWell();
        } else {
            EXPECT_EQ(domain.string("key 7"), std::nullopt);
            domain.setInteger("new", 1);
        }
        EXPECT_THAT(domain.allKeys(), UnorderedElementsAre("new"));
        EXPECT_THAT(SqliteDefaultsDomain(file).allKeys(), UnorderedElementsAre("new"));
        EXPECT_TRUE(std::filesystem::exists(reports.health.back().movedAside.value().native() + "-wal"));
    }
}

TEST(SqliteDefaultsDomain, WhatCannotBeWrittenIsKeptReportedAndStoredOnceItCanBe)
{
    enum class Old { noFolder, noFile, hidden, legible };
    using Change = std::function<void(const FilePath& folder)>;
    struct Case {
        Trouble trouble;
        Old old;
        Change spoil;
        Change mend;
    };
    const auto at = [](const char* path, auto call) -> Change {
        return [=](const FilePath& folder) { call((folder / path).c_str()); };
    };
    const auto mode = [](mode_t bits) { return [=](const char* path) { chmod(path, bits); }; };
    const auto make = [](const char* path) { mkdir(path, 0700); };
    const auto largest = [](rlim_t bytes) { return [=](const FilePath&) { setLargestFile(bytes); }; };
    const Case cases[] = {
        { Trouble::readOnly, Old::noFolder, at("", mode(0500)), at("", mode(0700)) },
        { Trouble::readOnly, Old::noFile, at("%3F", mode(0500)), at("%3F", mode(0700)) },
        { Trouble::readOnly, Old::legible, at("%3F", mode(0500)), at("%3F", mode(0700)) },
        { Trouble::readOnly, Old::legible, at("%3F/file-shm", make), at("%3F/file-shm", rmdir) },
        { Trouble::unreadable, Old::hidden, at("%3F", mode(0)), at("%3F", mode(0700)) },
        { Trouble::unreadable, Old::noFile, at("%3F/file", make), at("%3F/file", rmdir) },
        { Trouble::unreadable, Old::legible, at("%3F/file-wal", make), at("%3F/file-wal", rmdir) },
        { Trouble::full, Old::noFile, largest(0), largest(RLIM_INFINITY) },
        { Trouble::full, Old::legible, largest(0), largest(RLIM_INFINITY) },
    };
    dropPrivileges();
    for (const Case& c : cases) {
        SCOPED_TRACE(&c - cases);
        const TemporaryFolder folder;
        const FilePath file = folder / "%3F/file";
        if (c.old != Old::noFolder)
            std::filesystem::create_directory(file.parent_path());
        if (c.old >= Old::hidden)
            SqliteDefaultsDomain(file).setString("old", "value");
        c.spoil(folder.path());
        SqliteDefaultsDomain domain(file, noLockIsTrouble);
        SqliteDefaultsDomain second(file, noLockIsTrouble);
        domain.setInteger("new", 1);
        second.setInteger("second", 2);
        EXPECT_EQ(domain.integer("new"), 1);
        EXPECT_EQ(domain.string("old").has_value(), c.old == Old::legible);
        Reports reports(domain);
        Reports secondReports(second);
        c.mend(folder.path());
        reports.waitUntilWell();
        secondReports.waitUntilWell();
        EXPECT_THAT(reports.health,
                    ElementsAre(DefaultsHealth{ c.trouble, file, {} }, DefaultsHealth{ Trouble::none, file, {} }));
        EXPECT_EQ(domain.string("old").has_value(), c.old >= Old::hidden);
        EXPECT_EQ(domain.integer("second"), 2);
        EXPECT_EQ(SqliteDefaultsDomain(file).integer("new"), 1);
    }
}

TEST(SqliteDefaultsDomain, AWriteThatAnotherProgramHoldsUpCountsAtOnceAndIsStoredLater)
{
    const TemporaryFolder folder;
    const FilePath file = folder / "defaults.sqlite";
    SqliteDefaultsDomain domain(file, anyLockIsTrouble);
    Reports reports(domain);
    domain.setInteger("count", 1);
    domain.setData("data.gone", "123");
    OtherProgram other(file);
    other.execute("BEGIN IMMEDIATE");
    domain.setInteger("count", 2);
    domain.setInteger("count", 3);
    domain.setData("data.new", "12345");
    domain.remove("data.gone");
    EXPECT_EQ(domain.integer("count"), 3);
    EXPECT_EQ(domain.keysWithPrefix("data."), std::vector<std::string>{ "data.new" });
    EXPECT_EQ(domain.sizeOfPrefix("data."), (DefaultsSize{ 1, 5 }));
    EXPECT_EQ(domain.dataHeads("data.", 3).front().head, "123");
    EXPECT_EQ(SqliteDefaultsDomain(file).integer("count"), 1);
    other.execute("COMMIT");
    reports.waitUntilWell();
    EXPECT_EQ(SqliteDefaultsDomain(file).integer("count"), 3);
    EXPECT_THAT(reports.health,
                ElementsAre(DefaultsHealth{ Trouble::busy, file, {} }, DefaultsHealth{ Trouble::none, file, {} }));
}

TEST(LateWrites, AKeyThatIsSetAgainWhileItIsStoredStaysLate)
{
    LateWrites late;
    late.keep("a", 1.0);
    late.keep("b", 1.0);
    const auto stored = late.batch();
    late.keep("a", 1.0);
    late.forget(stored);
    EXPECT_NE(late.find("a"), nullptr);
    EXPECT_EQ(late.find("b"), nullptr);
}

TEST(SqliteDefaultsDomain, AShortLockIsNotReportedAndTheEndWaitsForIt)
{
    const TemporaryFolder folder;
    const FilePath file = folder / "defaults.sqlite";
    auto domain = std::make_unique<SqliteDefaultsDomain>(file, noLockIsTrouble);
    const Reports reports(*domain);
    OtherProgram other(file);
    other.execute("BEGIN IMMEDIATE");
    domain->setInteger("count", 4);
    const std::jthread release([&] { other.execute("COMMIT"); });
    domain.reset();
    EXPECT_EQ(SqliteDefaultsDomain(file).integer("count"), 4);
    EXPECT_THAT(reports.health, testing::IsEmpty());
}

}  // namespace
}  // namespace quillet
