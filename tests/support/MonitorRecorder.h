// Records everything that the test sound server's sink plays, silence included, and when. The recording begins when the
// constructor returns and ends with the recorder or the server; it is bit-exact, as sink and recording have one format.
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

namespace quillet {

class MonitorRecorder {
public:
    using Clock = std::chrono::steady_clock;

    explicit MonitorRecorder(const TestSoundServer& server);
    ~MonitorRecorder();
    MonitorRecorder(const MonitorRecorder&) = delete;
    MonitorRecorder& operator=(const MonitorRecorder&) = delete;

    /// Everything so far, left, right, left, ….
    [[nodiscard]] std::vector<float> stereo() const;
    [[nodiscard]] std::int64_t frameCount() const;
    /// When the frame was played: the arrival of the fragment that brought it, less what lay behind the frame in that fragment.
    /// Fragments are about 5 ms long and arrive late, never early, by what the machine's load makes of it.
    [[nodiscard]] Clock::time_point timeOf(std::int64_t frame) const;
    /// The first frame that was played at or after `time`; frameCount() if none was yet.
    [[nodiscard]] std::int64_t frameAt(Clock::time_point time) const;
    /// Whether the server has gone.
    [[nodiscard]] bool hasEnded() const;

    /// Waits until that many frames more are recorded. False if the server ended, or ten seconds longer passed than it should take.
    bool record(std::int64_t frames);
    /// Waits for a frame at or behind `from` in which either channel is louder than `threshold`.
    std::optional<std::int64_t> waitForSound(std::int64_t from, Clock::duration limit, float threshold = 0);

private:
    struct Fragment {
        std::int64_t endFrame;
        Clock::time_point arrival;
    };

    void run(const std::stop_token& stop, void* stream);

    const int m_sampleRate;
    mutable std::mutex m_mutex;
    std::condition_variable m_arrived;
    std::vector<float> m_stereo;
    std::vector<Fragment> m_fragments;
    bool m_ended = false;
    std::jthread m_thread;
};

}  // namespace quillet
