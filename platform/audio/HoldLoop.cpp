#include "platform/audio/HoldLoop.h"

#include "platform/audio/Ramp.h"
#include "platform/base/Require.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <vector>

namespace quillet {
namespace {

constexpr double wantedSeconds = 0.080;
constexpr double maxSeconds = 0.100;
constexpr double shortestPart = 0.6;
constexpr double minSeconds = 0.020;
/// What is compared: this much to either side of the start and of the end.
constexpr double contextSeconds = 0.020;
constexpr double fadeSeconds = 0.006;

/// The first search sees the sound at about this rate; the best lengths that it finds are searched again at the full one.
constexpr int coarseSampleRate = 11025;
constexpr std::size_t candidateCount = 5;
/// Where all lengths do, as in silence, the one nearest to wantedSeconds wins.
constexpr double leaning = 1e-4;

std::int64_t framesIn(double seconds, int sampleRate) { return std::llround(seconds * sampleRate); }

/// Interleaved stereo in which frame 0 is the held window's first; none is asked for beyond first() and end().
struct Sound {
    std::span<const float> stereo;
    std::int64_t startFrame;

    [[nodiscard]] std::int64_t first() const { return -startFrame; }
    [[nodiscard]] std::int64_t end() const { return std::ssize(stereo) / 2 - startFrame; }
    [[nodiscard]] std::span<const float> frames(std::int64_t from, std::int64_t count) const
    {
        return stereo.subspan(static_cast<std::size_t>(2 * (startFrame + from)), static_cast<std::size_t>(2 * count));
    }
    [[nodiscard]] float sample(std::int64_t frame, int channel) const
    {
        return frame < first() || frame >= end() ? 0 : stereo[static_cast<std::size_t>(2 * (startFrame + frame) + channel)];
    }
};

/// How alike two pieces are in shape and in level: 1 for the same, 0 for unrelated ones or silence.
double likeness(std::span<const float> one, std::span<const float> other)
{
    // Independent sums, so that the compiler can add several at a time.
    constexpr std::size_t lanes = 8;
    std::array<float, lanes> product{}, energy{};
    const std::size_t whole = one.size() - one.size() % lanes;
    for (std::size_t at = 0; at < whole; at += lanes)
        for (std::size_t lane = 0; lane < lanes; ++lane) {
            const float a = one[at + lane];
            const float b = other[at + lane];
            product[lane] += a * b;
            energy[lane] += a * a + b * b;
        }
    const double energies = std::reduce(energy.begin(), energy.end(), 0.0);
    return energies > 0 ? 2 * std::reduce(product.begin(), product.end(), 0.0) / energies : 0;
}

struct Candidate {
    std::int64_t length = 0;
    double score = 0;
};

class Search {
public:
    Search(Sound sound, int sampleRate)
        : m_sound(sound),
          m_context(framesIn(contextSeconds, sampleRate)),
          m_wanted(framesIn(wantedSeconds, sampleRate))
    {
    }

    [[nodiscard]] Candidate rated(std::int64_t length) const
    {
        const std::int64_t before = std::min(m_context, -m_sound.first());
        const std::int64_t after = std::clamp<std::int64_t>(m_sound.end() - length, 0, m_context);
        const double alike = likeness(m_sound.frames(-before, before + after), m_sound.frames(length - before, before + after));
        const auto off = static_cast<double>(std::abs(length - m_wanted)) / static_cast<double>(m_wanted);
        return { length, alike - leaning * off };
    }

    [[nodiscard]] std::vector<Candidate> ratedAll(std::int64_t shortest, std::int64_t longest) const
    {
        std::vector<Candidate> all;
        for (std::int64_t length = shortest; length <= longest; ++length)
            all.push_back(rated(length));
        return all;
    }

private:
    Sound m_sound;
    std::int64_t m_context;
    std::int64_t m_wanted;
};

bool isBetter(const Candidate& one, const Candidate& other) { return one.score > other.score; }

/// The highest peaks among neighbouring lengths, best first.
std::vector<Candidate> peaks(const std::vector<Candidate>& all)
{
    std::vector<Candidate> found;
    for (std::size_t i = 0; i < all.size(); ++i)
        if ((i == 0 || all[i].score >= all[i - 1].score) && (i + 1 == all.size() || all[i].score >= all[i + 1].score))
            found.push_back(all[i]);
    const std::size_t count = std::min(candidateCount, found.size());
    std::ranges::partial_sort(found, found.begin() + static_cast<std::ptrdiff_t>(count), isBetter);
    found.resize(count);
    return found;
}

/// Every `factor` frames averaged into one, so that a frame begins where the window does.
struct Coarse {
    Coarse(const Sound& fine, std::int64_t factor)
        : startFrame(-fine.first() / factor)
    {
        const std::int64_t count = startFrame + fine.end() / factor;
        stereo.resize(static_cast<std::size_t>(2 * count));
        const auto source = fine.frames(-startFrame * factor, count * factor);
        for (std::size_t i = 0; i < source.size(); ++i)
            stereo[2 * (i / 2 / static_cast<std::size_t>(factor)) + i % 2] += source[i];
    }

    std::vector<float> stereo;
    std::int64_t startFrame;
};

}  // namespace

std::int64_t holdLeadFrames(int sampleRate) { return framesIn(contextSeconds, sampleRate); }

std::int64_t holdSpanFrames(int sampleRate) { return 2 * holdLeadFrames(sampleRate) + framesIn(maxSeconds, sampleRate); }

std::int64_t holdLoopLength(std::span<const float> stereo, std::int64_t startFrame, int sampleRate)
{
    REQUIRE(sampleRate > 0 && startFrame >= 0 && 2 * startFrame <= std::ssize(stereo));
    const Sound sound{ stereo, startFrame };
    const std::int64_t longest = std::min(framesIn(maxSeconds, sampleRate), sound.end());
    const std::int64_t least = framesIn(minSeconds, sampleRate);
    if (longest <= least)
        return least;
    const auto shortest = static_cast<std::int64_t>(std::ceil(shortestPart * static_cast<double>(longest)));

    const std::int64_t factor = std::max(1, sampleRate / coarseSampleRate);
    const Coarse coarse(sound, factor);
    const Search fineSearch(sound, sampleRate);
    const Search coarseSearch({ coarse.stereo, coarse.startFrame }, static_cast<int>(sampleRate / factor));
    Candidate best{ std::clamp(framesIn(wantedSeconds, sampleRate), shortest, longest), -2 };
    for (const Candidate& peak : peaks(coarseSearch.ratedAll(shortest / factor, longest / factor)))
        for (const Candidate& candidate :
             fineSearch.ratedAll(std::max(shortest, (peak.length - 1) * factor), std::min(longest, (peak.length + 1) * factor)))
            best = std::max(best, candidate, [](const auto& one, const auto& other) { return isBetter(other, one); });
    return best.length;
}

void makeHoldLoop(std::span<const float> stereo, std::int64_t startFrame, int sampleRate, std::span<float> loop)
{
    REQUIRE(sampleRate > 0 && startFrame >= 0 && 2 * startFrame <= std::ssize(stereo));
    const Sound sound{ stereo, startFrame };
    const std::int64_t length = std::ssize(loop) / 2;
    const std::int64_t fade = std::min(framesIn(fadeSeconds, sampleRate), length);
    for (std::int64_t frame = 0; frame < length; ++frame)
        for (int channel = 0; channel < 2; ++channel) {
            float value = sound.sample(frame, channel);
            if (const std::int64_t faded = frame - (length - fade); faded >= 0) {
                // Ahead of the file's first frame there is nothing to fade into: there the end of the loop bends to meet its
                // start.
                const float into = frame - length >= sound.first()
                    ? sound.sample(frame - length, channel)
                    : value + sound.sample(0, channel) - sound.sample(length, channel);
                value += (into - value) * rampWeight(faded, fade);
            }
            loop[static_cast<std::size_t>(2 * frame + channel)] = value;
        }
}

}  // namespace quillet
