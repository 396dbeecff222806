#include "app/ui/PitchControl.h"

#include "AppCore/PitchInputParser.h"
#include "app/ui/controls/Fonts.h"
#include "app/ui/controls/Label.h"
#include "app/ui/controls/ValueField.h"
#include "app/ui/controls/ValueRow.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace quillet {
namespace {

constexpr int fieldWidth = 72;

}  // namespace

PitchControl::PitchControl(AppState& state, const ThemeSource& source, QWidget* parent)
    : QWidget(parent),
      m_state(state),
      m_row(new ValueRow(source,
                         { tr("Pitch"), tr("Pitch in cents"), fieldWidth, tr("Pitch down 1 cent"), tr("Pitch up 1 cent"),
                           tr("Reset pitch") })),
      m_semitones(new Label(source, Label::Role::accentNumber, {}))
{
    auto* note = new QHBoxLayout;
    note->addSpacing(ValueRow::titleWidth() + ValueRow::spacing);
    note->addWidget(new Label(source, Label::Role::secondary, tr("cents  (±1200, 100 = 1 semitone)")));
    note->addStretch();
    note->addWidget(m_semitones);
    m_row->field().setToolTip(tr("Cents, semitones (“+2 st”), or what the song’s A is tuned to (“A=443”)"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(12);
    column->addWidget(m_row);
    column->addLayout(note);
    column->addStretch();

    m_row->onStep([this](int direction) { m_state.adjustPitch(direction); });
    m_row->onReset([this] { m_state.setPitch(0); });
    m_row->field().onCommit([this](const QString& text) { commitInput(text); });
    connect(&state, &AppState::pitchChanged, this, &PitchControl::showPitch);
    showPitch();
}

void PitchControl::showPitch()
{
    m_row->field().showValue(QString::fromStdString(PitchInputParser::format(m_state.pitch())));
    m_row->setCanReset(m_state.pitch() != 0);
    m_semitones->setText(QString::fromStdString(PitchInputParser::describe(m_state.pitch())));
}

void PitchControl::commitInput(const QString& text)
{
    if (const auto typed = PitchInputParser::parse(text.toStdString(), m_state.pitch()))
        m_state.setPitch(*typed);
    showPitch();
}

}  // namespace quillet
