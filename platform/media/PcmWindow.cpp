#include "platform/media/PcmWindow.h"

#include "platform/base/Require.h"

#include <algorithm>

namespace quillet {

PcmWindow::PcmWindow(std::int64_t capacity)
    : m_capacity(capacity),
      m_frames(2 * static_cast<std::size_t>(capacity))
{
    REQUIRE(capacity >= 1);
}

void PcmWindow::restart(std::int64_t position)
{
    m_begin = position;
    m_end = position;
}

void PcmWindow::advance(std::int64_t frames)
{
    m_end += frames;
    m_begin = std::max(m_begin, m_end - m_capacity);
}

void PcmWindow::append(std::span<const float> stereo)
{
    while (!stereo.empty()) {
        const std::int64_t at = slot(m_end);
        const std::int64_t frames = std::min(static_cast<std::int64_t>(stereo.size() / 2), m_capacity - at);
        const auto piece = stereo.first(2 * static_cast<std::size_t>(frames));
        std::ranges::copy(piece, m_frames.begin() + 2 * at);
        advance(frames);
        stereo = stereo.subspan(piece.size());
    }
}

void PcmWindow::appendSilence(std::int64_t frames)
{
    for (std::int64_t left = frames; left > 0;) {
        const std::int64_t at = slot(m_end);
        const std::int64_t piece = std::min(left, m_capacity - at);
        std::fill_n(m_frames.begin() + 2 * at, 2 * piece, 0.0F);
        advance(piece);
        left -= piece;
    }
}

std::int64_t PcmWindow::copy(std::int64_t position, std::span<float> stereo) const
{
    REQUIRE(contains(position));
    const std::int64_t total = std::min(static_cast<std::int64_t>(stereo.size() / 2), m_end - position);
    for (std::int64_t done = 0; done < total;) {
        const std::int64_t at = slot(position + done);
        const std::int64_t frames = std::min(total - done, m_capacity - at);
        std::copy_n(m_frames.begin() + 2 * at, 2 * frames, stereo.begin() + 2 * done);
        done += frames;
    }
    return total;
}

}  // namespace quillet
