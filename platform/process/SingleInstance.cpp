#include "platform/process/SingleInstance.h"

#include "platform/files/UserDirectories.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <utility>

namespace quillet {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds betweenAttempts{ 10 };
/// What callers may take to say what they have to say; they say it at once.
constexpr double callerSeconds = 2;
constexpr std::size_t mostCallers = 16;
/// As many names as a command line has room for.
constexpr std::size_t mostMessageBytes = std::size_t{ 4 } * 1024 * 1024;
constexpr char taken = '+';

std::string environment(const char* name)
{
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

std::string hexadecimal(std::uint64_t number, int digits)
{
    std::array<char, 17> text{};
    const int length = std::snprintf(text.data(), text.size(), "%0*llx", digits, static_cast<unsigned long long>(number));
    return { text.data(), static_cast<std::size_t>(length) };
}

/// The same on every start (FNV-1a).
std::uint64_t hashOf(const std::string& text)
{
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const char letter : text)
        hash = (hash ^ static_cast<std::uint8_t>(letter)) * 0x100000001B3;
    return hash;
}

/// Whoever else could write there could pretend to be the one that runs.
bool isPrivateDirectory(const FilePath& directory)
{
    struct stat status{};
    return directory.is_absolute() && ::stat(directory.c_str(), &status) == 0 && S_ISDIR(status.st_mode)
        && status.st_uid == ::geteuid() && (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

FilePath socketAt(const FilePath& place) { return place.native() + ".socket"; }

FilePath meetingPlace()
{
    const FilePath directory = environment("XDG_RUNTIME_DIR");
    if (!isPrivateDirectory(directory))
        return {};
    std::string display = environment("WAYLAND_DISPLAY");
    if (display.empty())
        display = environment("DISPLAY");
    FilePath place = directory / ("quillet-" + hexadecimal(hashOf(configDirectory().native() + '\0' + display), 16));
    return socketAt(place).native().size() < sizeof sockaddr_un::sun_path ? place : FilePath();
}

sockaddr_un addressOf(const FilePath& place)
{
    const std::string name = socketAt(place).native();
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::ranges::copy(name, address.sun_path);
    return address;
}

FileDescriptor makeSocket() { return FileDescriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)); }

// ---- Messages: how many bytes follow, then the texts (two identifiers and the files), each with a NUL at its end ----

constexpr int headBytes = 8;

std::string encoded(const HandOver& handOver)
{
    std::string texts;
    const auto add = [&texts](const std::string& text) {
        if (headBytes + texts.size() + text.size() < mostMessageBytes)
            texts += text.substr(0, text.find('\0')) + '\0';
    };
    add(handOver.activationToken);
    add(handOver.startupId);
    for (const FilePath& file : handOver.files)
        add(file.native());
    return hexadecimal(texts.size(), headBytes) + texts;
}

/// How long the whole message is; nothing while its head is not there.
std::optional<std::size_t> messageBytes(const std::string& bytes)
{
    if (bytes.size() < std::size_t{ headBytes })
        return std::nullopt;
    return std::size_t{ headBytes } + std::strtoul(bytes.substr(0, headBytes).c_str(), nullptr, 16);
}

HandOver decoded(const std::string& message)
{
    std::size_t at = headBytes;
    const auto next = [&] {
        const std::string text = message.substr(std::min(at, message.size()), message.find('\0', at) - at);
        at += text.size() + 1;
        return text;
    };
    HandOver handOver;
    handOver.activationToken = next();
    handOver.startupId = next();
    while (at < message.size())
        if (FilePath file = next(); file.is_absolute())
            handOver.files.push_back(std::move(file));
    return handOver;
}

// ---- A later start, which waits ----

/// False once the time is over.
bool waitFor(const FileDescriptor& descriptor, short events, Clock::time_point deadline)
{
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        pollfd waiting{ descriptor.number(), events, 0 };
        const int count = ::poll(&waiting, 1, static_cast<int>(std::max<std::int64_t>(left, 0)));
        if (count > 0)
            return true;
        if (count == 0 || errno != EINTR)
            return false;
    }
}

bool sendAll(const FileDescriptor& connection, std::string_view bytes, Clock::time_point deadline)
{
    while (!bytes.empty()) {
        if (!waitFor(connection, POLLOUT, deadline))
            return false;
        const ssize_t sent = ::send(connection.number(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent < 0 && errno != EAGAIN && errno != EINTR)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(sent, 0)));
    }
    return true;
}

}  // namespace

SingleInstance::SingleInstance()
    : m_place(meetingPlace())
{
}

SingleInstance::~SingleInstance() { release(); }

SingleInstance::Start SingleInstance::start(const HandOver& handOver)
{
    const Deadline deadline = Clock::now() + timeout;
    const std::string message = encoded(handOver);
    do {
        switch (takeLock()) {
        case Lock::taken:
            if (openSocket())
                return Start::first;
            release();
            return Start::alone;
        case Lock::unavailable:
            return Start::alone;
        case Lock::held:
            break;
        }
        if (deliver(message, deadline))
            return Start::handedOver;
        // It is just beginning, or ending.
        ::poll(nullptr, 0, static_cast<int>(betweenAttempts.count()));
    } while (Clock::now() < deadline);
    return Start::alone;
}

/// The file stays: to remove it would let two programs each have a lock, of different files with one name.
SingleInstance::Lock SingleInstance::takeLock()
{
    if (m_place.empty())
        return Lock::unavailable;
    FileDescriptor file(
        ::open((m_place.native() + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR));
    if (!file.isOpen())
        return Lock::unavailable;
    if (::flock(file.number(), LOCK_EX | LOCK_NB) != 0)
        return errno == EWOULDBLOCK ? Lock::held : Lock::unavailable;
    m_lock = std::move(file);
    return Lock::taken;
}

/// In place of what an earlier program may have left there: whoever has the lock knows that nobody listens.
bool SingleInstance::openSocket()
{
    ::unlink(socketAt(m_place).c_str());
    const sockaddr_un address = addressOf(m_place);
    m_socket = makeSocket();
    const mode_t usual = ::umask(S_IRWXG | S_IRWXO | S_IXUSR);
    const bool isBound =
        m_socket.isOpen() && ::bind(m_socket.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    ::umask(usual);
    return isBound && ::listen(m_socket.number(), static_cast<int>(mostCallers)) == 0;
}

void SingleInstance::release()
{
    m_listening.cancel();
    m_callers.clear();
    if (m_socket.isOpen())
        ::unlink(socketAt(m_place).c_str());
    m_socket = FileDescriptor();
    m_lock = FileDescriptor();
}

/// Whether the one that runs has said that it has it.
bool SingleInstance::deliver(const std::string& message, Deadline deadline) const
{
    const sockaddr_un address = addressOf(m_place);
    const FileDescriptor connection = makeSocket();
    if (!connection.isOpen()
        || ::connect(connection.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        return false;
    if (!sendAll(connection, message, deadline) || !waitFor(connection, POLLIN, deadline))
        return false;
    char answer = 0;
    return ::recv(connection.number(), &answer, 1, 0) == 1 && answer == taken;
}

// ---- The one that runs, which must not wait ----

void SingleInstance::listen(Scheduler& scheduler, std::function<void(const HandOver&)> receive)
{
    if (!m_socket.isOpen())
        return;
    m_scheduler = &scheduler;
    m_receive = std::move(receive);
    m_listening = scheduler.watch(m_socket.number(), [this] { acceptCallers(); });
}

void SingleInstance::acceptCallers()
{
    for (;;) {
        FileDescriptor connection(::accept4(m_socket.number(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (!connection.isOpen())
            return;
        if (m_callers.size() == mostCallers)
            continue;
        const auto caller = m_callers.emplace(m_callers.end());
        caller->connection = std::move(connection);
        caller->reading = m_scheduler->watch(caller->connection.number(), [this, caller] { hear(caller); });
        caller->givingUp = m_scheduler->after(callerSeconds, [this, caller] { m_callers.erase(caller); });
    }
}

void SingleInstance::hear(std::list<Caller>::iterator caller)
{
    std::array<char, 4096> buffer;
    ssize_t count = 0;
    while ((count = ::recv(caller->connection.number(), buffer.data(), buffer.size(), 0)) > 0
           && caller->bytes.size() <= mostMessageBytes)
        caller->bytes.append(buffer.data(), static_cast<std::size_t>(count));
    const bool mayGoOn = count < 0 && (errno == EAGAIN || errno == EINTR);
    const auto expected = messageBytes(caller->bytes);
    if (mayGoOn && (!expected || caller->bytes.size() < *expected))
        return;
    // One that has hung up did not wait for the answer, and goes its own way.
    const bool isHeard =
        mayGoOn && caller->bytes.size() == *expected && ::send(caller->connection.number(), &taken, 1, MSG_NOSIGNAL) == 1;
    const std::string message = std::move(caller->bytes);
    m_callers.erase(caller);
    if (isHeard)
        m_receive(decoded(message));
}

}  // namespace quillet
