// What the tests of views share: a state with a loaded file of ten seconds, a theme, and scripted tools that fetch songs.
// Threads: one.
#pragma once

#include "app/core/CommandCenter.h"
#include "app/core/KeyMap.h"
#include "app/download/DownloadSettingsStore.h"
#include "app/download/URLDownloader.h"
#include "app/download/YtDlpUpdater.h"
#include "app/stems/StemSeparator.h"
#include "app/ui/ContentView.h"
#include "app/ui/ThemeSource.h"
#include "platform/media/AudioEncoder.h"
#include "platform/update/Updater.h"
#include "tests/support/FakeProcessRunner.h"
#include "tests/support/StateRig.h"
#include "tests/support/TemporaryFolder.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>

#include <functional>
#include <stdexcept>
#include <utility>
#include <vector>

namespace quillet {

/// Answers when it is told to.
struct FakeUpdater final : Updater {
    std::function<void(const Answer& answer)> answered;

    void checkForUpdates(std::function<void(const Answer& answer)> handler) override { answered = std::move(handler); }
    [[nodiscard]] bool isConfigured() const override { return true; }
};

struct NoEncoders final : AudioEncoderMaker {
    [[nodiscard]] std::unique_ptr<AudioEncoder> make(const EncoderSettings&, EncodedOutput&) override { return nullptr; }
};

struct WindowRig : StateRig {
    Notifications notifications;
    CommandCenter commands{ *state, notifications };
    ThemeSource theme;
    FakeProcessRunner processes;
    TemporaryFolder tools;
    URLDownloader downloader{ processes, background, tools.path(), tools / "newer" };
    YtDlpUpdater ytDlpUpdater{ { processes, background, scheduler, tools.path(), tools.path() },
                               { tools.path(), tools / "newer" } };
    DownloadSettingsStore downloadSettings{ defaults };
    StemSettingsStore stemSettings{ defaults };
    FakeUpdater updater;
    NoEncoders noEncoders;
    KeyMap keyMap{ defaults };
    FollowChoice follow{ defaults };
    SongList songs{ *state };
    Hints hints{ *state, commands, defaults };
    StemSeparator separator{ { processes, background, scheduler, stemSettings, attributes, tools.path(), tools.path() } };
    /// Of the window.
    ContentView::Services services{ *state,    loader,       commands,  recentFiles, downloader, ytDlpUpdater,
                                    separator, stemSessions, stemMixes, opener,      noEncoders, cache,
                                    settings,  stemSettings, updater,   background,  scheduler,  downloadSettings,
                                    theme,     defaults,     keyMap,    follow,      readers,    {},
                                    songs,     hints };

    explicit WindowRig(double durationSeconds = 10)
        : StateRig(durationSeconds)
    {
        state->setWaveformSamples(std::vector<float>(2000, 0.5F));
        state->setLoadingState(LoadingState::loaded());
        for (const char* name : { "uv", "yt-dlp", "ffmpeg" })
            std::filesystem::create_symlink("/bin/sh", tools / name);
        defaults.setString("QLT.downloadDirectory", tools.path().native());
    }
};

/// Makes a window that is shown the one that has the keys, at once: what replaces the deprecated call asks a window system.
inline void activate(QWidget& window)
{
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    QApplication::setActiveWindow(&window);
    QT_WARNING_POP
}

inline bool isShown(const QWidget& within, const char* text)
{
    for (const auto* label : within.findChildren<QLabel*>())
        if (label->isVisible() && label->text() == QString::fromUtf8(text))
            return true;
    return false;
}

inline QAbstractButton& buttonIn(const QWidget& within, const char* text)
{
    for (auto* candidate : within.findChildren<QAbstractButton*>())
        if (candidate->text() == QString::fromUtf8(text))
            return *candidate;
    throw std::runtime_error(text);
}

}  // namespace quillet
