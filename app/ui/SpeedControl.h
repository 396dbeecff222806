// The speed: a field for it, buttons that change it by a step, and the choice of that step.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"
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
    /// Both outlive the control.
    SpeedControl(AppState& state, const ThemeSource& source, QWidget* parent = nullptr);

private:
    void buildSteps(const ThemeSource& source);
    void showSpeed();
    void showStep();
    void commitSpeedInput(const QString& text);
    void commitCustomStep(const QString& text);

    AppState& m_state;
    ValueRow* m_row;
    QButtonGroup* m_steps;
    ValueField* m_customStep;
    /// "Custom" was chosen while the step is still that of a preset.
    bool m_wantsCustomStep = false;
};

}  // namespace quillet
