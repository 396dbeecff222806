// One window for each user's display: the first start of the program is the one that runs, and a later start hands what it was
// asked for to that one and ends. It needs neither a bus nor an event loop for that, and a running program that does not answer
// is not waited for: the later start then goes its own way. Who runs is told by a lock, which goes with its process however
// that ends.
// Threads: main thread.
#pragma once

#include "platform/base/FileDescriptor.h"
#include "platform/base/FilePath.h"
#include "platform/schedule/Scheduler.h"

#include <chrono>
#include <functional>
#include <list>
#include <string>
#include <vector>

namespace quillet {

/// What a start of the program was asked for.
struct HandOver {
    /// Files and folders, absolute. As many are taken along as a message has room for, which are thousands.
    std::vector<FilePath> files;
    /// By which the desktop lets the window come to the front: Wayland's XDG_ACTIVATION_TOKEN, X11's DESKTOP_STARTUP_ID.
    std::string activationToken;
    std::string startupId;
};

class SingleInstance {
public:
    static constexpr std::chrono::milliseconds timeout{ 1000 };

    enum class Start {
        /// It is the one that runs, from now on.
        first,
        /// The one that runs has taken the hand-over.
        handedOver,
        /// Another one runs and does not answer, or there is nowhere to meet.
        alone,
    };

    /// Programs meet in the user's runtime directory ($XDG_RUNTIME_DIR): those with the same settings, on the same display.
    SingleInstance();
    ~SingleInstance();
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    /// Once. Takes at most about `timeout`.
    [[nodiscard]] Start start(const HandOver& handOver);

    /// Gives `receive` what later starts hand over, if this is the first; what has been handed over by now comes in the next
    /// turns of the loop. The scheduler outlives this object.
    void listen(Scheduler& scheduler, std::function<void(const HandOver&)> receive);
    /// The next start is the first again.
    void release();

private:
    /// A later start that is being heard.
    struct Caller {
        FileDescriptor connection;
        std::string bytes;
        ScheduledTask reading;
        ScheduledTask givingUp;
    };
    using Deadline = std::chrono::steady_clock::time_point;
    enum class Lock { taken, held, unavailable };

    [[nodiscard]] Lock takeLock();
    [[nodiscard]] bool openSocket();
    [[nodiscard]] bool deliver(const std::string& message, Deadline deadline) const;
    void acceptCallers();
    void hear(std::list<Caller>::iterator caller);

    /// Of the lock and the socket, without the ends of their names; empty where there is nowhere to meet.
    FilePath m_place;
    FileDescriptor m_lock;
    FileDescriptor m_socket;
    Scheduler* m_scheduler = nullptr;
    std::function<void(const HandOver&)> m_receive;
    std::list<Caller> m_callers;
    ScheduledTask m_listening;
};

}  // namespace quillet
