// Asks for files or a folder: by the desktop's own panel, through its portal, or where it offers none by the toolkit's.
// Threads: main thread.
#pragma once

#include "platform/base/FilePath.h"

#include <QDBusConnection>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <functional>
#include <vector>

class QDialog;
class QWidget;

namespace quillet {

class FilePanel final : public QObject {
    Q_OBJECT

public:
    struct Filter {
        QString name;
        /// Like "*.mp3".
        QStringList patterns;
    };
    struct Options {
        QString title;
        /// Where it begins; if it does not exist, that is left to the panel.
        FilePath folder;
        bool isForFolders = false;
        /// What the button says that ends it; empty for the usual word.
        QString acceptLabel;
        /// The first is chosen at the beginning.
        std::vector<Filter> filters = {};
        bool takesSeveral = false;
    };
    /// Given at least one, and more only where several are taken.
    using Chosen = std::function<void(const std::vector<FilePath>& paths)>;
    /// Opens the toolkit's panel as the window opens its sheets.
    using OpenSheet = std::function<void(QDialog& panel)>;

    /// Panels that are opened from now on are the desktop's, if it has a portal on this bus.
    static void joinDesktop(const QDBusConnection& bus);

    /// Opens at once, before `window`, and destroys itself once it is answered; `chosen` is not called when it is left.
    FilePanel(QWidget& window, Options options, Chosen chosen, OpenSheet openSheet);
    /// Closes it.
    ~FilePanel() override;
    FilePanel(const FilePanel&) = delete;
    FilePanel& operator=(const FilePanel&) = delete;

    /// To the front; the desktop's panel is closed and opened again.
    void raise();

private Q_SLOTS:
    void takeResponse(uint response, const QVariantMap& results);

private:
    void askPortal();
    void closePortals();
    void openToolkits();
    void finish(const std::vector<FilePath>& paths);

    QWidget& m_window;
    Options m_options;
    Chosen m_chosen;
    OpenSheet m_openSheet;
    QPointer<QDialog> m_panel;
    /// The object on the bus that stands for the question; empty once nothing is asked.
    QString m_request;
};

/// Opens a panel of the toolkit's that needs no more care.
void openPanel(QDialog& panel);

}  // namespace quillet
