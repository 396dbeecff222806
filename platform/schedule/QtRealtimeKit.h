// Has threads scheduled in real time that may not do so themselves: asks RTKit, the service that most desktops have for it,
// over the system bus. Without a bus or the service, or when it refuses, nothing changes and nothing is said.
// Threads: a thread of its own asks and waits for the answers; the threads that it asks for never wait. All else on the thread
// that made it.
#pragma once

#include "platform/base/RealtimeRequests.h"

#include <thread>

namespace quillet {

class QtRealtimeKit {
public:
    /// The QCoreApplication exists already. `requests` outlives this object, and nobody else takes from it.
    explicit QtRealtimeKit(RealtimeRequests& requests);
    /// Does not wait for answers that are still to come.
    ~QtRealtimeKit();
    QtRealtimeKit(const QtRealtimeKit&) = delete;
    QtRealtimeKit& operator=(const QtRealtimeKit&) = delete;

private:
    RealtimeRequests& m_requests;
    std::jthread m_asker;
};

}  // namespace quillet
