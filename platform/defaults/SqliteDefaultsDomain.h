// The user's defaults domain in a database file that several processes may use at once. What a write has stored outlives this
// process, however it ends. A write that cannot be stored now (another program has the file locked, the disk is full, the
// folder may not be written) counts at once for whoever reads here and is tried again until it is stored; only a process that
// ends before then loses it. A file that turns out to be no database, or a broken one, is moved aside under a name with the
// time and replaced by an empty one. How the user learns of all this is not decided here: there is a report to listen to.
// Threads: callable from every thread. One of its own tries again, and holds nobody up while it does.
#pragma once

#include "platform/base/FilePath.h"
#include "platform/defaults/DefaultsHealth.h"
#include "platform/defaults/LateWrites.h"
#include "platform/defaults/TypedDefaultsDomain.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace quillet {

class SqliteConnection;
enum class DatabaseError;
struct OpenedDefaults;

/// When a write is tried again. Tests have times of their own.
struct DefaultsRetryTimes {
    std::chrono::milliseconds first{ 100 };
    /// The time doubles up to this while there is trouble.
    std::chrono::milliseconds longest{ 2000 };
    /// A lock of another program is trouble once it has lasted this long.
    std::chrono::milliseconds maxLock{ 2000 };
};

class SqliteDefaultsDomain final : public TypedDefaultsDomain {
public:
    using HealthHandler = std::function<void(const DefaultsHealth&)>;

    /// "defaults.sqlite" in the program's directory of settings.
    [[nodiscard]] static FilePath standardFile();

    /// Opens `file`; creates it, and the directories above it, where they are missing.
    explicit SqliteDefaultsDomain(FilePath file, DefaultsRetryTimes times = {});
    /// Tries once more to write what is late, and waits some seconds for a lock.
    ~SqliteDefaultsDomain() override;
    SqliteDefaultsDomain(const SqliteDefaultsDomain&) = delete;
    SqliteDefaultsDomain& operator=(const SqliteDefaultsDomain&) = delete;

    void remove(std::string_view key) override;
    void removeAll(std::span<const std::string> keys) override;
    std::vector<std::string> allKeys() const override;
    std::vector<std::string> keysWithPrefix(std::string_view prefix) const override;
    DefaultsSize sizeOfPrefix(std::string_view prefix) const override;
    std::vector<DefaultsHead> dataHeads(std::string_view prefix, std::size_t headBytes) const override;

    [[nodiscard]] DefaultsHealth health() const;
    /// Calls the handler whenever the health has changed, and at once unless all is well and no file was moved aside. It is
    /// called on the thread that notices (one that reads or writes here, or the domain's own), never on two at a time and never
    /// with a state older than the last; it may call the domain. It must be safe to call until the domain is destroyed. The
    /// destructor does not report.
    void onHealthChange(HealthHandler handler);

protected:
    [[nodiscard]] std::optional<DefaultsValue> read(std::string_view key) const override;
    void write(std::string_view key, const DefaultsValue& value) override;

private:
    class Turn;

    void retry(const std::stop_token& stop);
    void attempt(std::unique_lock<std::mutex>& lock, const std::stop_token& stop);
    void report(std::unique_lock<std::mutex>& lock) const;

    // Under the lock. A read may find damage, so it may change all that is not a setting.

    template <typename Operation> auto perform(Operation operation) const;
    template <typename Operation> bool store(Operation operation);
    void keep(std::string_view key, LateWrites::Value value);
    void adopt(OpenedDefaults& opened) const;
    void note(DatabaseError error) const;
    void setTrouble(DefaultsHealth::Trouble trouble) const;
    [[nodiscard]] std::vector<std::string> keysUnderLock(std::string_view prefix) const;
    [[nodiscard]] std::vector<DefaultsHead> headsUnderLock(std::string_view prefix, std::size_t headBytes) const;

    const FilePath m_file;
    const DefaultsRetryTimes m_times;

    // Guarded by m_mutex.

    mutable std::mutex m_mutex;
    /// Null while the file cannot be opened; read-only while it can only be read.
    mutable std::unique_ptr<SqliteConnection> m_connection;
    LateWrites m_late;
    /// While this is set, every write is late: none overtakes those that the other thread is writing.
    mutable bool m_retrying = false;
    mutable std::optional<std::chrono::steady_clock::time_point> m_lockedSince;
    mutable DefaultsHealth m_health;
    mutable bool m_unreported = false;
    mutable bool m_reporting = false;
    HealthHandler m_healthHandler;

    mutable std::condition_variable_any m_wake;
    std::jthread m_retries;
};

}  // namespace quillet
