#include "app/waveform/WaveformDetail.h"

#include "app/waveform/DetailLoader.h"
#include "platform/schedule/VirtualScheduler.h"
#include "tests/support/ManualRunner.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <vector>

namespace quillet {
namespace {

using testing::ElementsAre;

SoundSummary plainSummary(const std::vector<float>& samples, std::int64_t first, std::int64_t end)
{
    const auto begin = samples.begin() + std::clamp<std::int64_t>(first, 0, std::ssize(samples));
    const auto stop = samples.begin() + std::clamp<std::int64_t>(end, 0, std::ssize(samples));
    double squares = 0;
    for (auto sample = begin; sample != stop; ++sample)
        squares += static_cast<double>(*sample) * *sample;
    return { *std::min_element(begin, stop), *std::max_element(begin, stop),
             static_cast<float>(squares / static_cast<double>(stop - begin)) };
}

WaveformDetail detailOf(const std::vector<float>& samples)
{
    const DetailLayout layout(std::ssize(samples));
    WaveformDetail detail(layout);
    for (std::int64_t chunk = layout.chunkCount() - 1; chunk >= 0; --chunk) {
        std::vector<SoundSummary> blocks;
        for (std::int64_t frame = layout.chunkStart(chunk); frame < layout.chunkStart(chunk + 1); frame += layout.blockFrames())
            blocks.push_back(plainSummary(samples, frame, frame + layout.framesAt(frame, 0)));
        detail.add(DetailChunk(layout, chunk, std::move(blocks)));
    }
    return detail;
}

TEST(WaveformDetailTest, ColumnsShowWhatIsInThem)
{
    std::mt19937 random(1);
    std::normal_distribution<float> noise(0.05F, 0.2F);
    for (const std::int64_t length : { 1, 7, 16'391, 3'200'003 }) {
        std::vector<float> samples(static_cast<std::size_t>(length));
        std::ranges::generate(samples, [&] { return noise(random); });
        samples.back() = -3;
        const WaveformDetail detail = detailOf(samples);
        const auto end = static_cast<double>(length);
        EXPECT_EQ(detail.loudest(), 3);
        EXPECT_FALSE(detail.column(end, end + 1));
        const double whole = plainSummary(samples, 0, length).meanSquare;
        EXPECT_NEAR(detail.column(0, end)->meanSquare, whole, 1e-6) << "the last block is short";
        for (const double frames : { 40.3, 1000.7, 17'000.5 }) {
            double squares = 0;
            for (double first = 0; first < end; first += frames) {
                const auto seen = detail.column(first, first + frames);
                ASSERT_TRUE(seen);
                squares += static_cast<double>(seen->meanSquare) * std::min(frames, end - first);
                const auto inner = [&](double part) { return static_cast<std::int64_t>(first + part * frames); };
                if (inner(1) >= length)
                    continue;
                const SoundSummary least = plainSummary(samples, inner(0.15), inner(0.85));
                ASSERT_TRUE(seen->lowest <= least.lowest && seen->highest >= least.highest) << first << " of " << length;
            }
            EXPECT_NEAR(squares / end / whole, 1, 0.02) << "nothing twice, nothing left out";
        }
    }
}

TEST(WaveformDetailTest, AClickIsInOneColumnAndWhatIsNotThereIsNotGuessed)
{
    std::vector<float> samples(2'000'000);
    samples[1'234'567] = 1;
    const WaveformDetail detail = detailOf(samples);
    for (const double frames : { 40.0, 100.0, 1000.0 }) {
        int shown = 0;
        for (int column = -2; column <= 2; ++column) {
            const double first = (std::floor(1'234'567 / frames) + column) * frames;
            shown += detail.column(first, first + frames)->highest == 1 ? 1 : 0;
        }
        EXPECT_EQ(shown, 1) << frames;
    }
    WaveformDetail empty(detail.layout());
    empty.add(DetailChunk(detail.layout(), 1, std::vector<SoundSummary>(4096, { 0, 0, 0 })));
    const auto start = static_cast<double>(detail.layout().chunkFrames());
    EXPECT_EQ(empty.column(start, start + 100), SoundSummary());
    EXPECT_FALSE(empty.column(start - 50, start + 50));
}

/// A song of 128 chunks that tells where it was entered, and what was read since, by chunks.
struct DetailLoaderTest : testing::Test, AmplitudeReaderOpener {
    static constexpr std::int64_t chunkFrames = 16'384;

    struct Reader final : AmplitudeReader {
        explicit Reader(DetailLoaderTest& owner)
            : test(owner)
        {
        }
        [[nodiscard]] std::int64_t length() const override { return 128 * chunkFrames - 5; }
        [[nodiscard]] bool entersAnywhere() const override { return test.entersAnywhere; }
        void enter(std::int64_t frame) override
        {
            position = frame;
            ++test.entries;
        }
        [[nodiscard]] double sum(std::int64_t) override { return 0; }
        [[nodiscard]] SoundSummary summary(std::int64_t frames) override
        {
            if (position % chunkFrames == 0)
                test.read.push_back(position / chunkFrames);
            if (test.read.size() == test.hookAt)
                std::exchange(test.hook, [] { })();
            position += frames;
            return { -0.5F, 0.5F, 0.25F };
        }
        DetailLoaderTest& test;
        std::int64_t position = -1;
    };

    [[nodiscard]] std::expected<std::unique_ptr<AmplitudeReader>, AudioFileError> open(const FilePath&) override
    {
        ++opened;
        if (isGone)
            return std::unexpected(AudioFileError::notFound);
        return std::make_unique<Reader>(*this);
    }
    std::vector<std::int64_t> firstRead(std::size_t count) const { return { read.begin(), read.begin() + count }; }

    VirtualScheduler scheduler;
    ManualRunner background;
    bool entersAnywhere = true;
    bool isGone = false;
    int opened = 0;
    int entries = 0;
    std::vector<std::int64_t> read;
    /// Called once when so many chunks have been begun.
    std::size_t hookAt = 0;
    std::function<void()> hook = [] { };
    std::optional<DetailLoader> loader{ DetailLoader::Resources{ *this, background, scheduler } };
};

TEST_F(DetailLoaderTest, ReadsWhatIsInViewFirstAndNothingBeforeThat)
{
    loader->setFile("/song");
    EXPECT_EQ(background.waiting(), 0U);
    loader->look({ 0.5, 0.53125 });
    // The helper first: it leaves the rest alone.
    background.finish(1);
    EXPECT_THAT(read, testing::UnorderedElementsAre(62, 63, 64, 65, 66, 67, 68, 69));
    EXPECT_THAT(firstRead(4), ElementsAre(64, 65, 66, 67));
    read.clear();
    hookAt = 3;
    hook = [this] { loader->look({ 0.25, 0.265625 }); };
    background.finish();
    EXPECT_THAT(firstRead(6), ElementsAre(70, 71, 72, 32, 33, 34)) << "on from the view; a jump goes before it";
    EXPECT_EQ(read.size(), 120U);
    EXPECT_EQ(background.waiting(), 1U) << "another helper";
    background.finish();
    EXPECT_EQ(opened, 2) << "which has nothing to do by now";
    EXPECT_EQ(loader->detail(), nullptr);
    scheduler.advance(0);
    EXPECT_EQ(loader->detail()->column(0, 128.0 * chunkFrames)->meanSquare, 0.25F);
}

TEST_F(DetailLoaderTest, AFileThatIsDecodedFromTheStartIsReadInOneGo)
{
    entersAnywhere = false;
    loader->setFile("/song");
    loader->look({ 0.5, 0.53125 });
    background.finish(1);
    background.finish();
    EXPECT_EQ(read.size(), 128U);
    EXPECT_TRUE(std::ranges::is_sorted(read));
    EXPECT_EQ(entries, 1);
}

TEST_F(DetailLoaderTest, IsCalledOffByAnotherSongAndItsEnd)
{
    loader->setFile("/song");
    for (const bool ends : { false, true }) {
        read.clear();
        loader->look({ 0, 0.1 });
        hookAt = 5;
        hook = [&] { ends ? loader.reset() : loader->setFile("/other"); };
        background.finish();
        background.finish();
        EXPECT_EQ(read.size(), 5U) << "the second job has not begun";
        scheduler.advance(0);
        EXPECT_TRUE(!loader || loader->detail() == nullptr) << "what had been read counts no more";
    }
    isGone = true;
    loader.emplace(DetailLoader::Resources{ *this, background, scheduler });
    loader->setFile("/gone");
    loader->look({ 0, 0.1 });
    background.finish();
    background.finish();
    scheduler.advance(0);
    EXPECT_EQ(loader->detail(), nullptr);
}

}  // namespace
}  // namespace quillet
