#include "app/waveform/WaveformGenerator.h"

#include "platform/media/FfmpegAmplitudeReader.h"
#include "tests/support/AudioFixtures.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace quillet {
namespace {

using Peaks = std::expected<std::vector<float>, WaveformError>;
using testing::Each;

class WaveformGeneratorTest : public testing::Test {
protected:
    Peaks extract(const FilePath& path, int threads = 2)
    {
        m_fractions.clear();
        m_lastMessage.clear();
        return WaveformGenerator::extract({ m_opener, threads, {} }, path, [&](double fraction, const std::string& message) {
            m_fractions.push_back(fraction);
            m_lastMessage = message;
        });
    }

    TemporaryFolder m_folder;
    FfmpegAmplitudeReaderOpener m_opener;
    std::vector<double> m_fractions;
    std::string m_lastMessage;
};

/// The definition, word for word, from what another decoder makes of the file.
std::vector<float> expectedPeaks(const std::vector<float>& samples, std::size_t channels)
{
    const std::size_t frames = samples.size() / channels;
    const std::size_t bucket = std::max<std::size_t>(frames / 2000, 1);
    std::vector<float> means;
    for (std::size_t begin = 0; begin < frames; begin += bucket) {
        const std::size_t end = std::min(begin + bucket, frames);
        double sum = 0;
        for (std::size_t i = begin; i < end; ++i) {
            double mono = 0;
            for (std::size_t channel = 0; channel < channels; ++channel)
                mono += samples[i * channels + channel];
            sum += std::abs(mono / static_cast<double>(channels));
        }
        means.push_back(static_cast<float>(sum / static_cast<double>(end - begin)));
    }
    const float largest = *std::ranges::max_element(means);
    for (float& mean : means)
        mean /= largest;
    return means;
}

TEST_F(WaveformGeneratorTest, PeaksAreTheMeanAmplitudesOfTheDecodedSound)
{
    // One format that is entered anywhere by arithmetic, one that needs its index, and one channel alone.
    for (const auto& [name, channels] : { std::pair("wave.wav", 2), { "song.mp3", 2 }, { "song.opus", 1 } }) {
        SCOPED_TRACE(name);
        const FilePath path = m_folder / name;
        encodeAudio(livelySignal(48'000, channels, 11.3), path, {});
        const Peaks sequential = extract(path, 1);
        ASSERT_TRUE(sequential);
        EXPECT_EQ(*std::ranges::max_element(*sequential), 1.0F);
        EXPECT_THAT(*sequential,
                    testing::Pointwise(testing::FloatNear(1e-4F),
                                       expectedPeaks(decodeWithFfmpeg(path), static_cast<std::size_t>(channels))));
        const Peaks parallel = extract(path, 3);
        ASSERT_TRUE(parallel);
        EXPECT_EQ(*parallel, *sequential);
        EXPECT_TRUE(std::ranges::is_sorted(m_fractions));
        EXPECT_EQ(m_fractions.back(), 1.0);
        EXPECT_EQ(m_lastMessage, "Generating waveform... 100%");
    }
}

TEST_F(WaveformGeneratorTest, ShortAndSilentFilesKeepTheirShape)
{
    encodeAudio({ 44'100, 1, std::vector<float>(1500, 0.5F) }, m_folder / "brief.wav", {});
    const Peaks brief = extract(m_folder / "brief.wav");
    ASSERT_TRUE(brief);
    EXPECT_EQ(brief->size(), 1500);
    EXPECT_EQ(m_lastMessage, "Generating waveform... 75%");

    encodeAudio({ 44'100, 2, std::vector<float>(2 * 4001, 0.0F) }, m_folder / "silent.wav", {});
    const Peaks silent = extract(m_folder / "silent.wav");
    ASSERT_TRUE(silent);
    EXPECT_EQ(silent->size(), 2001) << "2000 buckets of two frames, and the one that is left";
    EXPECT_THAT(*silent, Each(0.0F));
}

TEST_F(WaveformGeneratorTest, FilesWithoutSoundAreRefusedByKind)
{
    const auto errorOf = [&](const FilePath& path) {
        const Peaks peaks = extract(path);
        return peaks ? std::optional<WaveformError>() : peaks.error();
    };
    runFfmpeg({ "-f", "lavfi", "-i", "testsrc2=d=0.2:s=64x48", "-c:v", "mpeg4", m_folder / "film.mp4" });
    EXPECT_EQ(errorOf(m_folder / "film.mp4"), WaveformError::noAudioTrack);
    encodeAudio({ 44'100, 2, {} }, m_folder / "empty.wav", {});
    EXPECT_EQ(errorOf(m_folder / "empty.wav"), WaveformError::readFailed);
    EXPECT_EQ(errorOf(m_folder / "gone.wav"), WaveformError::unreadableFile);
}

TEST_F(WaveformGeneratorTest, FileCutShortWhileItIsReadIsSilentFromThere)
{
    const FilePath path = m_folder / "cut.wav";
    encodeAudio({ 44'100, 1, std::vector<float>(400'000, 0.5F) }, path, {});
    const Peaks peaks = WaveformGenerator::extract({ m_opener, 1, {} }, path, [&](double fraction, const std::string&) {
        if (fraction == 0.25)
            std::filesystem::resize_file(path, 400'000);
    });
    ASSERT_TRUE(peaks);
    EXPECT_EQ(peaks->size(), 2000);
    EXPECT_EQ((*peaks)[500], 1.0F);
    EXPECT_EQ((*peaks)[1900], 0.0F);
}

TEST_F(WaveformGeneratorTest, EndOfTheProgramCallsItOff)
{
    const FilePath path = m_folder / "long.wav";
    encodeAudio({ 44'100, 1, std::vector<float>(100'000, 0.5F) }, path, {});
    std::stop_source programEnds;
    int calls = 0;
    const Peaks peaks =
        WaveformGenerator::extract({ m_opener, 1, programEnds.get_token() }, path, [&](double, const std::string&) {
            ++calls;
            programEnds.request_stop();
        });
    EXPECT_EQ(peaks.error(), WaveformError::readFailed);
    EXPECT_EQ(calls, 1);
}

}  // namespace
}  // namespace quillet
