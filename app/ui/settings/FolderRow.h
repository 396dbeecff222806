// A folder among the settings: where it is, a button to choose another, and one to return to the default.
// Threads: main thread.
#pragma once

#include "app/ui/FilePanel.h"
#include "app/ui/ThemeSource.h"
#include "platform/base/FilePath.h"

#include <QWidget>

#include <functional>

namespace quillet {

class ElidedLabel;

class FolderRow final : public QWidget {
    Q_OBJECT

public:
    struct Handlers {
        std::function<void(const FilePath& folder)> chosen;
        std::function<void()> reset;
    };

    FolderRow(const ThemeSource& source, const QString& name, Handlers handlers, QWidget* parent = nullptr);

    void setFolder(const FilePath& folder);

private:
    void choose();

    QString m_name;
    Handlers m_handlers;
    FilePath m_folder;
    QPointer<FilePanel> m_panel;
    ElidedLabel* m_path;
};

}  // namespace quillet
