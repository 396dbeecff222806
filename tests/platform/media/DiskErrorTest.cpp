// What a disk that refuses to be read does to an open file. The refusals are real: in place of the file, its descriptor is
// given one whose reads the system answers with EIO (this process's own memory, at addresses where there is none).
#include "platform/base/Require.h"
#include "platform/media/FfmpegAmplitudeReader.h"
#include "platform/media/FfmpegAudioFile.h"
#include "tests/support/AudioFixtures.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace quillet {
namespace {

namespace fs = std::filesystem;

constexpr int sampleRate = 44'100;
constexpr std::int64_t blockFrames = 3001;

/// As long as it lives, every read of an open file fails.
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
        for (const auto& entry : fs::directory_iterator("/proc/self/fd"))
            if (std::error_code none; fs::read_symlink(entry, none) == fs::path(path.c_str()))
                return std::stoi(entry.path().filename());
        return -1;
    }

    int m_descriptor;
    int m_file;
};

struct Encoding {
    const char* name;
    std::vector<std::string> arguments = {};
};

std::ostream& operator<<(std::ostream& out, const Encoding& encoding) { return out << encoding.name; }

class DiskErrorTest : public testing::TestWithParam<Encoding> {
protected:
    DiskErrorTest()
        : m_path(m_folder / GetParam().name)
    {
        encodeAudio(livelySignal(sampleRate, 2, 20), m_path, GetParam().arguments);
        m_file = open();
        for (std::int64_t got = blockFrames; got == blockFrames;) {
            got = readBlock(static_cast<std::int64_t>(m_expected.size() / 2));
            m_expected.insert(m_expected.end(), m_block.begin(), m_block.begin() + 2 * got);
        }
        // Without what this one remembers.
        m_file = open();
    }

    [[nodiscard]] std::unique_ptr<AudioFile> open() const
    {
        auto file = FfmpegAudioFileOpener().open(m_path);
        REQUIRE(file.has_value());
        return std::move(*file);
    }
    std::int64_t readBlock(std::int64_t first) { return m_file->read(first, m_block); }
    [[nodiscard]] float expected(std::int64_t sample) const { return m_expected.at(static_cast<std::size_t>(sample)); }
    [[nodiscard]] bool isExact(std::int64_t first) const
    {
        return std::ranges::equal(m_block, std::span(m_expected).subspan(static_cast<std::size_t>(2 * first), m_block.size()));
    }
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
        if (fails) {
            const FailingDisk disk(m_path);
            ASSERT_EQ(readBlock(first), blockFrames);
        } else {
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
    EXPECT_GE((*reader)->sum(2 * sampleRate), 0);
    const std::int64_t first = 2 * third + 2 * sampleRate;
    double sum = 0;
    for (std::int64_t i = 2 * first; i < 2 * length; i += 2)
        sum += std::abs(expected(i) + expected(i + 1)) / 2;
    EXPECT_NEAR((*reader)->sum(length - first), sum, static_cast<double>(length - first) * 0x1p-23 + 1e-9);
}

INSTANTIATE_TEST_SUITE_P(Formats, DiskErrorTest,
                         testing::Values(Encoding{ "a.wav" }, Encoding{ "a.mp3", { "-b:a", "128k" } }, Encoding{ "a.flac" },
                                         Encoding{ "a.m4a", { "-c:a", "aac", "-aac_pns", "0", "-b:a", "160k" } },
                                         Encoding{ "a.ogg", { "-c:a", "libvorbis" } },
                                         Encoding{ "a.mka", { "-c:a", "libvorbis" } },
                                         Encoding{ "adpcm.wav", { "-c:a", "adpcm_ima_wav" } }),
                         [](const auto& encoding) {
                             std::string name = encoding.param.name;
                             std::ranges::replace(name, '.', '_');
                             return name;
                         });

}  // namespace
}  // namespace quillet
