// The switch of the loop, and the pause between two passes.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"
#include "app/ui/ThemeSource.h"

#include <QWidget>

class QStackedLayout;

namespace quillet {

class Switch;
class TimePickerField;

class LoopControl final : public QWidget {
    Q_OBJECT

public:
    /// Both outlive the control.
    LoopControl(AppState& state, const ThemeSource& source, QWidget* parent = nullptr);

private:
    void sync();

    AppState& m_state;
    Switch* m_switch;
    QWidget* m_delay;
    TimePickerField* m_seconds;
    TimePickerField* m_milliseconds;
};

}  // namespace quillet
