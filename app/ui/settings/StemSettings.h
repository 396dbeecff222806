// Where stems and what separates them lie, how much they take, and the buttons that delete them. Only what Quillet has made is
// counted and deleted, whatever else lies in those folders.
// Threads: main thread; disks are asked on the background's.
#pragma once

#include "AppCore/StemMixStore.h"
#include "AppCore/StemSessionStore.h"
#include "AppCore/StemSettingsStore.h"
#include "app/core/CommandCenter.h"
#include "app/stems/StemSeparator.h"
#include "app/ui/ThemeSource.h"
#include "app/ui/settings/FolderRow.h"
#include "platform/defaults/DefaultsDomain.h"
#include "platform/schedule/BackgroundRunner.h"
#include "platform/schedule/Scheduler.h"

#include <QWidget>

#include <cstdint>
#include <functional>

class QPushButton;

namespace quillet {

class Label;

class StemSettings final : public QWidget {
    Q_OBJECT

public:
    /// All outlive the view, and the background's jobs that it has started.
    struct Services {
        const ThemeSource& theme;
        DefaultsDomain& defaults;
        const StemSettingsStore& settings;
        StemSeparator& separator;
        StemSessionStore& sessions;
        StemMixStore& mixes;
        CommandCenter& commands;
        BackgroundRunner& background;
        Scheduler& scheduler;
    };

    explicit StemSettings(const Services& services, QWidget* parent = nullptr);

    /// Shows the folders, and measures what is in them.
    void refreshStemStats();

private:
    enum class Folder { stems, dependencies };
    struct Sizes;

    void choose(Folder which, const FilePath& folder);
    void askToShare(Folder which, const FilePath& folder);
    void store(Folder which, const FilePath& folder);
    void reset(Folder which);
    void confirmDeletion();
    void deleteStems();
    void confirmRemoval();
    void removeDependencies();
    void showSizes(const Sizes& sizes);
    void syncButtons();
    /// Runs `job` beside the main thread, and `then` on it, if the view is still there.
    void inBackground(std::function<void()> job, std::function<void()> then);

    Services m_services;
    FolderRow* m_stemsFolder;
    FolderRow* m_dependenciesFolder;
    Label* m_stemSize;
    Label* m_dependenciesSize;
    QPushButton* m_delete;
    QPushButton* m_remove;
    bool m_stemsExist = false;
    bool m_depsExist = false;
    /// The answers of earlier questions come too late.
    int m_generation = 0;
};

}  // namespace quillet
