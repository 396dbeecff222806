#include "app/ui/LoopControl.h"

#include "app/ui/TrainerControl.h"
#include "app/ui/controls/Fonts.h"
#include "app/ui/controls/Label.h"
#include "app/ui/controls/Switch.h"
#include "app/ui/controls/TimePickerField.h"
#include "app/ui/controls/ValueRow.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace quillet {

LoopControl::LoopControl(AppState& state, const ThemeSource& source, QWidget* parent)
    : QWidget(parent),
      m_state(state),
      m_switch(new Switch(source, tr("Loop"))),
      m_delay(new QWidget),
      m_seconds(new TimePickerField(source, tr("sec"), tr("Loop delay, seconds"), { 0, 99 })),
      m_milliseconds(new TimePickerField(source, tr("ms"), tr("Loop delay, milliseconds"), { 0, 999 }))
{
    auto* delay = new QHBoxLayout(m_delay);
    delay->setContentsMargins(0, 0, 0, 0);
    delay->setSpacing(10);
    delay->addWidget(new Label(source, Label::Role::secondary, tr("Delay:")));
    delay->addWidget(m_seconds);
    delay->addWidget(m_milliseconds);
    // Unseen it still keeps its place.
    QSizePolicy policy = m_delay->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    m_delay->setSizePolicy(policy);

    auto* caption = new Label(source, Label::Role::title, tr("Loop"));
    caption->setFixedWidth(ValueRow::titleWidth());
    auto* row = new QHBoxLayout;
    row->setSpacing(8);
    row->addWidget(caption);
    row->addWidget(m_switch);
    row->addSpacing(24);
    row->addWidget(m_delay);
    row->addStretch();
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(12);
    column->addLayout(row);
    column->addWidget(new TrainerControl(state, source));
    column->addStretch();

    connect(m_switch, &QAbstractButton::clicked, this, [this](bool isOn) { m_state.setLoopEnabled(isOn); });
    m_seconds->onCommit([this] {
        if (m_seconds->value() != m_state.loopDelaySeconds())
            m_state.setLoopDelaySeconds(m_seconds->value());
    });
    m_milliseconds->onCommit([this] {
        if (m_milliseconds->value() != m_state.loopDelayMilliseconds())
            m_state.setLoopDelayMilliseconds(m_milliseconds->value());
    });
    for (const auto changed :
         { &AppState::loopEnabledChanged, &AppState::loopDelaySecondsChanged, &AppState::loopDelayMillisecondsChanged })
        connect(&state, changed, this, &LoopControl::sync);
    sync();
}

void LoopControl::sync()
{
    m_switch->setChecked(m_state.loopEnabled());
    m_delay->setVisible(m_state.loopEnabled());
    m_seconds->setValue(m_state.loopDelaySeconds());
    m_milliseconds->setValue(m_state.loopDelayMilliseconds());
}

}  // namespace quillet
