#include "platform/defaults/SqliteDefaultsDomain.h"

#include "platform/defaults/DefaultsFile.h"
#include "platform/defaults/SqliteConnection.h"
#include "platform/files/UserDirectories.h"

#include <algorithm>
#include <expected>
#include <string>
#include <utility>

namespace quillet {
namespace {

/// How long a write waits for another process: less than anybody notices.
constexpr int busyTimeoutMilliseconds = 20;
/// At the very beginning, when reads would otherwise miss what is there, and at the very end, when nothing else is left.
constexpr int longBusyTimeoutMilliseconds = 5000;

DefaultsHealth::Trouble troubleOf(DatabaseError error)
{
    using enum DefaultsHealth::Trouble;
    switch (error) {
    case DatabaseError::busy:
        return busy;
    case DatabaseError::full:
        return full;
    case DatabaseError::readOnly:
        return readOnly;
    case DatabaseError::unreadable:
        return unreadable;
    case DatabaseError::damaged:
    case DatabaseError::refused:
    case DatabaseError::other:
        break;
    }
    return other;
}

/// Stores the writes one by one until one fails; leaves those that are stored in `writes`. One that SQLite will never accept is
/// dropped as if it were.
std::expected<void, DatabaseError> storeAll(SqliteConnection& connection, std::vector<LateWrites::Write>& writes,
                                            const std::stop_token& stop)
{
    std::expected<void, DatabaseError> done;
    auto next = writes.begin();
    for (; next != writes.end() && !stop.stop_requested(); ++next) {
        done = *next->value ? connection.write(next->key, **next->value) : connection.remove(next->key);
        if (!done && done.error() != DatabaseError::refused)
            break;
        done = {};
    }
    writes.erase(next, writes.end());
    return done;
}

}  // namespace

/// Holds the lock, and reports at its end what has changed.
class SqliteDefaultsDomain::Turn {
public:
    explicit Turn(const SqliteDefaultsDomain& domain)
        : m_domain(domain),
          m_lock(domain.m_mutex)
    {
    }
    ~Turn() { m_domain.report(m_lock); }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

private:
    const SqliteDefaultsDomain& m_domain;
    std::unique_lock<std::mutex> m_lock;
};

FilePath SqliteDefaultsDomain::standardFile() { return configDirectory() / "defaults.sqlite"; }

SqliteDefaultsDomain::SqliteDefaultsDomain(FilePath file, DefaultsRetryTimes times)
    : m_file(std::move(file)),
      m_times(times),
      m_health{ .file = m_file, .movedAside = {} }
{
    OpenedDefaults opened = openDefaultsFile(m_file, Suspicion::none, longBusyTimeoutMilliseconds);
    if (opened.connection)
        opened.connection->setBusyTimeout(busyTimeoutMilliseconds);
    adopt(opened);
    m_retries = std::jthread([this](const std::stop_token& stop) { retry(stop); });
}

SqliteDefaultsDomain::~SqliteDefaultsDomain()
{
    m_retries = {};
    const std::scoped_lock lock(m_mutex);
    if (m_late.empty())
        return;
    auto writes = m_late.batch();
    const OpenedDefaults opened = openDefaultsFile(m_file, Suspicion::none, longBusyTimeoutMilliseconds);
    if (!opened.error)
        static_cast<void>(storeAll(*opened.connection, writes, {}));
}

/// Performs it once more, on the new file, if it finds the file damaged.
template <typename Operation> auto SqliteDefaultsDomain::perform(Operation operation) const
{
    using Result = decltype(operation(*m_connection));
    if (!m_connection)
        return Result(std::unexpect, DatabaseError::unreadable);
    Result result = operation(*m_connection);
    if (result || result.error() != DatabaseError::damaged)
        return result;
    const bool replaceable = !m_connection->isReadOnly();
    m_connection.reset();
    if (replaceable) {
        OpenedDefaults opened = openDefaultsFile(m_file, Suspicion::damage, busyTimeoutMilliseconds);
        adopt(opened);
        result = opened.error ? Result(std::unexpect, *opened.error) : operation(*m_connection);
    }
    return result;
}

/// Exchanges the connection for one that is at least as good.
void SqliteDefaultsDomain::adopt(OpenedDefaults& opened) const
{
    if (opened.connection && (!opened.error || !m_connection))
        m_connection.swap(opened.connection);
    if (opened.movedAside) {
        m_health.movedAside = opened.movedAside;
        m_unreported = true;
    }
    if (opened.error)
        note(*opened.error);
}

// ---- Writing ----

void SqliteDefaultsDomain::write(std::string_view key, const DefaultsValue& value)
{
    const Turn turn(*this);
    if (!store([&](SqliteConnection& connection) { return connection.write(key, value); }))
        m_late.keep(key, value);
}

void SqliteDefaultsDomain::remove(std::string_view key)
{
    const Turn turn(*this);
    if (!store([&](SqliteConnection& connection) { return connection.remove(key); }))
        m_late.keep(key, std::nullopt);
}

void SqliteDefaultsDomain::removeAll(std::span<const std::string> keys)
{
    const Turn turn(*this);
    if (!store([&](SqliteConnection& connection) { return connection.removeAll(keys); }))
        for (const std::string& key : keys)
            m_late.keep(key, std::nullopt);
}

/// False if it is late.
template <typename Operation> bool SqliteDefaultsDomain::store(Operation operation)
{
    if (m_retrying)
        return false;
    const auto done = perform(operation);
    if (done || done.error() == DatabaseError::refused)
        return true;
    note(done.error());
    return false;
}

// ---- Trying again ----

void SqliteDefaultsDomain::retry(const std::stop_token& stop)
{
    std::unique_lock lock(m_mutex);
    while (m_wake.wait(lock, stop, [this] { return m_retrying; })) {
        for (auto pause = m_times.first; m_retrying;) {
            m_wake.wait_for(lock, stop, pause, [] { return false; });
            if (stop.stop_requested())
                return;
            attempt(lock, stop);
            report(lock);
            if (m_health.trouble != DefaultsHealth::Trouble::none)
                pause = std::min(2 * pause, m_times.longest);
        }
    }
}

/// Opens the file once more and writes to it through a connection of its own, without the lock: nobody is to wait for a slow
/// disk.
void SqliteDefaultsDomain::attempt(std::unique_lock<std::mutex>& lock, const std::stop_token& stop)
{
    auto suspicion = Suspicion::none;
    do {
        auto writes = m_late.batch();
        const auto movedBefore = m_health.movedAside;
        lock.unlock();
        OpenedDefaults opened = openDefaultsFile(m_file, suspicion, busyTimeoutMilliseconds);
        if (opened.error)
            writes.clear();
        else if (const auto stored = storeAll(*opened.connection, writes, stop); !stored)
            opened.error = stored.error();
        lock.lock();
        // What went to a file that was moved aside meanwhile is still to be written.
        if (m_health.movedAside == movedBefore)
            m_late.forget(writes);
        if (opened.error == DatabaseError::damaged && std::exchange(suspicion, Suspicion::damage) == Suspicion::none)
            opened.error.reset();
        adopt(opened);
        if (opened.error)
            return;
    } while (!m_late.empty() && !stop.stop_requested());
    m_retrying = !m_late.empty();
    m_lockedSince.reset();
    setTrouble(DefaultsHealth::Trouble::none);
}

// ---- Health ----

DefaultsHealth SqliteDefaultsDomain::health() const
{
    const std::scoped_lock lock(m_mutex);
    return m_health;
}

void SqliteDefaultsDomain::onHealthChange(HealthHandler handler)
{
    const Turn turn(*this);
    m_healthHandler = std::move(handler);
    m_unreported = m_health != DefaultsHealth{ .file = m_file, .movedAside = {} };
}

void SqliteDefaultsDomain::note(DatabaseError error) const
{
    m_retrying = true;
    m_wake.notify_all();
    if (error != DatabaseError::busy) {
        m_lockedSince.reset();
        setTrouble(troubleOf(error));
        return;
    }
    const auto now = std::chrono::steady_clock::now();
    if (now - m_lockedSince.value_or(now) >= m_times.maxLock)
        setTrouble(DefaultsHealth::Trouble::busy);
    m_lockedSince = m_lockedSince.value_or(now);
}

void SqliteDefaultsDomain::setTrouble(DefaultsHealth::Trouble trouble) const
{
    m_unreported = m_unreported || m_health.trouble != trouble;
    m_health.trouble = trouble;
}

/// Lets go of the lock while the handler runs. Another thread that has something to report meanwhile leaves it to this one.
void SqliteDefaultsDomain::report(std::unique_lock<std::mutex>& lock) const
{
    while (m_unreported && !m_reporting && m_healthHandler) {
        m_unreported = false;
        m_reporting = true;
        const HealthHandler handler = m_healthHandler;
        const DefaultsHealth health = m_health;
        lock.unlock();
        handler(health);
        lock.lock();
        m_reporting = false;
    }
}

// ---- Reading ----

std::optional<DefaultsValue> SqliteDefaultsDomain::read(std::string_view key) const
{
    const Turn turn(*this);
    if (const LateWrites::Value* late = m_late.find(key))
        return *late;
    return perform([&](SqliteConnection& connection) { return connection.read(key); }).value_or(std::nullopt);
}

std::vector<std::string> SqliteDefaultsDomain::allKeys() const { return keysWithPrefix(""); }

std::vector<std::string> SqliteDefaultsDomain::keysWithPrefix(std::string_view prefix) const
{
    const Turn turn(*this);
    return keysUnderLock(prefix);
}

DefaultsSize SqliteDefaultsDomain::sizeOfPrefix(std::string_view prefix) const
{
    const Turn turn(*this);
    if (m_late.empty())
        return perform([&](SqliteConnection& connection) { return connection.sizeOfPrefix(prefix); }).value_or(DefaultsSize{});
    DefaultsSize size{ static_cast<std::int64_t>(keysUnderLock(prefix).size()), 0 };
    for (const DefaultsHead& head : headsUnderLock(prefix, 0))
        size.dataBytes += head.byteCount;
    return size;
}

std::vector<DefaultsHead> SqliteDefaultsDomain::dataHeads(std::string_view prefix, std::size_t headBytes) const
{
    const Turn turn(*this);
    return headsUnderLock(prefix, headBytes);
}

std::vector<std::string> SqliteDefaultsDomain::keysUnderLock(std::string_view prefix) const
{
    auto keys = perform([&](SqliteConnection& connection) {
                    return connection.keysWithPrefix(prefix);
                }).value_or(std::vector<std::string>{});
    m_late.correct(prefix, keys);
    return keys;
}

std::vector<DefaultsHead> SqliteDefaultsDomain::headsUnderLock(std::string_view prefix, std::size_t headBytes) const
{
    auto heads = perform([&](SqliteConnection& connection) {
                     return connection.dataHeads(prefix, headBytes);
                 }).value_or(std::vector<DefaultsHead>{});
    m_late.correct(prefix, headBytes, heads);
    return heads;
}

}  // namespace quillet
