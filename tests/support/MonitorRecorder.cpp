#include "tests/support/MonitorRecorder.h"

#include "tests/support/SignalAnalysis.h"

#include <algorithm>
#include <iterator>
#include <memory>

#include <pulse/simple.h>

namespace quillet {

MonitorRecorder::MonitorRecorder(const TestSoundServer& server)
    : m_sampleRate(server.sinkRate())
{
    const pa_sample_spec format{ PA_SAMPLE_FLOAT32LE, static_cast<std::uint32_t>(m_sampleRate), 2 };
    const auto fragmentBytes = static_cast<std::uint32_t>(pa_usec_to_bytes(5'000, &format));
    constexpr auto unset = static_cast<std::uint32_t>(-1);
    const pa_buffer_attr buffer{ unset, unset, unset, unset, fragmentBytes };
    pa_simple* const stream = pa_simple_new(server.address().c_str(), "quillet test", PA_STREAM_RECORD,
                                            TestSoundServer::monitorName, "monitor", &format, nullptr, &buffer, nullptr);
    REQUIRE(stream != nullptr);
    m_thread = std::jthread([this, stream](const std::stop_token& stop) { run(stop, stream); });
    std::unique_lock lock(m_mutex);
    m_arrived.wait(lock, [this] { return m_ended || !m_fragments.empty(); });
}

void MonitorRecorder::run(const std::stop_token& stop, pa_simple* opened)
{
    const std::unique_ptr<pa_simple, decltype(&pa_simple_free)> stream(opened, &pa_simple_free);
    std::vector<float> fragment(static_cast<std::size_t>(2 * (m_sampleRate / 200)));
    while (!stop.stop_requested()) {
        const bool read = pa_simple_read(stream.get(), fragment.data(), fragment.size() * sizeof(float), nullptr) >= 0;
        const std::scoped_lock lock(m_mutex);
        if (read) {
            m_fragments.push_back({ std::ssize(m_stereo) / 2, Clock::now() });
            m_stereo.insert(m_stereo.end(), fragment.begin(), fragment.end());
        }
        m_ended = !read;
        m_arrived.notify_all();
        if (!read)
            return;
    }
}

std::vector<float> MonitorRecorder::stereo() const
{
    const std::scoped_lock lock(m_mutex);
    return m_stereo;
}

std::int64_t MonitorRecorder::frameCount() const
{
    const std::scoped_lock lock(m_mutex);
    return std::ssize(m_stereo) / 2;
}

MonitorRecorder::Clock::time_point MonitorRecorder::timeOf(std::int64_t frame) const
{
    const std::scoped_lock lock(m_mutex);
    REQUIRE(frame >= 0 && frame < std::ssize(m_stereo) / 2);
    const auto fragment = std::prev(std::ranges::upper_bound(m_fragments, frame, {}, &Fragment::firstFrame));
    const std::chrono::duration<double> behind(static_cast<double>(frame - fragment->firstFrame) / m_sampleRate);
    return fragment->arrival + std::chrono::duration_cast<Clock::duration>(behind);
}

std::optional<std::int64_t> MonitorRecorder::waitForSound(std::int64_t from, Clock::duration limit, float threshold)
{
    std::unique_lock lock(m_mutex);
    std::optional<std::int64_t> sample;
    std::int64_t searched = 2 * from;
    m_arrived.wait_for(lock, limit, [&] {
        sample = firstSound(m_stereo, threshold, searched);
        searched = std::max(searched, std::ssize(m_stereo));
        return m_ended || sample;
    });
    return sample ? std::optional(*sample / 2) : std::nullopt;
}

}  // namespace quillet
