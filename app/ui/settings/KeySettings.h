// Every command with its key: a click on the key, and the next one that is pressed is the command's.
// Threads: main thread.
#pragma once

#include "app/core/KeyMap.h"
#include "app/ui/ThemeSource.h"

#include <QWidget>

#include <optional>
#include <vector>

class QGridLayout;
class QKeyEvent;
class QPushButton;

namespace quillet {

class Label;

/// As the command's row, and a clash with it, call it.
[[nodiscard]] QString commandText(const Command& command);
/// As the platform writes it.
[[nodiscard]] QString chordText(const KeyChord& chord);

class KeySettings final : public QWidget {
    Q_OBJECT

public:
    /// Both outlive the view.
    KeySettings(const ThemeSource& source, KeyMap& keys, QWidget* parent = nullptr);
    ~KeySettings() override;
    KeySettings(const KeySettings&) = delete;
    KeySettings& operator=(const KeySettings&) = delete;

    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    void hideEvent(QHideEvent* event) override;

private:
    struct Row {
        CommandId id;
        QPushButton* key;
        QPushButton* reset;
        /// Which other command has the key too.
        Label* clash;
    };

    void addRow(QGridLayout& grid, const Command& command, const ThemeSource& source);
    void begin(CommandId id);
    void end();
    void take(const QKeyEvent& event);
    void sync();

    KeyMap& m_keys;
    std::vector<Row> m_rows;
    QPushButton* m_resetAll;
    /// The command whose key is being chosen.
    std::optional<CommandId> m_waiting;
};

}  // namespace quillet
