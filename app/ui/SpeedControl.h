// The speed: a field for it, buttons that change it by a step, and the choice of that step.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"
#include "app/core/PlaybackCommands.h"
#include "app/ui/ThemeSource.h"

#include <QWidget>

#include <array>

class QButtonGroup;

namespace quillet {

class ValueField;
class ValueRow;

class SpeedControl final : public QWidget {
    Q_OBJECT

public:
    /// All outlive the control.
    SpeedControl(AppState& state, PlaybackCommands& commands, const ThemeSource& source, QWidget* parent = nullptr);

private:
    void buildSteps(const ThemeSource& source);
    void showSpeed();
    void showStep();
    void commitSpeedInput(const QString& text);
    void commitCustomStep(const QString& text);

    AppState& m_state;
    PlaybackCommands& m_commands;
    ValueRow* m_row;
    QButtonGroup* m_steps;
    ValueField* m_customStep;
    /// The speed that was shown when typing began.
    double m_anchor = 0;
    /// "Custom" was chosen while the step is still that of a preset.
    bool m_wantsCustomStep = false;
};

}  // namespace quillet
