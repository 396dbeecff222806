// Asks for the web address of a song and the folder to put it into, has it downloaded and hands the file to its owner. Nothing
// of it is kept between two showings but the folder. It stands before the window while it asks; while it downloads the window
// can be used.
// Threads: main thread.
#pragma once

#include "app/download/DownloadSettingsStore.h"
#include "app/download/URLDownloader.h"
#include "app/download/YtDlpUpdater.h"
#include "app/ui/FilePanel.h"
#include "app/ui/RunningDownload.h"
#include "app/ui/ThemeSource.h"

#include <QDialog>

#include <functional>
#include <memory>
#include <optional>
#include <string>

class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QScrollArea;

namespace quillet {

class ElidedLabel;

class OpenFromURLSheet final : public QDialog {
    Q_OBJECT

public:
    /// All outlive the sheet.
    struct Services {
        URLDownloader& downloader;
        YtDlpUpdater& updater;
        DownloadSettingsStore& settings;
        const ThemeSource& theme;
    };
    struct Handlers {
        /// Given the downloaded file; the owner closes the sheet.
        std::function<void(const FilePath& file)> onLoad;
        /// The same, without a file. A download that runs can be taken over (`releaseDownload`); else it ends with the sheet.
        std::function<void()> onCancel;
    };

    OpenFromURLSheet(const Services& services, Handlers handlers, QWidget* parent);

    /// What has been typed is a web address.
    [[nodiscard]] bool canSubmit() const;
    void startDownload();
    /// Back to the question. What has been received stays for another attempt.
    void stopDownload();
    /// Asks for the folder; the answer is the new default too.
    void chooseDirectory();

    [[nodiscard]] bool isDownloading() const { return m_download != nullptr; }
    /// The download that runs, if one does; the sheet hears no more of it.
    [[nodiscard]] std::unique_ptr<RunningDownload> releaseDownload();

    void reject() override;

Q_SIGNALS:
    /// Whether the window under the sheet can be used has changed.
    void isInFrontChanged(bool isInFront);

private:
    [[nodiscard]] std::string urlText() const;
    [[nodiscard]] QWidget* makeQuestions();
    [[nodiscard]] QWidget* makeProgress();
    [[nodiscard]] QWidget* makeError();
    void finish(const URLDownloader::Outcome& outcome);
    void showFailure(const DownloadError& error);
    /// A site may have changed since the downloader was made.
    void updateDownloader();
    void askAgain();
    void showProgress();
    void showDirectory();
    /// What is shown and enabled, by the state.
    void sync();
    void stand(bool inFront);

    Services m_services;
    Handlers m_handlers;
    FilePath m_downloadDirectory;
    std::optional<QString> m_errorMessage;
    std::unique_ptr<RunningDownload> m_download;
    QPointer<FilePanel> m_panel;

    QLineEdit* m_urlField;
    ElidedLabel* m_directory;
    QWidget* m_progress;
    QProgressBar* m_bar;
    QLabel* m_words;
    QScrollArea* m_error;
    QLabel* m_errorText;
    QPushButton* m_submit;
    QPushButton* m_update;
    bool m_mayNeedUpdate = false;
};

}  // namespace quillet
