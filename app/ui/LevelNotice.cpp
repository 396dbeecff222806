#include "app/ui/LevelNotice.h"

#include <QPushButton>

namespace quillet {

LevelNotice::LevelNotice(const AppState& state, const ThemeSource& source, QWidget* parent)
    : Notice(source, {}, parent)
{
    connect(&addButton(tr("Dismiss")), &QAbstractButton::clicked, this, &QWidget::hide);
    const auto sync = [this, &state] {
        setVisible(state.sampleLevel() != SampleLevel::usual);
        if (state.sampleLevel() == SampleLevel::farAbove)
            setSentence(tr("The numbers in this file are far above full scale. It is played as what they were meant to be."));
        else
            setSentence(tr("This file is so quiet that nothing will be heard of it. Raise its level with an audio editor."));
    };
    connect(&state, &AppState::sampleLevelChanged, this, sync);
    sync();
}

}  // namespace quillet
