// The pitch: a field for it in cents, and buttons that change it by one.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"
#include "app/core/PlaybackCommands.h"
#include "app/ui/ThemeSource.h"

#include <QWidget>

namespace quillet {

class ValueRow;

class PitchControl final : public QWidget {
    Q_OBJECT

public:
    /// All outlive the control.
    PitchControl(AppState& state, PlaybackCommands& commands, const ThemeSource& source, QWidget* parent = nullptr);

private:
    void showPitch();
    void commitInput(const QString& text);

    AppState& m_state;
    PlaybackCommands& m_commands;
    ValueRow* m_row;
    /// The pitch that was shown when typing began.
    double m_anchor = 0;
};

}  // namespace quillet
