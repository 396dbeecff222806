// The help: eight sections of text over the window.
// Threads: main thread.
#pragma once

#include "app/ui/ThemeSource.h"

#include <QDialog>

class QGridLayout;
class QVBoxLayout;

namespace quillet {

class HelpSheet final : public QDialog {
    Q_OBJECT

public:
    HelpSheet(const ThemeSource& source, QWidget* parent);

private:
    void section(QVBoxLayout& column, const QString& title, const QString& content, const ThemeSource& source);
    static void shortcutRow(QGridLayout& table, const QString& key, const QString& description, const ThemeSource& source);
    void addShortcuts(QVBoxLayout& column, const ThemeSource& source);
};

/// `text` with the key that it calls Cmd under this platform's name ("Ctrl").
[[nodiscard]] QString withPlatformKeys(QString text);

}  // namespace quillet
