// Takes the open song's loops to a file of their own, and those of such a file to the song: asks where, works off the main
// thread, and says on a strip what came of it.
// Threads: main thread.
#pragma once

#include "AppCore/LoopFile.h"
#include "app/core/AppState.h"
#include "app/ui/ClosableNotice.h"
#include "app/ui/FlowHost.h"
#include "app/ui/ThemeSource.h"
#include "platform/schedule/BackgroundRunner.h"
#include "platform/schedule/Scheduler.h"

#include <QObject>
#include <QPointer>

#include <memory>

namespace quillet {

class LoopFileFlow final : public QObject {
    Q_OBJECT

public:
    /// All outlive the flow, and the background's jobs that it has started.
    struct Services {
        AppState& state;
        BackgroundRunner& background;
        Scheduler& scheduler;
        const ThemeSource& theme;
    };

    LoopFileFlow(const Services& services, FlowHost host);

    /// Does nothing without loops.
    void askWhereToSave();
    /// Writes the loops into a new file of that folder.
    void saveTo(const FilePath& folder);
    /// Does nothing without a song.
    void askWhatToLoad();
    /// Adds the loops of that file to the open song's; asks first if they are another song's.
    void load(const FilePath& file);

private:
    using Loaded = std::expected<LoopFile, QString>;

    /// Runs `work` on the background and hands what it answers to `finished`, on the main thread, if the flow is there then.
    template <typename Work, typename Finished> void run(Work work, Finished finished);
    void take(const FilePath& file, const Loaded& loaded);
    void add(const LoopFile& file);
    /// In place of what was said before.
    void say(const QString& sentence);

    Services m_services;
    FlowHost m_host;
    QPointer<ClosableNotice> m_notice;
    /// Late answers find out by it that the flow is gone.
    std::shared_ptr<LoopFileFlow*> m_self = std::make_shared<LoopFileFlow*>(this);
};

}  // namespace quillet
