// What the window does for stems: the sheet, the strip that stands for it when it is closed, what becomes of stems that are
// ready, and the question before they are deleted.
// Threads: main thread.
#pragma once

#include "AppCore/StemMixStore.h"
#include "AppCore/StemSessionStore.h"
#include "app/core/FileLoader.h"
#include "app/stems/StemSeparator.h"
#include "app/ui/SeparationNotice.h"
#include "app/ui/StemSeparationSheet.h"
#include "app/ui/ThemeSource.h"

#include <QObject>
#include <QPointer>

#include <functional>

class QDialog;

namespace quillet {

class StemSeparationFlow final : public QObject {
    Q_OBJECT

public:
    /// All outlive the flow, and the background's jobs that it has started.
    struct Services {
        AppState& state;
        FileLoader& loader;
        StemSeparator& separator;
        StemSessionStore& sessions;
        StemMixStore& mixes;
        BackgroundRunner& background;
        Scheduler& scheduler;
        const ThemeSource& theme;
    };

    /// `window` has the sheets; `openSheet` opens one before it.
    StemSeparationFlow(const Services& services, QWidget& window, std::function<void(QDialog& sheet)> openSheet);

    /// For the window to place.
    [[nodiscard]] SeparationNotice& notice() { return *m_notice; }

    void showSheet();
    void confirmCleanup();
    /// Leaves stem mode and deletes the open song's stems, with what is remembered of them.
    void cleanupCurrentTrackStems();

Q_SIGNALS:
    /// Whether the window under a sheet can be used has changed.
    void isInFrontChanged(bool isInFront);

private:
    void closeSheet();
    void takePhase();
    [[nodiscard]] bool isSongOpen() const;

    Services m_services;
    QWidget& m_window;
    std::function<void(QDialog& sheet)> m_openSheet;
    QPointer<StemSeparationSheet> m_sheet;
    SeparationNotice* m_notice;
};

}  // namespace quillet
