// A private PulseAudio server for one test: a sink that leads nowhere, and its monitor, which has everything that was played.
// The process's environment points to it from then on, so that what the test starts plays there. It does not depend on
// the user's own server, and runs as root.
// Threads: main thread (it changes the environment; the server dies with the thread that made it).
#pragma once

#include "tests/support/TemporaryFolder.h"

#include <string>

#include <sys/types.h>

namespace quillet {

class TestSoundServer {
public:
    /// Starts the server and waits until it answers; stops the program if it cannot (PulseAudio is not installed).
    explicit TestSoundServer(int sinkRate = 44100);
    ~TestSoundServer();
    TestSoundServer(const TestSoundServer&) = delete;
    TestSoundServer& operator=(const TestSoundServer&) = delete;

    /// Ends the server without a word to its clients (SIGKILL).
    void kill();
    /// After `kill`, under the same address.
    void start();

    [[nodiscard]] int sinkRate() const { return m_sinkRate; }
    [[nodiscard]] std::string address() const { return "unix:" + (m_folder / "native").native(); }
    static constexpr const char* sinkName = "test";
    static constexpr const char* monitorName = "test.monitor";

private:
    const int m_sinkRate;
    const TemporaryFolder m_folder;
    pid_t m_process = 0;
};

}  // namespace quillet
