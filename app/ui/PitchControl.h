// The pitch: a field for it in cents, and buttons that change it by one.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"
#include "app/ui/ThemeSource.h"

#include <QWidget>

namespace quillet {

class Label;
class ValueRow;

class PitchControl final : public QWidget {
    Q_OBJECT

public:
    /// Both outlive the control.
    PitchControl(AppState& state, const ThemeSource& source, QWidget* parent = nullptr);

private:
    void showPitch();
    void commitInput(const QString& text);

    AppState& m_state;
    ValueRow* m_row;
    /// The pitch in words of music.
    Label* m_semitones;
};

}  // namespace quillet
