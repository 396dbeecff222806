// The user's defaults domain in a database file that several processes may use at once. What a write has stored outlives this
// process, however it ends. A write that another process keeps waiting is not waited for: it counts at once for whoever reads
// here, is tried again until it is stored, and only a kill before then loses it. A file that turns out to be no database, or a
// broken one, is moved aside under a name with the time and replaced by an empty one; where no file can be kept, the domain
// lasts as long as the object.
// Threads: callable from every thread.
#pragma once

#include "platform/base/FilePath.h"
#include "platform/defaults/TypedDefaultsDomain.h"

#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

namespace quillet {

class SqliteConnection;

class SqliteDefaultsDomain final : public TypedDefaultsDomain {
public:
    /// "defaults.sqlite" in the program's directory of settings.
    [[nodiscard]] static FilePath standardFile();

    /// Opens `file`; creates it, and the directories above it, where they are missing.
    explicit SqliteDefaultsDomain(FilePath file);
    ~SqliteDefaultsDomain() override;
    SqliteDefaultsDomain(const SqliteDefaultsDomain&) = delete;
    SqliteDefaultsDomain& operator=(const SqliteDefaultsDomain&) = delete;

    void remove(std::string_view key) override;
    void removeAll(std::span<const std::string> keys) override;
    std::vector<std::string> allKeys() const override;
    std::vector<std::string> keysWithPrefix(std::string_view prefix) const override;
    DefaultsSize sizeOfPrefix(std::string_view prefix) const override;
    std::vector<DefaultsHead> dataHeads(std::string_view prefix, std::size_t headBytes) const override;

protected:
    [[nodiscard]] std::optional<DefaultsValue> read(std::string_view key) const override;
    void write(std::string_view key, const DefaultsValue& value) override;

private:
    /// A value to write, or nothing for a key to remove.
    using Late = std::map<std::string, std::optional<DefaultsValue>, std::less<>>;

    enum class Suspicion { none, damage };

    [[nodiscard]] std::unique_ptr<SqliteConnection> open(Suspicion suspicion) const;

    // Under the lock.

    template <typename Operation> auto perform(Operation operation) const;
    void writeOrKeep(std::string_view key, std::optional<DefaultsValue> value);
    bool writeLate();
    void retryLater();
    [[nodiscard]] std::vector<std::string> keysUnderLock(std::string_view prefix) const;
    [[nodiscard]] std::vector<DefaultsHead> headsUnderLock(std::string_view prefix, std::size_t headBytes) const;

    const FilePath m_file;
    mutable std::mutex m_mutex;
    mutable std::unique_ptr<SqliteConnection> m_connection;  // guarded by m_mutex
    /// What could not be written yet.
    Late m_late;  // guarded by m_mutex
    bool m_retrying = false;  // guarded by m_mutex
    std::condition_variable_any m_stopped;
    /// Runs while something is late.
    std::jthread m_retries;
};

}  // namespace quillet
