// Explains what stems are, starts the separation of a song and shows how far it is, what went wrong, and that it is being
// called off. It stands before the window while it asks; while it works the window can be used, and the sheet can be closed:
// the separation goes on, and a sheet that is opened later shows it again.
// Threads: main thread.
#pragma once

#include "app/stems/StemSeparator.h"
#include "app/ui/ThemeSource.h"

#include <QDialog>

#include <functional>
#include <memory>

class QLabel;
class QProgressBar;
class QPushButton;

namespace quillet {

class BusyIndicator;
class Label;

class StemSeparationSheet final : public QDialog {
    Q_OBJECT

public:
    /// All outlive the sheet, and the background's jobs that it has started.
    struct Services {
        StemSeparator& separator;
        BackgroundRunner& background;
        Scheduler& scheduler;
        const ThemeSource& theme;
    };
    struct Handlers {
        /// Given the file of each stem; the owner closes the sheet.
        std::function<void(const StemFolder::Stems& stems)> onComplete;
        /// The same, without a result.
        std::function<void()> onCancel;
    };

    /// Starts at once if the stems of the song are there; shows the separation that runs if one does.
    StemSeparationSheet(FilePath fileURL, const Services& services, Handlers handlers, QWidget* parent);

    /// The cancel key: calls off what runs; closes the sheet where nothing does.
    void reject() override;

Q_SIGNALS:
    /// Whether the window under the sheet can be used has changed.
    void isInFrontChanged(bool isInFront);

protected:
    /// Closing the sheet calls nothing off.
    void closeEvent(QCloseEvent* event) override;

private:
    struct Findings {
        bool isSeparated = false;
        bool isOutdated = false;
        bool isFirstUse = false;
    };

    [[nodiscard]] QWidget* makeProgress();
    void lookForStems();
    void showFindings(const Findings& findings);
    void separate();
    void takePhase();
    /// What is shown and enabled, by the phase.
    void sync();
    void showProgress();

    FilePath m_fileURL;
    Services m_services;
    Handlers m_handlers;
    /// Late answers find out by it that the sheet is gone.
    std::shared_ptr<StemSeparationSheet*> m_self;

    Label* m_explanation;
    Label* m_outdatedNote;
    Label* m_setupNote;
    Label* m_licenceNote;
    QWidget* m_progress;
    BusyIndicator* m_indicator;
    Label* m_message;
    QProgressBar* m_bar;
    Label* m_percent;
    Label* m_error;
    QPushButton* m_hide;
    QPushButton* m_cancel;
    QPushButton* m_action;
};

}  // namespace quillet
