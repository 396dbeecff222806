#include "app/ui/PitchControl.h"

#include "AppCore/PitchInputParser.h"
#include "app/ui/QuilletStyle.h"
#include "app/ui/controls/Label.h"
#include "app/ui/controls/SymbolButton.h"
#include "app/ui/controls/ValueField.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

namespace quillet {
namespace {

constexpr int fieldWidth = 72;
constexpr int captionWidth = 58;

}  // namespace

PitchControl::PitchControl(AppState& state, PlaybackCommands& commands, const ThemeSource& source, QWidget* parent)
    : QWidget(parent),
      m_state(state),
      m_commands(commands),
      m_field(new ValueField(tr("Pitch in cents"), fieldWidth)),
      m_reset(new QPushButton(tr("Reset")))
{
    auto* title = new Label(source, Label::Role::title, tr("Pitch"));
    title->setFixedWidth(captionWidth);
    auto* minus = new SymbolButton(source, QStringLiteral("minus"), tr("Pitch down 1 cent"), ButtonKind::plain);
    auto* plus = new SymbolButton(source, QStringLiteral("plus"), tr("Pitch up 1 cent"), ButtonKind::plain);
    minus->setAutoRepeat(true);
    plus->setAutoRepeat(true);
    m_reset->setAccessibleName(tr("Reset pitch"));

    auto* row = new QHBoxLayout;
    row->setSpacing(8);
    for (QWidget* widget : std::initializer_list<QWidget*>{ title, minus, m_field, plus })
        row->addWidget(widget);
    row->addStretch();
    row->addWidget(m_reset);
    auto* note = new QHBoxLayout;
    note->addSpacing(captionWidth + 8);
    note->addWidget(new Label(source, Label::Role::secondary, QStringLiteral("cents  (±1200, 100 = 1 semitone)")));
    note->addStretch();
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(12);
    column->addLayout(row);
    column->addLayout(note);
    column->addStretch();

    connect(minus, &QAbstractButton::clicked, this, [this] { m_commands.pitchDown(); });
    connect(plus, &QAbstractButton::clicked, this, [this] { m_commands.pitchUp(); });
    connect(m_reset, &QAbstractButton::clicked, this, [this] { m_commands.setPitch(0); });
    m_field->onEditingBegun([this] { m_anchor = m_state.pitch(); });
    m_field->onCommit([this](const QString& text) { commitInput(text); });
    m_field->onStep([this](int direction) { m_commands.changePitch(direction); });
    connect(&state, &AppState::pitchChanged, this, &PitchControl::showPitch);
    showPitch();
}

void PitchControl::showPitch()
{
    m_field->showValue(QString::fromStdString(PitchInputParser::format(m_state.pitch())));
    m_reset->setEnabled(m_state.pitch() != 0);
}

void PitchControl::commitInput(const QString& text)
{
    if (const auto typed = PitchInputParser::parse(text.toStdString(), m_anchor))
        m_commands.setPitch(*typed);
    showPitch();
}

}  // namespace quillet
