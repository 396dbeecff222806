// What becomes of the file: kept between runs, moved aside when it is damaged, done without where it cannot be.
#include "platform/defaults/SqliteDefaultsDomain.h"

#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace quillet {
namespace {

using testing::UnorderedElementsAre;

std::string contentOf(const FilePath& file)
{
    std::ifstream stream(file, std::ios::binary);
    return { std::istreambuf_iterator<char>(stream), {} };
}

void setContent(const FilePath& file, const std::string& content) { std::ofstream(file, std::ios::binary) << content; }

std::string cipher(std::string content)
{
    for (char& byte : content)
        byte = static_cast<char>(byte ^ 0x55);
    return content;
}

/// The files that were moved aside, without the logs that belong to them.
std::vector<FilePath> movedAside(const FilePath& folder)
{
    std::vector<FilePath> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        const std::string name = entry.path().filename();
        if (name.starts_with("defaults.sqlite.damaged-20") && !name.ends_with("-wal") && !name.ends_with("-shm"))
            files.push_back(entry.path());
    }
    return files;
}

/// Runs SQL on the file as another program would.
void execute(const FilePath& file, const char* sql)
{
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(file.c_str(), &database), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(database, sql, nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(database);
}

/// A database of some pages, closed in good order.
void makeDatabase(const FilePath& file)
{
    SqliteDefaultsDomain domain(file);
    for (int i = 0; i < 200; ++i)
        domain.setString("key " + std::to_string(i), std::string(500, 'x'));
}

TEST(SqliteDefaultsDomain, KeepsItsValuesInAPrivateDirectoryForWhoeverOpensItNext)
{
    const TemporaryFolder folder;
    const FilePath file = folder / "config/quillet/defaults.sqlite";
    {
        SqliteDefaultsDomain domain(file);
        SqliteDefaultsDomain atTheSameTime(file);
        domain.setString("key", "value");
        EXPECT_EQ(atTheSameTime.string("key"), "value");
        atTheSameTime.remove("key");
        EXPECT_EQ(domain.string("key"), std::nullopt);
        domain.setStringArray("list", { "a", "b" });
    }
    EXPECT_EQ(SqliteDefaultsDomain(file).stringArray("list"), (std::vector<std::string>{ "a", "b" }));
    struct stat attributes{};
    ASSERT_EQ(stat(file.parent_path().c_str(), &attributes), 0);
    EXPECT_EQ(attributes.st_mode & 0777, 0700U);
}

TEST(SqliteDefaultsDomain, MovesAFileThatIsNoSoundDatabaseAsideAndStartsEmpty)
{
    struct Case {
        const char* name;
        void (*damage)(const FilePath&);
    };
    const Case cases[] = {
        { "a text", [](const FilePath& file) { setContent(file, "volume = 11\n"); } },
        { "a cipher",
          [](const FilePath& file) {
              makeDatabase(file);
              setContent(file, cipher(contentOf(file)));
          } },
        { "cut in the middle",
          [](const FilePath& file) {
              makeDatabase(file);
              std::filesystem::resize_file(file, std::filesystem::file_size(file) / 2);
          } },
        { "pages of zeros",
          [](const FilePath& file) {
              makeDatabase(file);
              const std::string content = contentOf(file);
              setContent(file, content.substr(0, 4096) + std::string(content.size() - 4096, '\0'));
          } },
        { "another program's", [](const FilePath& file) { execute(file, "CREATE TABLE defaults (name, text)"); } },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const TemporaryFolder folder;
        const FilePath file = folder / "defaults.sqlite";
        c.damage(file);
        const std::string damaged = contentOf(file);
        {
            SqliteDefaultsDomain domain(file);
            domain.setInteger("new", 1);
            EXPECT_THAT(domain.allKeys(), UnorderedElementsAre("new"));
        }
        EXPECT_THAT(SqliteDefaultsDomain(file).allKeys(), UnorderedElementsAre("new"));
        const auto kept = movedAside(folder.path());
        ASSERT_EQ(kept.size(), 1U);
        EXPECT_TRUE(contentOf(kept.front()) == damaged);
    }
}

TEST(SqliteDefaultsDomain, DamageThatAppearsDuringTheRunIsMovedAsideWithItsLog)
{
    const TemporaryFolder folder;
    const FilePath file = folder / "defaults.sqlite";
    makeDatabase(file);
    {
        SqliteDefaultsDomain domain(file);
        domain.setInteger("in the log", 1);
        const std::string content = contentOf(file);
        setContent(file, content.substr(0, 100) + std::string(content.size() - 100, '\xAA'));
        EXPECT_EQ(domain.string("key 7"), std::nullopt);
        domain.setInteger("new", 1);
        EXPECT_THAT(domain.allKeys(), UnorderedElementsAre("new"));
    }
    EXPECT_THAT(SqliteDefaultsDomain(file).allKeys(), UnorderedElementsAre("new"));
    const auto kept = movedAside(folder.path());
    ASSERT_EQ(kept.size(), 1U);
    EXPECT_TRUE(std::filesystem::exists(kept.front().native() + "-wal"));
}

TEST(SqliteDefaultsDomain, NoDamagedFileReplacesAnother)
{
    const TemporaryFolder folder;
    const FilePath file = folder / "defaults.sqlite";
    for (int i = 0; i < 3; ++i) {
        setContent(file, "damage " + std::to_string(i));
        EXPECT_TRUE(SqliteDefaultsDomain(file).allKeys().empty());
    }
    EXPECT_EQ(movedAside(folder.path()).size(), 3U);
}

TEST(SqliteDefaultsDomain, AnEmptyFileIsAnEmptyDomain)
{
    const TemporaryFolder folder;
    const FilePath file = folder / "defaults.sqlite";
    setContent(file, "");
    SqliteDefaultsDomain(file).setInteger("new", 1);
    EXPECT_EQ(SqliteDefaultsDomain(file).integer("new"), 1);
    EXPECT_TRUE(movedAside(folder.path()).empty());
}

TEST(SqliteDefaultsDomain, WorksInMemoryWhereNoFileCanBeKept)
{
    const TemporaryFolder folder;
    setContent(folder / "file", "no directory");
    std::filesystem::create_directories(folder / "directory.sqlite");
    for (const FilePath& file : { FilePath("/proc/no/such/place/defaults.sqlite"), FilePath("/proc/defaults.sqlite"),
                                  folder / "file/quillet/defaults.sqlite", folder / "directory.sqlite" }) {
        SqliteDefaultsDomain domain(file);
        domain.setString("key", "value");
        EXPECT_EQ(domain.string("key"), "value") << file;
        EXPECT_THAT(domain.allKeys(), UnorderedElementsAre("key"));
    }
    EXPECT_EQ(contentOf(folder / "file"), "no directory");
}

TEST(SqliteDefaultsDomain, AWriteThatAnotherProcessKeepsWaitingCountsAtOnceAndIsStoredLater)
{
    const TemporaryFolder folder;
    const FilePath file = folder / "defaults.sqlite";
    const auto locked = [&](const char* statement) {
        static sqlite3* other = nullptr;
        if (other == nullptr)
            sqlite3_open(file.c_str(), &other);
        EXPECT_EQ(sqlite3_exec(other, statement, nullptr, nullptr, nullptr), SQLITE_OK);
    };
    SqliteDefaultsDomain domain(file);
    domain.setInteger("count", 1);
    domain.setData("data.gone", "123");
    locked("BEGIN IMMEDIATE");
    const auto begin = std::chrono::steady_clock::now();
    domain.setInteger("count", 2);
    domain.setInteger("count", 3);
    domain.setData("data.new", "12345");
    domain.remove("data.gone");
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2)) << "the other's patience is no measure";
    EXPECT_EQ(domain.integer("count"), 3);
    EXPECT_EQ(domain.keysWithPrefix("data."), std::vector<std::string>{ "data.new" });
    EXPECT_EQ(domain.sizeOfPrefix("data."), (DefaultsSize{ 1, 5 }));
    EXPECT_EQ(domain.dataHeads("data.", 3).front().head, "123");
    EXPECT_EQ(SqliteDefaultsDomain(file).integer("count"), 1);

    locked("COMMIT");
    while (SqliteDefaultsDomain(file).integer("count") != 3)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));

    // What is late when the domain ends is stored before.
    locked("BEGIN IMMEDIATE");
    std::jthread release;
    {
        SqliteDefaultsDomain brief(file);
        brief.setInteger("count", 4);
        release = std::jthread([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            locked("COMMIT");
        });
    }
    EXPECT_EQ(SqliteDefaultsDomain(file).integer("count"), 4);
}

}  // namespace
}  // namespace quillet
