// Records everything that the test sound server's sink plays, silence included, and when. The recording has begun when the
// constructor returns and ends with the recorder or the server. It is bit-exact, as sink and recording have one format.
// Threads: main thread; a thread of its own reads from the server.
#pragma once

#include "tests/support/TestSoundServer.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

struct pa_simple;

namespace quillet {

class MonitorRecorder {
public:
    using Clock = std::chrono::steady_clock;

    explicit MonitorRecorder(const TestSoundServer& server);

    /// Everything so far, left, right, left, ….
    [[nodiscard]] std::vector<float> stereo() const;
    [[nodiscard]] std::int64_t frameCount() const;
    /// When the frame was played: the arrival of the fragment that brought it, plus what lies before the frame in that
    /// fragment. The sink renders fragments of about 5 ms when their time has come, so this is never too early, and too late by
    /// what the machine's load makes of it (a few milliseconds).
    [[nodiscard]] Clock::time_point timeOf(std::int64_t frame) const;

    /// Waits for a frame at or after `from` in which either channel is louder than `threshold`.
    std::optional<std::int64_t> waitForSound(std::int64_t from, Clock::duration limit, float threshold = 0);

private:
    struct Fragment {
        std::int64_t firstFrame;
        Clock::time_point arrival;
    };

    void run(const std::stop_token& stop, pa_simple* stream);

    const int m_sampleRate;
    mutable std::mutex m_mutex;
    std::condition_variable m_arrived;
    std::vector<float> m_stereo;
    std::vector<Fragment> m_fragments;
    bool m_ended = false;
    std::jthread m_thread;
};

}  // namespace quillet
