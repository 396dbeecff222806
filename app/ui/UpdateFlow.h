// What the window does about newer versions: the sheet that answers the user's question, and the strip that tells of one that
// was found in the background. It opens the page from which a version can be had, and installs nothing.
// Threads: main thread.
#pragma once

#include "app/ui/Notice.h"
#include "platform/defaults/DefaultsDomain.h"
#include "platform/update/Updater.h"

#include <QMessageBox>
#include <QObject>
#include <QPointer>

#include <functional>

namespace quillet {

class UpdateFlow final : public QObject {
    Q_OBJECT

public:
    static constexpr const char* lastCheckKey = "QLT.lastUpdateCheck";
    static constexpr double secondsBetweenChecks = 86'400;

    /// All outlive the flow.
    struct Services {
        Updater& updater;
        DefaultsDomain& defaults;
        const ThemeSource& theme;
        /// Seconds, on any scale that outlives the program.
        std::function<double()> date;
    };

    /// `addNotice` places a strip under the toolbar.
    UpdateFlow(const Services& services, std::function<void(Notice& notice)> addNotice, QObject* parent = nullptr);

    /// Asks now, and answers in a sheet that `open` shows before `window`.
    void checkForUpdates(QWidget& window, const std::function<void(QDialog& sheet)>& open);
    /// Asks unless that was done within a day, and says something only if there is news.
    void checkForUpdatesInBackground();

private:
    void showAnswer(const Updater::Answer& answer);
    void showRelease(const Release& release);
    void noteCheck();

    Services m_services;
    std::function<void(Notice& notice)> m_addNotice;
    QPointer<QMessageBox> m_sheet;
};

}  // namespace quillet
