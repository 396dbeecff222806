// Real files through the whole of what opens them: threads, decoder, stores in a database, audio graph.

#include "platform/schedule/VirtualScheduler.h"
#include "tests/support/AudioFixtures.h"
#include "tests/support/SongServices.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <string>
#include <thread>
#include <vector>

namespace quillet {
namespace {

using testing::Contains;
using testing::Not;

/// One run of the program up to its state, over the files in a folder.
struct Program : SongServices<VirtualScheduler> {
    std::vector<std::string> messages;

    explicit Program(const TemporaryFolder& folder)
        : SongServices(folder)
    {
        graph.start();
        QObject::connect(state.get(), &AppState::loadingStateChanged,
                         [this] { messages.push_back(state->loadingState().message); });
    }

    /// Until it is loaded or has failed, and the background is at rest.
    [[nodiscard]] LoadingState::Stage open(const FilePath& path, RestoreSettings restoreSettings = RestoreSettings::no)
    {
        messages.clear();
        loader.loadFile(path, restoreSettings);
        while (state->loadingState().stage == LoadingState::Stage::loading) {
            scheduler.advance(0);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        EXPECT_TRUE(background.finish(60));
        scheduler.advance(0);
        return state->loadingState().stage;
    }

    /// How loud what is heard in half a second of playing is.
    [[nodiscard]] double loudnessOfPlaying()
    {
        state->togglePlayPause();
        double loudest = 0;
        std::array<float, 256> block{};
        for (int i = 0; i < 200; ++i) {
            output.pull(block);
            scheduler.advance(128.0 / 44'100);
            for (const float sample : block)
                loudest = std::max(loudest, static_cast<double>(std::abs(sample)));
        }
        return loudest;
    }
};

TEST(OpenSong, ASongOpensPlaysAndComesBackAsItWasLeft)
{
    const TemporaryFolder folder;
    const std::pair<const char*, std::vector<std::string>> formats[] = {
        { "a.mp3", { "-b:a", "128k" } },
        { "a.m4a", { "-c:a", "aac", "-aac_pns", "0" } },
        { "\xE9t\xE9 na\xC3\xAFve.wv", {} },
    };
    for (const auto& [name, arguments] : formats) {
        SCOPED_TRACE(name);
        const FilePath path = folder / name;
        encodeAudio(livelySignal(44'100, 2, 3), path, arguments);
        std::vector<float> peaks;
        {
            Program program(folder);
            ASSERT_EQ(program.open(path), LoadingState::Stage::loaded);
            EXPECT_THAT(program.messages, Contains("Generating waveform... 100%"));
            EXPECT_NEAR(program.state->audioDuration(), 3, 0.06);
            peaks = program.state->waveformSamples();
            EXPECT_EQ(*std::ranges::max_element(peaks), 1.0F);
            program.state->setSpeed(50);
            program.state->setRegion({ 1, program.state->audioDuration() });
            program.state->saveSettingsNow();
        }
        Program program(folder);
        ASSERT_EQ(program.open(path, RestoreSettings::yes), LoadingState::Stage::loaded);
        EXPECT_THAT(program.messages, Contains("Loading cached waveform..."));
        EXPECT_THAT(program.messages, Not(Contains("Generating waveform...")));
        EXPECT_EQ(program.state->waveformSamples(), peaks);
        EXPECT_EQ(program.state->speed(), 50);
        EXPECT_EQ(program.state->regionStart(), 1);
        EXPECT_GT(program.loudnessOfPlaying(), 0.2);
    }
}

}  // namespace
}  // namespace quillet
