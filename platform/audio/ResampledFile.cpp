#include "platform/audio/ResampledFile.h"

#include "platform/base/Require.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <utility>

namespace quillet {
namespace {

/// What of the signal before a frame has a part in it, with room to spare.
constexpr std::int64_t reachFrames = 1024;
constexpr std::size_t inputFrames = 1024;

std::int64_t scaledUp(std::int64_t frames, std::int64_t step, std::int64_t fileStep)
{
    return (frames * step + fileStep - 1) / fileStep;
}

}  // namespace

ResampledFile::ResampledFile(std::shared_ptr<AudioFile> file, int sampleRate)
    : m_file(std::move(file)),
      m_sampleRate(sampleRate),
      m_length(std::max<std::int64_t>(1, m_file->length() * sampleRate / m_file->sampleRate())),
      m_fileStep(m_file->sampleRate() / std::gcd(m_file->sampleRate(), sampleRate)),
      m_step(sampleRate / std::gcd(m_file->sampleRate(), sampleRate))
{
}

std::int64_t ResampledFile::read(std::int64_t firstFrame, std::span<float> stereo)
{
    const std::int64_t count = std::clamp<std::int64_t>(m_length - firstFrame, 0, static_cast<std::int64_t>(stereo.size()) / 2);
    if (count == 0)
        return 0;
    // A short way on is quicker to go than to enter again.
    if (firstFrame < m_next || firstFrame > m_next + reachFrames || m_next < 0)
        enterAt(firstFrame);
    std::array<float, 512> skipped{};
    while (m_next < firstFrame)
        makeFrames(std::span(skipped).first(2 * std::min<std::size_t>(256, static_cast<std::size_t>(firstFrame - m_next))));
    makeFrames(stereo.first(static_cast<std::size_t>(2 * count)));
    return count;
}

/// Begins early enough for `frame` to have all of its past.
void ResampledFile::enterAt(std::int64_t frame)
{
    if (m_resampler == nullptr)
        m_resampler = std::make_unique<Resampler>(m_file->sampleRate(), m_sampleRate);
    else
        m_resampler->reset();
    const std::int64_t steps = std::max<std::int64_t>(0, frame - scaledUp(reachFrames, m_step, m_fileStep)) / m_step;
    m_next = steps * m_step;
    m_fileFrame = steps * m_fileStep;
    m_input.clear();
    m_used = 0;
}

/// The next frames, all of them: after the file's end it goes on as silence.
void ResampledFile::makeFrames(std::span<float> stereo)
{
    while (!stereo.empty()) {
        if (m_used == m_input.size()) {
            m_input.resize(2 * inputFrames);
            const std::int64_t got = m_fileFrame < m_file->length() ? m_file->read(m_fileFrame, m_input) : 0;
            std::fill(m_input.begin() + 2 * got, m_input.end(), 0.0F);
            m_fileFrame += static_cast<std::int64_t>(inputFrames);
            m_used = 0;
        }
        const auto [taken, made] = m_resampler->process(std::span(m_input).subspan(m_used), stereo);
        m_used += static_cast<std::size_t>(2 * taken);
        m_next += made;
        stereo = stereo.subspan(static_cast<std::size_t>(2 * made));
    }
}

}  // namespace quillet
