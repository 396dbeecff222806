#include "app/export/WavWriter.h"
#include "app/export/WavHeader.h"
#include "tests/support/AudioFixtures.h"
#include "tests/support/Command.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <bit>
#include <csignal>
#include <cstring>
#include <fstream>
#include <random>
#include <thread>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillet {
namespace {

using testing::HasSubstr;

/// Full-scale noise, values beyond full scale and values far below 24 bits.
std::vector<float> difficultSamples(std::size_t count)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<float> value(-1, 1);
    std::vector<float> samples(count);
    for (std::size_t i = 0; i < count; ++i)
        samples[i] = value(random) * (i % 3 == 0 ? 4.0F : i % 3 == 1 ? 1.0F : 1e-30F);
    return samples;
}

std::vector<std::string> namesIn(const FilePath& folder)
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename());
    return names;
}

std::string probed(const FilePath& path)
{
    return runCommand({ "ffprobe", "-v", "error", "-show_entries", "stream=codec_name,sample_rate,channels,duration_ts", "-of",
                        "default=noprint_wrappers=1:nokey=1", path })
        .output;
}

void writeInBlocks(WavWriter& writer, std::span<const float> samples)
{
    for (std::size_t block = 2; !samples.empty(); block = block * 3 + 2) {
        const std::size_t count = std::min(block, samples.size());
        ASSERT_TRUE(writer.write(samples.first(count)));
        samples = samples.subspan(count);
    }
}

TEST(WavWriter, AnotherProgramReadsEverySampleAsItWas)
{
    for (const auto& [sampleRate, count] : { std::pair(8000, 0UL), { 44100, 2UL }, { 192000, 100'002UL } }) {
        SCOPED_TRACE(count);
        const TemporaryFolder folder;
        const FilePath target = folder / "naïve \xff name.wav";
        const std::vector<float> samples = difficultSamples(count);
        auto writer = WavWriter::create(target, sampleRate);
        ASSERT_TRUE(writer);
        writeInBlocks(**writer, samples);
        ASSERT_TRUE((*writer)->finish());
        EXPECT_EQ((*writer)->framesWritten(), static_cast<std::int64_t>(count / 2));
        EXPECT_EQ(decodeWithFfmpeg(target), samples);
        EXPECT_EQ(probed(target),
                  "pcm_f32le\n" + std::to_string(sampleRate) + "\n2\n" + (count > 0 ? std::to_string(count / 2) : "N/A")
                      + "\n");
        EXPECT_EQ(readBytes(target).size(), wavHeaderSize + count * sizeof(float));
    }
}

TEST(WavWriter, FourGibibytesAndMoreBecomeRf64)
{
    constexpr std::int64_t last32BitFrames = ((1LL << 32) - 2 - std::int64_t{ wavHeaderSize } + 8) / wavBytesPerFrame;
    const struct {
        std::int64_t frames;
        std::string_view form;
    } cases[] = { { last32BitFrames, "RIFF" }, { last32BitFrames + 1, "RF64" }, { 3'000'000'000, "RF64" } };
    const TemporaryFolder folder;
    for (const auto& [frames, form] : cases) {
        SCOPED_TRACE(frames);
        const FilePath path = folder / "long.wav";
        const auto header = wavHeader(48000, frames);
        EXPECT_EQ(std::memcmp(header.data(), form.data(), form.size()), 0);
        std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(header.data()), header.size());
        std::filesystem::resize_file(path, wavHeaderSize + static_cast<std::uintmax_t>(frames * wavBytesPerFrame));
        EXPECT_EQ(probed(path), "pcm_f32le\n48000\n2\n" + std::to_string(frames) + "\n");
    }
}

TEST(WavWriter, NothingAppearsUnderTheNameBeforeTheEnd)
{
    const TemporaryFolder folder;
    const FilePath target = folder / "out.wav";
    std::ofstream(target) << "old";
    ::chmod(target.c_str(), 0640);
    {
        auto writer = WavWriter::create(target, 44100);
        ASSERT_TRUE(writer);
        ASSERT_TRUE((*writer)->write(difficultSamples(1000)));
        EXPECT_TRUE(std::filesystem::exists((*writer)->temporaryPath()));
        EXPECT_EQ((*writer)->temporaryPath().parent_path(), folder.path());
        EXPECT_EQ(readBytes(target), "old");
    }
    EXPECT_THAT(namesIn(folder.path()), testing::ElementsAre("out.wav"));
    EXPECT_EQ(readBytes(target), "old");

    std::filesystem::create_symlink("out.wav", folder / "link.wav");
    auto writer = WavWriter::create(folder / "link.wav", 44100);
    ASSERT_TRUE(writer);
    ASSERT_TRUE((*writer)->write(difficultSamples(1000)));
    ASSERT_TRUE((*writer)->finish());
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.wav"));
    EXPECT_EQ(decodeWithFfmpeg(target), difficultSamples(1000));
    EXPECT_EQ(std::filesystem::status(target).permissions(), std::filesystem::perms(0640));
    EXPECT_THAT(namesIn(folder.path()), testing::UnorderedElementsAre("out.wav", "link.wav"));
}

TEST(WavWriter, PlacesThatCannotBeWrittenAreToldAtOnce)
{
    const TemporaryFolder folder;
    std::ofstream(folder / "file") << "x";
    const struct {
        FilePath target;
        const char* reason;
    } cases[] = {
        { folder.path(), "it is a folder" },
        { folder / "missing/out.wav", "its folder does not exist" },
        { folder / "missing/", "its folder does not exist" },
        { folder / "file/out.wav", "its folder does not exist" },
        { folder / std::string(256, 'x'), "its name is too long" },
        { "/dev/full", "the disk is full" },
        { "/proc/out.wav", "its folder does not exist" },
    };
    for (const auto& [target, reason] : cases) {
        const auto writer = WavWriter::create(target, 44100);
        ASSERT_FALSE(writer) << target;
        EXPECT_EQ(describe(writer.error()), "“" + target.native() + "” could not be written: " + reason + ".");
    }
    EXPECT_THAT(namesIn(folder.path()), testing::ElementsAre("file"));
    EXPECT_TRUE(WavWriter::create(folder / std::string(255, 'x'), 44100));
}

TEST(WavWriter, ADiskThatRefusesMoreLeavesNothingBehind)
{
    const TemporaryFolder folder;
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small{ 64 * 1024, before.rlim_max };
    const auto previous = std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &small);
    {
        auto writer = WavWriter::create(folder / "out.wav", 44100);
        ASSERT_TRUE(writer);
        ASSERT_TRUE((*writer)->write(difficultSamples(16 * 1024 - 32)));
        const auto written = (*writer)->write(difficultSamples(1024));
        ASSERT_FALSE(written);
        EXPECT_THAT(describe(written.error()), HasSubstr("out.wav” could not be written: the disk does not take"));
    }
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, previous);
    EXPECT_THAT(namesIn(folder.path()), testing::IsEmpty());
}

TEST(WavWriter, APipeIsWrittenToDirectly)
{
    const TemporaryFolder folder;
    const FilePath pipe = folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const std::vector<float> samples = difficultSamples(50'000);
    std::thread producer([&] {
        auto writer = WavWriter::create(pipe, 44100);
        ASSERT_TRUE(writer);
        EXPECT_TRUE((*writer)->temporaryPath().empty());
        writeInBlocks(**writer, samples);
        EXPECT_TRUE((*writer)->finish());
    });
    EXPECT_EQ(decodeWithFfmpeg(pipe), samples);
    producer.join();
    EXPECT_TRUE(std::filesystem::is_fifo(pipe));
    EXPECT_THAT(namesIn(folder.path()), testing::ElementsAre("pipe"));
}

}  // namespace
}  // namespace quillet
