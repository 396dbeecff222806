// Where songs from the web are put, and the tool that fetches them: its version, a button that fetches the newest one, and one
// that goes back.
// Threads: main thread.
#pragma once

#include "app/download/DownloadSettingsStore.h"
#include "app/download/YtDlpUpdater.h"
#include "app/ui/ThemeSource.h"
#include "app/ui/settings/FolderRow.h"
#include "platform/schedule/BackgroundRunner.h"
#include "platform/schedule/Scheduler.h"

#include <QWidget>

class QPushButton;

namespace quillet {

class Label;

class DownloadSettings final : public QWidget {
    Q_OBJECT

public:
    /// All outlive the view, and the background's jobs that it has started.
    struct Services {
        const ThemeSource& theme;
        DownloadSettingsStore& downloads;
        YtDlpUpdater& updater;
        BackgroundRunner& background;
        Scheduler& scheduler;
    };

    explicit DownloadSettings(const Services& services, QWidget* parent = nullptr);

    void loadCurrentSettings();

private:
    void showDirectory();
    void fetchNewest();
    void showOutcome(const YtDlpUpdater::Outcome& outcome);
    void sync();

    Services m_services;
    FolderRow* m_folder;
    Label* m_version;
    Label* m_words;
    QPushButton* m_update;
    QPushButton* m_undo;
    bool m_hasUpdate = false;
};

}  // namespace quillet
