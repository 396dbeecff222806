#include "platform/media/FfmpegAudioFile.h"
#include "platform/base/Require.h"
#include "platform/media/FfmpegAmplitudeReader.h"
#include "tests/support/AudioFixtures.h"
#include "tests/support/SignalAnalysis.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <limits>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace quillet {
namespace {

constexpr double tooCoarseToTell = 0;
const std::vector<std::string> aac{ "-c:a", "aac", "-aac_pns", "0", "-b:a", "160k" };

struct Format {
    /// Sample rate, channels, what is special, container.
    const char* name;
    int sampleRate;
    int channels;
    std::vector<std::string> arguments = {};
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
    auto file = FfmpegAudioFileOpener().open(path);
    REQUIRE(file.has_value());
    return std::move(*file);
}

std::vector<float> readFrames(AudioFile& file, std::int64_t first, std::int64_t count)
{
    std::vector<float> stereo(static_cast<std::size_t>(2 * count));
    stereo.resize(static_cast<std::size_t>(2 * file.read(first, stereo)));
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

/// What an AmplitudeReader should make of these frames, and how far it may be off: floats become integers in it.
double amplitudeSum(const std::vector<float>& stereo, std::int64_t first, std::int64_t count)
{
    double sum = 0;
    for (auto i = static_cast<std::size_t>(2 * first); i < static_cast<std::size_t>(2 * (first + count)); i += 2)
        sum += std::abs(stereo[i] + stereo[i + 1]) / 2;
    return sum;
}
double amplitudeTolerance(std::int64_t count) { return static_cast<double>(count) * 0x1p-23 + 1e-9; }

/// The name of a case by its file's name.
std::string caseName(std::string fileName)
{
    std::ranges::replace_if(fileName, [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
    return fileName;
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

void expectAmplitudesToAgree(const FilePath& path, const std::vector<float>& inOrder)
{
    const auto opening = FfmpegAmplitudeReaderOpener().open(path);
    ASSERT_TRUE(opening);
    AmplitudeReader& reader = **opening;
    ASSERT_EQ(2 * reader.length(), std::ssize(inOrder));
    for (const auto& [first, step] : { std::pair<std::int64_t, std::int64_t>(0, 3001), { reader.length() / 2 + 13, 10'000 } }) {
        reader.enter(first);
        for (std::int64_t begin = first; begin < reader.length(); begin += step) {
            const std::int64_t frames = std::min(step, reader.length() - begin);
            ASSERT_NEAR(reader.sum(frames), amplitudeSum(inOrder, begin, frames), amplitudeTolerance(frames)) << begin;
        }
        reader.enter(first);
        for (std::int64_t begin = first; begin < reader.length(); begin += step / 3) {
            const auto sound = slice(inOrder, begin, std::min(step / 3, reader.length() - begin));
            const SoundSummary seen = reader.summary(std::ssize(sound) / 2);
            ASSERT_EQ(seen.lowest, std::ranges::min(sound)) << begin;
            ASSERT_EQ(seen.highest, std::ranges::max(sound)) << begin;
            const double squares = std::inner_product(sound.begin(), sound.end(), sound.begin(), 0.0);
            ASSERT_NEAR(seen.meanSquare, squares / static_cast<double>(sound.size()), 1e-5) << begin;
        }
    }
    if (reader.entersAnywhere()) {
        reader.enter(reader.length() / 3);
        const double whole = reader.sum(9000);
        reader.enter(reader.length() / 3);
        const double first = reader.sum(4999);
        EXPECT_EQ(first + reader.sum(4001), whole);
    }
}

class EveryFormat : public testing::TestWithParam<Format> { };

TEST_P(EveryFormat, ReadsAsDecodedFromTheStartWhereverEntered)
{
    const Format& format = GetParam();
    const TestSignal source = livelySignal(format.sampleRate, format.channels, format.sampleRate > 100'000 ? 5 : 12);
    const TemporaryFolder folder;
    const FilePath path = folder / format.name;
    encodeAudio(source, path, format.arguments);

    const auto file = opened(path);
    EXPECT_EQ(file->sampleRate(), format.sampleRate);
    EXPECT_EQ(file->channelCount(), format.channels);
    const std::vector<float> inOrder = readInOrder(*file);
    ASSERT_EQ(std::ssize(inOrder) / 2, file->length());

    const std::vector<float> decoded = decodeWithFfmpeg(path, format.decoderArguments);
    ASSERT_EQ(file->length(), std::ssize(decoded) / format.channels);
    for (int channel = 0; channel < 2 && format.channels <= 2; ++channel)
        EXPECT_TRUE(channelOf(inOrder, channel) == (format.channels == 2 ? channelOf(decoded, channel) : decoded));
    expectJumpsToAgree(*file, inOrder);
    expectAmplitudesToAgree(path, inOrder);

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

INSTANTIATE_TEST_SUITE_P(Formats, EveryFormat, testing::ValuesIn(formats()),
                         [](const auto& format) { return caseName(format.param.name); });

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
    encodeAudio(source, folder / "48000-6.wav", { "-c:a", "pcm_f32le" });
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
    const auto cut = [](const FilePath& path, double part) {
        std::filesystem::resize_file(path, static_cast<std::uintmax_t>(part * static_cast<double>(file_size(path))));
    };
    const TestSignal source = livelySignal(44'100, 2, 12);
    for (const char* name : { "a.wav", "a.aiff", "a.flac", "a.mp3", "a.m4a", "a.ogg", "a.opus", "a.mka" }) {
        SCOPED_TRACE(name);
        const FilePath path = folder / name;
        encodeAudio(source, path, { "-aac_pns", "0", "-movflags", "+faststart" });
        for (const double part : { 0.951, 0.58, 0.55 }) {
            cut(path, part);
            const auto file = opened(path);
            const auto inOrder = readInOrder(*file);
            EXPECT_EQ(file->length(), std::ssize(decodeWithFfmpeg(path)) / 2) << part;
            EXPECT_EQ(file->length(), std::ssize(inOrder) / 2) << part;
            expectJumpsToAgree(*file, inOrder);
        }
    }
    // An index of minutes, and sound for one: the end is found by search, far from where the index has it.
    const FilePath path = folder / "8000-1.m4a";
    encodeAudio(livelySignal(8000, 1, 150), path, { "-c:a", "aac", "-aac_pns", "0", "-movflags", "+faststart" });
    cut(path, 1.0 / 3);
    EXPECT_EQ(opened(path)->length(), std::ssize(decodeWithFfmpeg(path)));
}

TEST(LevelTest, FloatsFarOutOfRangeArePlayedAndDrawnAlike)
{
    struct Case {
        const char* level;
        const char* codec;
        double read;
        SampleLevel judged;
    };
    const TemporaryFolder folder;
    for (const auto& [level, codec, read, judged] : {
             Case{ "32000", "pcm_f32le", 32000 * 0x1p-15, SampleLevel::farAbove },
             Case{ "6000000", "pcm_f64le", 6e6 * 0x1p-23, SampleLevel::farAbove },
             Case{ "3", "pcm_f32le", 3, SampleLevel::usual },
             Case{ "0.0000001", "pcm_f32le", 1e-7, SampleLevel::farBelow },
         }) {
        const FilePath song = folder / "song.wav";
        runFfmpeg({ "-y", "-f", "lavfi", "-i", std::string("aevalsrc=") + level + "*sin(1000*t)*mod(t*10\\,2)/2:d=2:s=44100",
                    "-c:a", codec, song });
        const auto file = FfmpegAudioFileOpener().open(song);
        ASSERT_TRUE(file);
        EXPECT_EQ((*file)->level(), judged) << level;
        const auto sound = readInOrder(**file);
        EXPECT_NEAR(std::ranges::max(sound), read, read * 0.01) << level;
        const auto reader = FfmpegAmplitudeReaderOpener().open(song);
        ASSERT_TRUE(reader);
        (*reader)->enter(0);
        const double sum = amplitudeSum(sound, 0, (*file)->length());
        EXPECT_NEAR((*reader)->sum((*file)->length()), sum, sum * 1e-3) << level;
    }
}

TEST(DamageTest, SamplesThatAreNoNumbersReadAsSilence)
{
    const TemporaryFolder folder;
    TestSignal source{ 44'100, 2, std::vector<float>(2000, 1.5F) };
    source.samples[500] = std::numeric_limits<float>::quiet_NaN();
    source.samples[501] = std::numeric_limits<float>::infinity();
    source.samples[502] = -1e30F;
    encodeAudio(source, folder / "44100-2-f32.wav", { "-c:a", "pcm_f32le" });
    const auto file = opened(folder / "44100-2-f32.wav");
    EXPECT_THAT(readFrames(*file, 250, 2), testing::ElementsAre(0, 0, 0, 1.5F));
    const auto reader = FfmpegAmplitudeReaderOpener().open(folder / "44100-2-f32.wav");
    ASSERT_TRUE(reader);
    (*reader)->enter(0);
    EXPECT_EQ((*reader)->summary(250), (SoundSummary{ 1.5F, 1.5F, 2.25F }));
    EXPECT_EQ((*reader)->summary(2), (SoundSummary{ 0, 1.5F, 2.25F / 4 }));
}

constexpr std::int64_t blockFrames = 3001;

/// As long as it lives, every read of an open file fails. The refusals are real: in place of the file, its descriptor is given
/// one whose reads the system answers with EIO (this process's own memory, at addresses where there is none).
class FailingDisk {
public:
    explicit FailingDisk(const FilePath& path)
        : m_descriptor(descriptorOf(path)),
          m_file(::fcntl(m_descriptor, F_DUPFD_CLOEXEC, 0))
    {
        const int memory = ::open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
        REQUIRE(m_file >= 0 && memory >= 0 && ::dup2(memory, m_descriptor) == m_descriptor);
        ::close(memory);
    }
    ~FailingDisk()
    {
        REQUIRE(::dup2(m_file, m_descriptor) == m_descriptor);
        ::close(m_file);
    }
    FailingDisk(const FailingDisk&) = delete;
    FailingDisk& operator=(const FailingDisk&) = delete;

private:
    static int descriptorOf(const FilePath& path)
    {
        for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
            if (std::error_code none; std::filesystem::read_symlink(entry, none) == std::filesystem::path(path.c_str()))
                return std::stoi(entry.path().filename());
        return -1;
    }

    int m_descriptor;
    int m_file;
};

class DiskErrorTest : public testing::TestWithParam<Format> {
protected:
    DiskErrorTest()
        : m_path(m_folder / GetParam().name)
    {
        encodeAudio(livelySignal(GetParam().sampleRate, 2, 20), m_path, GetParam().arguments);
        m_expected = readInOrder(*opened(m_path));
        // Without what that one remembers.
        m_file = opened(m_path);
    }

    std::int64_t readBlock(std::int64_t first) { return m_file->read(first, m_block); }
    [[nodiscard]] bool isExact(std::int64_t first) const { return m_block == slice(m_expected, first, blockFrames); }
    /// Exact up to some frame, and silent from there on.
    [[nodiscard]] bool isExactThenSilent(std::int64_t first) const
    {
        std::size_t end = m_block.size();
        while (end > 0 && m_block[end - 1] == 0)
            --end;
        end = (end + 1) / 2 * 2;
        return end < m_block.size()
            && std::equal(m_block.begin(), m_block.begin() + static_cast<std::ptrdiff_t>(end), m_expected.begin() + 2 * first);
    }

    TemporaryFolder m_folder;
    FilePath m_path;
    std::vector<float> m_block = std::vector<float>(2 * blockFrames);
    std::vector<float> m_expected;
    std::unique_ptr<AudioFile> m_file;
};

// Reading on while the disk fails now and then, reading again what it refused, and a jump that it refuses.
TEST_P(DiskErrorTest, WhatTheDiskRefusesIsSilentOnceAndExactAgain)
{
    const std::int64_t length = m_file->length();
    std::int64_t refusedBlock = -1;
    std::int64_t errors = 0;
    for (std::int64_t first = 0; first + blockFrames <= length; first += blockFrames) {
        const bool fails = first / blockFrames % 40 >= 25 && first / blockFrames % 40 < 38;
        {
            const auto disk = fails ? std::make_unique<FailingDisk>(m_path) : nullptr;
            ASSERT_EQ(readBlock(first), blockFrames);
        }
        const bool refused = m_file->readErrors() > errors;
        ASSERT_TRUE(refused ? isExactThenSilent(first) : isExact(first)) << "from " << first << ", " << errors << " errors";
        ASSERT_FALSE(refused && !fails);
        if (refused)
            refusedBlock = first;
        errors = m_file->readErrors();
    }
    ASSERT_GE(refusedBlock, 0) << "no read has failed";
    ASSERT_EQ(readBlock(refusedBlock), blockFrames);
    EXPECT_TRUE(isExact(refusedBlock)) << "silence was remembered";
    EXPECT_EQ(m_file->readErrors(), errors);

    const std::int64_t middle = length / 2;
    {
        const FailingDisk disk(m_path);
        ASSERT_EQ(readBlock(middle), blockFrames);
    }
    EXPECT_TRUE(isExactThenSilent(middle)) << "a jump";
    EXPECT_GT(m_file->readErrors(), errors);
    ASSERT_EQ(readBlock(middle + 100), blockFrames);
    EXPECT_TRUE(isExact(middle + 100));
}

TEST_P(DiskErrorTest, AmplitudesGoOnAfterWhatTheDiskRefuses)
{
    auto reader = FfmpegAmplitudeReaderOpener().open(m_path);
    ASSERT_TRUE(reader);
    m_file.reset();
    (*reader)->enter(0);
    const std::int64_t length = (*reader)->length();
    const std::int64_t third = length / 3;
    EXPECT_GT((*reader)->sum(third), 0);
    {
        const FailingDisk disk(m_path);
        EXPECT_GE((*reader)->sum(third), 0);
    }
    // What one refusal costs may reach a little over.
    EXPECT_GE((*reader)->sum(2 * GetParam().sampleRate), 0);
    const std::int64_t first = 2 * third + 2 * GetParam().sampleRate;
    EXPECT_NEAR((*reader)->sum(length - first), amplitudeSum(m_expected, first, length - first),
                amplitudeTolerance(length - first));
}

INSTANTIATE_TEST_SUITE_P(Formats, DiskErrorTest,
                         testing::Values(Format{ "a.wav", 44'100, 2 }, Format{ "a.mp3", 44'100, 2, { "-b:a", "128k" } },
                                         Format{ "a.flac", 44'100, 2 }, Format{ "a.m4a", 44'100, 2, aac },
                                         Format{ "a.ogg", 44'100, 2, { "-c:a", "libvorbis" } },
                                         Format{ "a.mka", 44'100, 2, { "-c:a", "libvorbis" } },
                                         Format{ "adpcm.wav", 44'100, 2, { "-c:a", "adpcm_ima_wav" } }),
                         [](const auto& format) { return caseName(format.param.name); });

}  // namespace
}  // namespace quillet
