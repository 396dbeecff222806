#include "platform/audio/PassReader.h"

#include "platform/audio/HoldLoop.h"

#include <algorithm>

namespace quillet {

void PassReader::begin(const Pass& pass, int sampleRate)
{
    const bool goesOn = pass.held && m_pass.held && m_loopFrames > 0 && pass.segment == m_pass.segment;
    m_phase = goesOn ? (m_phase + m_pass.segment.count) % m_loopFrames : 0;
    m_pass = pass;
    if (pass.held && !goesOn)
        makeLoops(sampleRate);
}

void PassReader::makeLoops(int sampleRate)
{
    const std::int64_t start = std::min(m_pass.segment.start, holdLeadFrames(sampleRate));
    const std::int64_t first = m_pass.segment.start - start;
    const auto samples = static_cast<std::size_t>(2 * holdSpanFrames(sampleRate));
    std::vector<std::vector<float>> windows(m_sources.size(), std::vector<float>(samples));
    std::vector<float> sum(samples);
    for (std::size_t source = 0; source < m_sources.size(); ++source) {
        readFile(source, first, windows[source]);
        std::ranges::transform(sum, windows[source], sum.begin(), std::plus());
    }
    m_loopFrames = holdLoopLength(sum, start, sampleRate);
    m_loops.assign(m_sources.size(), std::vector<float>(static_cast<std::size_t>(2 * m_loopFrames)));
    for (std::size_t source = 0; source < m_sources.size(); ++source)
        makeHoldLoop(windows[source], start, sampleRate, m_loops[source]);
}

void PassReader::read(std::size_t source, std::int64_t first, std::span<float> stereo) const
{
    if (!m_pass.held) {
        readFile(source, m_pass.segment.start + first, stereo);
        return;
    }
    const std::vector<float>& loop = m_loops[source];
    auto at = static_cast<std::size_t>(2 * ((m_phase + first) % m_loopFrames));
    for (float& sample : stereo) {
        sample = loop[at];
        at = at + 1 == loop.size() ? 0 : at + 1;
    }
}

void PassReader::readLead(std::size_t source, const Pass& next, std::span<float> stereo) const
{
    const auto frames = static_cast<std::int64_t>(stereo.size()) / 2;
    const std::int64_t missing = std::clamp<std::int64_t>(frames - next.segment.start, 0, frames);
    std::fill_n(stereo.begin(), 2 * missing, 0.0F);
    readFile(source, std::max<std::int64_t>(0, next.segment.start - frames),
             stereo.subspan(static_cast<std::size_t>(2 * missing)));
}

void PassReader::readFile(std::size_t source, std::int64_t fileFrame, std::span<float> stereo) const
{
    AudioFile& file = *m_sources[source].file;
    const std::int64_t got = stereo.empty() || fileFrame >= file.length() ? 0 : file.read(fileFrame, stereo);
    std::fill(stereo.begin() + 2 * got, stereo.end(), 0.0F);
}

}  // namespace quillet
