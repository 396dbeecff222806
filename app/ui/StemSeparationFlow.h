// What the window does for stems: the sheet, the strip that stands for it when it is closed, what becomes of stems that are
// ready, and the question before they are deleted.
// Threads: main thread.
#pragma once

#include "AppCore/StemMixStore.h"
#include "AppCore/StemSessionStore.h"
#include "app/core/CommandCenter.h"
#include "app/core/FileLoader.h"
#include "app/export/PlaybackOptions.h"
#include "app/export/Rendering.h"
#include "app/stems/StemSeparator.h"
#include "app/ui/FlowHost.h"
#include "app/ui/SeparationNotice.h"
#include "app/ui/StemSeparationSheet.h"
#include "app/ui/ThemeSource.h"

#include <QObject>
#include <QPointer>

#include <memory>

namespace quillet {

class StemSeparationFlow final : public QObject {
    Q_OBJECT

public:
    /// All outlive the flow, and the background's jobs that it has started.
    struct Services {
        AppState& state;
        FileLoader& loader;
        CommandCenter& commands;
        StemSeparator& separator;
        StemSessionStore& sessions;
        StemMixStore& mixes;
        RenderMedia media;
        BackgroundRunner& background;
        Scheduler& scheduler;
        const ThemeSource& theme;
    };

    StemSeparationFlow(const Services& services, FlowHost host);

    void showSheet();
    void confirmCleanup();
    enum class Export { stems, mix };
    /// Asks which of the two is to be exported, and where to.
    void askWhatToExport();
    /// Copies the stems, or writes them mixed as they are heard, and says how that goes.
    void exportTo(const FilePath& folder, Export what);
    /// Leaves stem mode and deletes the open song's stems, with what is remembered of them.
    void cleanupCurrentTrackStems();

Q_SIGNALS:
    /// Whether the window under a sheet can be used has changed.
    void isInFrontChanged(bool isInFront);

private:
    void closeSheet();
    void takePhase();
    [[nodiscard]] bool isSongOpen() const;
    void chooseExportFolder(Export what);
    void exportMix(const RenderOptions& mix);
    void exportStemsTo(const FilePath& folder, const StemFolder::Stems& stems);

    Services m_services;
    FlowHost m_host;
    /// Late answers find out by it that the flow is gone.
    std::shared_ptr<StemSeparationFlow*> m_self = std::make_shared<StemSeparationFlow*>(this);
    QPointer<StemSeparationSheet> m_sheet;
    SeparationNotice* m_notice;
};

}  // namespace quillet
