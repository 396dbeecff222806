#include "platform/media/FfmpegAudioFile.h"

#include "platform/base/Require.h"
#include "platform/media/FfmpegAmplitudeReader.h"
#include "tests/support/AudioFixtures.h"
#include "tests/support/SignalAnalysis.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace quillet {
namespace {

constexpr double tooCoarseToTell = 0;

struct Format {
    /// Sample rate, channels, what is special, container.
    const char* name;
    int sampleRate;
    int channels;
    std::vector<std::string> arguments;
    /// Frames that encoder and container put before the source's first frame, and the likeness to the source that the encoding
    /// leaves.
    std::int64_t delay = 0;
    double likeness = 0.9;
    /// For the ffmpeg command, where it decodes otherwise by default.
    std::vector<std::string> decoderArguments = {};
};

std::ostream& operator<<(std::ostream& out, const Format& format) { return out << format.name; }

std::vector<Format> formats()
{
    const std::vector<std::string> aac{ "-c:a", "aac", "-aac_pns", "0", "-b:a", "160k" };
    const auto film = [&](const char* container, const std::vector<std::string>& audio) {
        std::vector<std::string> arguments{ "-f", "lavfi", "-i", "testsrc2=d=12:s=64x48:r=10", "-map", "0:a", "-map", "1:v" };
        arguments.insert(arguments.end(), audio.begin(), audio.end());
        arguments.insert(arguments.end(), { "-c:v", "mpeg4", "-f", container });
        return arguments;
    };
    return {
        { "44100-2-u8.wav", 44100, 2, { "-c:a", "pcm_u8" } },
        { "44100-1-s16.wav", 44100, 1, { "-c:a", "pcm_s16le" } },
        { "48000-2-s24.wav", 48000, 2, { "-c:a", "pcm_s24le" } },
        { "96000-2-s32.wav", 96000, 2, { "-c:a", "pcm_s32le" } },
        { "192000-1-f32.wav", 192000, 1, { "-c:a", "pcm_f32le" } },
        { "48000-6-s16.wav", 48000, 6, { "-c:a", "pcm_s16le" } },
        { "22050-2-adpcm.wav", 22050, 2, { "-c:a", "adpcm_ima_wav" } },
        { "44100-2-s16.aiff", 44100, 2, { "-c:a", "pcm_s16be" } },
        { "8000-1-s24.aiff", 8000, 1, { "-c:a", "pcm_s24be" } },
        { "44100-2.flac", 44100, 2, {} },
        { "192000-2.flac", 192000, 2, {} },
        { "44100-2-in-ogg.ogg", 44100, 2, { "-c:a", "flac" } },
        { "44100-2-cbr.mp3", 44100, 2, { "-b:a", "128k" } },
        { "48000-1-vbr.mp3", 48000, 1, { "-q:a", "6" } },
        { "44100-2-vbr-no-xing.mp3", 44100, 2, { "-q:a", "4", "-write_xing", "0" }, 1105 },
        { "24000-2-8k.mp3", 24000, 2, { "-b:a", "8k" }, 0, tooCoarseToTell },
        { "44100-2.m4a", 44100, 2, aac },
        { "48000-6.m4a", 48000, 6, aac },
        { "8000-1.m4a", 8000, 1, { "-c:a", "aac", "-aac_pns", "0" } },
        { "44100-2-alac.m4a", 44100, 2, { "-c:a", "alac" } },
        { "44100-2.ogg", 44100, 2, { "-c:a", "libvorbis", "-q:a", "3" } },
        { "96000-1.ogg", 96000, 1, { "-c:a", "libvorbis" } },
        { "48000-2.opus", 48000, 2, { "-c:a", "libopus", "-b:a", "96k" } },
        { "48000-1.opus", 48000, 1, { "-c:a", "libopus", "-b:a", "64k" } },
        { "44100-2.wv", 44100, 2, {} },
        { "44100-2.tta", 44100, 2, {} },
        { "48000-2-opus.mka", 48000, 2, { "-c:a", "libopus", "-b:a", "96k" } },
        { "44100-2-vorbis.webm", 44100, 2, { "-c:a", "libvorbis" } },
        { "44100-2.wma", 44100, 2, { "-c:a", "wmav2", "-b:a", "192k" }, -2048 },
        { "44100-2.ac3", 44100, 2, { "-b:a", "192k" }, 256, 0.9, { "-cons_noisegen", "1" } },
        { "44100-2-adts.aac", 44100, 2, aac, 1024 },
        { "48000-2-film.mp4", 48000, 2, film("mp4", aac) },
        { "44100-2-film.mkv", 44100, 2, film("matroska", aac), 1024 },
    };
}

std::unique_ptr<AudioFile> opened(const FilePath& path)
{
    FfmpegAudioFileOpener opener;
    auto file = opener.open(path);
    REQUIRE(file.has_value());
    return std::move(*file);
}

std::vector<float> readFrames(AudioFile& file, std::int64_t first, std::int64_t count)
{
    std::vector<float> stereo(static_cast<std::size_t>(2 * count));
    const std::int64_t got = file.read(first, stereo);
    stereo.resize(static_cast<std::size_t>(2 * got));
    return stereo;
}

/// From the start to the end in blocks of a length that divides nothing.
std::vector<float> readInOrder(AudioFile& file)
{
    std::vector<float> all;
    for (;;) {
        const auto block = readFrames(file, static_cast<std::int64_t>(all.size() / 2), 3001);
        if (block.empty())
            return all;
        all.insert(all.end(), block.begin(), block.end());
    }
}

std::vector<float> slice(const std::vector<float>& stereo, std::int64_t first, std::int64_t count)
{
    return { stereo.begin() + 2 * first, stereo.begin() + 2 * (first + count) };
}

void expectJumpsToAgree(AudioFile& file, const std::vector<float>& inOrder)
{
    std::mt19937 random(3);
    const std::int64_t length = file.length();
    for (int jump = 0; jump < 30; ++jump) {
        const std::int64_t limit = jump % 5 == 0 ? std::min<std::int64_t>(4000, length) : length;
        std::int64_t first = random() % limit;
        if (jump % 10 == 5)
            first = length - 1 - first;
        const std::int64_t count = std::min<std::int64_t>(std::array{ 1, 64, 4096, 20'000 }[random() % 4], length - first);
        ASSERT_EQ(readFrames(file, first, count), slice(inOrder, first, count)) << "jump " << jump << " to " << first;
    }
}

class EveryFormat : public testing::TestWithParam<Format> {
protected:
    TemporaryFolder m_folder;
};

TEST_P(EveryFormat, ReadsAsDecodedFromTheStartWhereverEntered)
{
    const Format& format = GetParam();
    const TestSignal source = livelySignal(format.sampleRate, format.channels, format.sampleRate > 100'000 ? 5 : 12);
    const FilePath path = m_folder / format.name;
    encodeAudio(source, path, format.arguments);

    const auto file = opened(path);
    EXPECT_EQ(file->sampleRate(), format.sampleRate);
    EXPECT_EQ(file->channelCount(), format.channels);
    const std::vector<float> inOrder = readInOrder(*file);
    ASSERT_EQ(static_cast<std::int64_t>(inOrder.size() / 2), file->length());

    const std::vector<float> decoded = decodeWithFfmpeg(path, format.decoderArguments);
    ASSERT_EQ(file->length(), static_cast<std::int64_t>(decoded.size()) / format.channels);
    if (format.channels == 2) {
        EXPECT_TRUE(inOrder == decoded);
    } else if (format.channels == 1) {
        EXPECT_TRUE(channelOf(inOrder, 0) == decoded);
        EXPECT_TRUE(channelOf(inOrder, 1) == decoded);
    }
    expectJumpsToAgree(*file, inOrder);

    if (format.channels <= 2 && format.likeness != tooCoarseToTell) {
        constexpr std::int64_t slack = 2500;
        const std::int64_t middle = source.frames() / 2;
        for (int channel = 0; channel < 2; ++channel) {
            std::vector<float> original;
            for (std::int64_t frame = middle; frame < middle + 3000; ++frame)
                original.push_back(
                    source.samples[static_cast<std::size_t>(frame * format.channels + channel % format.channels)]);
            const auto found = findIn(channelOf(slice(inOrder, middle - slack, 2 * slack + 3000), channel), original);
            EXPECT_EQ(found.offset - slack, format.delay) << "channel " << channel;
            EXPECT_GT(found.correlation, format.likeness) << "channel " << channel;
        }
    }
}

std::string nameOf(const testing::TestParamInfo<Format>& info)
{
    std::string name = info.param.name;
    std::ranges::replace_if(name, [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
    return name;
}

TEST_P(EveryFormat, AmplitudesAreThoseOfTheSoundWhereverEntered)
{
    const Format& format = GetParam();
    const FilePath path = m_folder / format.name;
    encodeAudio(livelySignal(format.sampleRate, format.channels, 4), path, format.arguments);
    const std::vector<float> inOrder = readInOrder(*opened(path));
    const auto opening = FfmpegAmplitudeReaderOpener().open(path);
    ASSERT_TRUE(opening);
    AmplitudeReader& reader = **opening;
    ASSERT_EQ(2 * reader.length(), static_cast<std::int64_t>(inOrder.size()));

    const auto expectSums = [&](std::int64_t first, std::int64_t step) {
        reader.enter(first);
        for (std::int64_t begin = first; begin < reader.length(); begin += step) {
            const std::int64_t frames = std::min(step, reader.length() - begin);
            double expected = 0;
            for (std::int64_t i = 2 * begin; i < 2 * (begin + frames); i += 2)
                expected += std::abs(inOrder[static_cast<std::size_t>(i)] + inOrder[static_cast<std::size_t>(i + 1)]) / 2;
            // What is left out when floats become integers.
            ASSERT_NEAR(reader.sum(frames), expected, static_cast<double>(frames) * 0x1p-23 + 1e-9) << "from " << begin;
        }
    };
    expectSums(0, 3001);
    expectSums(reader.length() / 2 + 13, 10'000);
    if (reader.entersAnywhere()) {
        reader.enter(reader.length() / 3);
        const double whole = reader.sum(9000);
        reader.enter(reader.length() / 3);
        const double first = reader.sum(4999);
        EXPECT_EQ(first + reader.sum(4001), whole);
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, EveryFormat, testing::ValuesIn(formats()), nameOf);

// Each container channel alone: what of it reaches the left and the right.
TEST(ChannelsTest, SurroundIsMixedToItsSidesWithoutClipping)
{
    const TemporaryFolder folder;
    constexpr std::int64_t channels = 6;
    constexpr std::int64_t framesEach = 2000;
    TestSignal source{ 48'000, channels, std::vector<float>(channels * (channels + 1) * framesEach) };
    for (std::int64_t frame = 0; frame < (channels + 1) * framesEach; ++frame)
        for (std::int64_t channel = 0; channel < channels; ++channel)
            if (frame / framesEach == channel || frame / framesEach == channels)
                source.samples.at(frame * channels + channel) = 1;
    writeBytes(folder / "48000-6.wav", wavBytes(source, WavSamples::float32));
    const auto file = opened(folder / "48000-6.wav");
    const auto levels = [&](std::int64_t channel) {
        const auto stereo = readFrames(*file, channel * framesEach + framesEach / 2, 1);
        return std::pair(stereo[0], stereo[1]);
    };
    const auto [frontLeft, none] = levels(0);
    EXPECT_GT(frontLeft, 0.3F);
    EXPECT_EQ(levels(0), std::pair(frontLeft, 0.0F));
    EXPECT_EQ(levels(1), std::pair(0.0F, frontLeft));
    EXPECT_EQ(levels(2).first, levels(2).second);
    EXPECT_NEAR(levels(2).first, frontLeft * std::sqrt(0.5F), 1e-4);
    EXPECT_NEAR(levels(4).first, frontLeft * std::sqrt(0.5F), 1e-4);
    EXPECT_EQ(levels(4), std::pair(levels(5).second, levels(5).first));
    EXPECT_LE(levels(channels).first, 1.0001F) << "all channels at full scale";
}

TEST(DamageTest, SoundBehindADamagedPlaceKeepsItsPlace)
{
    const TemporaryFolder folder;
    const TestSignal source = livelySignal(44'100, 2, 12);
    const std::array<std::pair<const char*, std::vector<std::string>>, 5> cases{ {
        { "44100-2.flac", {} },
        { "44100-2.mp3", { "-b:a", "128k" } },
        { "44100-2.m4a", { "-c:a", "aac", "-aac_pns", "0", "-movflags", "+faststart" } },
        { "44100-2.ogg", { "-c:a", "libvorbis" } },
        { "44100-2.wav", {} },
    } };
    for (const auto& [name, arguments] : cases) {
        SCOPED_TRACE(name);
        encodeAudio(source, folder / name, arguments);
        const auto whole = opened(folder / name);
        const auto expected = readInOrder(*whole);
        std::string bytes = readBytes(folder / name);
        // In a bare stream the headers are the only clock: only what follows one is hit there.
        const std::size_t header =
            std::string_view(name).ends_with(".mp3") ? bytes.find("\xFF\xFB", bytes.size() / 2) : bytes.size() / 2;
        for (std::size_t i = header + 60; i < header + 260; ++i)
            bytes[i] = static_cast<char>(~bytes[i]);
        writeBytes(folder / name, bytes);

        const auto damaged = opened(folder / name);
        ASSERT_EQ(damaged->length(), whole->length());
        const auto inOrder = readInOrder(*damaged);
        const std::int64_t later = whole->length() * 2 / 3;
        const std::int64_t rest = whole->length() - later;
        EXPECT_FALSE(inOrder == expected) << "nothing was damaged";
        EXPECT_TRUE(slice(inOrder, later, rest) == slice(expected, later, rest));
        EXPECT_TRUE(readFrames(*damaged, later, rest) == slice(expected, later, rest));
    }
}

TEST(DamageTest, TruncatedFileIsAsLongAsWhatDecodes)
{
    const TemporaryFolder folder;
    const TestSignal source = livelySignal(44'100, 2, 12);
    for (const char* name : { "a.wav", "a.aiff", "a.flac", "a.mp3", "a.m4a", "a.ogg", "a.opus", "a.mka" }) {
        SCOPED_TRACE(name);
        const FilePath path = folder / name;
        encodeAudio(source, path, { "-aac_pns", "0", "-movflags", "+faststart" });
        const std::string bytes = readBytes(path);
        for (const double part : { 0.3, 0.55, 0.951 }) {
            writeBytes(path,
                       std::string_view(bytes).substr(0, static_cast<std::size_t>(part * static_cast<double>(bytes.size()))));
            const auto file = opened(path);
            const auto inOrder = readInOrder(*file);
            EXPECT_EQ(file->length(), static_cast<std::int64_t>(decodeWithFfmpeg(path).size() / 2)) << part;
            EXPECT_EQ(static_cast<std::int64_t>(inOrder.size() / 2), file->length()) << part;
            expectJumpsToAgree(*file, inOrder);
        }
    }
}

// An index of minutes, and sound for one: the end is found by search, far from where the index has it.
TEST(DamageTest, EndOfAMuchTruncatedFileIsFound)
{
    const TemporaryFolder folder;
    const FilePath path = folder / "8000-1.m4a";
    encodeAudio(livelySignal(8000, 1, 150), path, { "-c:a", "aac", "-aac_pns", "0", "-movflags", "+faststart" });
    const std::string bytes = readBytes(path);
    writeBytes(path, std::string_view(bytes).substr(0, bytes.size() / 3));
    EXPECT_EQ(opened(path)->length(), static_cast<std::int64_t>(decodeWithFfmpeg(path).size()));
}

TEST(DamageTest, SamplesThatAreNoNumbersReadAsSilence)
{
    const TemporaryFolder folder;
    TestSignal source{ 44'100, 2, std::vector<float>(2000, 1.5F) };
    source.samples[500] = std::numeric_limits<float>::quiet_NaN();
    source.samples[501] = std::numeric_limits<float>::infinity();
    source.samples[502] = -1e30F;
    writeBytes(folder / "44100-2-f32.wav", wavBytes(source, WavSamples::float32));
    const auto file = opened(folder / "44100-2-f32.wav");
    EXPECT_THAT(readFrames(*file, 250, 2), testing::ElementsAre(0, 0, 0, 1.5F));
}

}  // namespace
}  // namespace quillet
