// The state over an engine whose graph sounds nothing, in virtual time: with a file of 8000 Hz, whole as the region, nothing
// playing and nothing to save. What loads other files works in the background when it is told to.
// Threads: one.
#pragma once

#include "app/core/FileLoader.h"
#include "platform/defaults/MemoryDefaultsDomain.h"
#include "platform/files/SystemFileAttributes.h"
#include "platform/schedule/VirtualScheduler.h"
#include "tests/support/FakeAudioFileOpener.h"
#include "tests/support/FakeAudioGraph.h"
#include "tests/support/ManualRunner.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quillet {

/// The amplitude 0.5, as long as the file that the opener has under the name; none where the disk has no such file.
struct EvenAmplitudes final : AmplitudeReaderOpener {
    struct Reader final : AmplitudeReader {
        std::int64_t frames = 0;
        [[nodiscard]] std::int64_t length() const override { return frames; }
        [[nodiscard]] bool entersAnywhere() const override { return false; }
        void enter(std::int64_t) override { }
        [[nodiscard]] double sum(std::int64_t count) override { return 0.5 * static_cast<double>(count); }
        [[nodiscard]] SoundSummary summary(std::int64_t) override { return { -0.5F, 0.5F, 0.25F }; }
    };

    explicit EvenAmplitudes(AudioFileOpener& files)
        : opener(files)
    {
    }
    [[nodiscard]] std::expected<std::unique_ptr<AmplitudeReader>, AudioFileError> open(const FilePath& path) override
    {
        const auto file = opener.open(path);
        if (!file || !std::filesystem::exists(path))
            return std::unexpected(AudioFileError::notFound);
        auto reader = std::make_unique<Reader>();
        reader->frames = (*file)->length();
        return reader;
    }

    AudioFileOpener& opener;
};

struct StateRig {
    static constexpr const char* song = "/music/song.flac";
    static constexpr int sampleRate = 8000;

    VirtualScheduler scheduler;
    MemoryDefaultsDomain defaults;
    SettingsStore settings{ defaults };
    StemSessionStore stemSessions{ defaults };
    StemMixStore stemMixes{ defaults };
    PracticeStore practices{ defaults };
    FakeAudioGraph graph;
    AudioEngine engine{ graph, scheduler };
    std::shared_ptr<AppState> state =
        std::make_shared<AppState>(scheduler, SettingsSaver::Stores{ settings, stemSessions, stemMixes, practices }, engine);
    ManualRunner background;
    SystemFileAttributes attributes;
    WaveformCache cache{ defaults, attributes };
    RecentFilesStore recentFiles{ defaults };
    FakeAudioFileOpener opener;
    EvenAmplitudes readers{ opener };
    FileLoader loader{ { *state,
                         scheduler,
                         background,
                         opener,
                         { readers, 1, {} },
                         cache,
                         settings,
                         stemSessions,
                         recentFiles,
                         stemMixes,
                         attributes,
                         practices } };

    explicit StateRig(double durationSeconds = 10)
    {
        engine.setAppState(state);
        open(durationSeconds);
    }

    void open(double durationSeconds)
    {
        const auto samples = static_cast<std::size_t>(2 * sampleRate * durationSeconds);
        engine.setAudioFile(std::make_shared<MemoryAudioFile>(sampleRate, std::vector<float>(samples)));
        state->setAudioFileURL(song);
        state->setAudioDuration(durationSeconds);
        state->resetToDefaults(durationSeconds);
        scheduler.advance(1);
        defaults.remove(std::string("settings.") + song);
    }

    void finishWork()
    {
        while (background.waiting() > 0) {
            background.finish();
            scheduler.advance(0);
        }
    }

    /// What sounds, in seconds; nothing when the player rests.
    [[nodiscard]] std::optional<std::pair<double, double>> sounding() const
    {
        const auto& player = *graph.players.front();
        if (!player.isSounding)
            return std::nullopt;
        const double start = static_cast<double>(player.segment->start) / sampleRate;
        return std::pair(start, start + static_cast<double>(player.segment->count) / sampleRate);
    }
    [[nodiscard]] int starts() const { return graph.players.front()->scheduleCount; }
};

}  // namespace quillet
