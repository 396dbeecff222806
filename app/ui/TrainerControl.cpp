#include "app/ui/TrainerControl.h"

#include "AppCore/SpeedInputParser.h"
#include "AppCore/TypedNumber.h"
#include "app/ui/controls/Choice.h"
#include "app/ui/controls/Drawer.h"
#include "app/ui/controls/Label.h"
#include "app/ui/controls/Switch.h"
#include "app/ui/controls/ValueField.h"
#include "app/ui/controls/ValueRow.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace quillet {
namespace {

constexpr int fieldWidth = 58;

QString shown(double value, bool isPercent)
{
    return QString::number(value, 'g', 6) + (isPercent ? QStringLiteral("%") : QString());
}

}  // namespace

TrainerControl::TrainerControl(AppState& state, const ThemeSource& source, QWidget* parent)
    : QWidget(parent),
      m_state(state),
      m_switch(new Switch(source, tr("Trainer"))),
      m_status(new Label(source, Label::Role::secondary, {})),
      m_resume(new QPushButton(tr("Resume"))),
      m_atGoal(new Choice(tr("At the goal"))),
      m_drawer(new Drawer(buildSettings(source)))
{
    auto* caption = new Label(source, Label::Role::title, tr("Trainer"));
    caption->setFixedWidth(ValueRow::titleWidth());
    m_switch->setToolTip(tr("Play the loop at one speed after the other"));
    m_resume->setFocusPolicy(Qt::TabFocus);
    auto* header = new QHBoxLayout;
    header->setSpacing(8);
    header->addWidget(caption);
    header->addWidget(m_switch);
    header->addSpacing(8);
    header->addWidget(m_status);
    header->addStretch();
    header->addWidget(m_resume);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addLayout(header);
    column->addWidget(m_drawer);

    connect(m_switch, &QAbstractButton::clicked, this,
            [this](bool isOn) { isOn ? m_state.startTrainer() : m_state.stopTrainer(); });
    connect(m_resume, &QAbstractButton::clicked, this, [this] { m_state.resumeTrainer(); });
    connect(m_atGoal, &QComboBox::activated, this, [this](int place) {
        Trainer trainer = m_state.trainer();
        trainer.atGoal = static_cast<Trainer::AtGoal>(m_atGoal->itemData(place).toInt());
        m_state.setTrainer(trainer);
    });
    for (const auto changed : { &AppState::trainerStateChanged, &AppState::trainerPassChanged, &AppState::speedChanged })
        connect(&state, changed, this, &TrainerControl::syncState);
    connect(&state, &AppState::trainerChanged, this, &TrainerControl::syncSettings);
    syncSettings();
}

QWidget* TrainerControl::buildSettings(const ThemeSource& source)
{
    auto* settings = new QWidget;
    auto* column = new QVBoxLayout(settings);
    column->setContentsMargins(0, 10, 0, 0);
    column->setSpacing(8);
    const auto newRow = [column] {
        auto* row = new QHBoxLayout;
        row->setSpacing(6);
        column->addLayout(row);
        return row;
    };
    const auto say = [&source](QHBoxLayout& row, const QString& text) {
        if (!text.isEmpty())
            row.addWidget(new Label(source, Label::Role::secondary, text));
    };
    constexpr double minSpeed = SpeedInputParser::min;
    constexpr double maxSpeed = SpeedInputParser::max;
    auto* speeds = newRow();
    say(*speeds, tr("From", "a speed"));
    addEntry(*speeds, tr("Trainer, first speed in percent"),
             { nullptr, [](const Trainer& trainer) { return trainer.fromSpeed; },
               [](Trainer& trainer, double value) { trainer.fromSpeed = value; }, minSpeed, maxSpeed, true });
    say(*speeds, tr("to", "a speed"));
    addEntry(*speeds, tr("Trainer, goal in percent"),
             { nullptr, [](const Trainer& trainer) { return trainer.goalSpeed; },
               [](Trainer& trainer, double value) { trainer.goalSpeed = value; }, minSpeed, maxSpeed, true });
    say(*speeds, tr("by", "steps of"));
    addEntry(*speeds, tr("Trainer, step in percent"),
             { nullptr, [](const Trainer& trainer) { return trainer.stepSize; },
               [](Trainer& trainer, double value) { trainer.stepSize = value; }, Trainer::minStep, Trainer::maxStep, true });
    speeds->addStretch();
    auto* passes = newRow();
    say(*passes, tr("every", "so many passes"));
    addEntry(*passes, tr("Trainer, passes at each speed"),
             { nullptr, [](const Trainer& trainer) { return static_cast<double>(trainer.passesPerStep); },
               [](Trainer& trainer, double value) { trainer.passesPerStep = std::llround(value); }, 1, Trainer::maxPasses,
               false });
    say(*passes, tr("passes, then", "stay, stop or start over"));
    m_atGoal->addItem(tr("Stay"), static_cast<int>(Trainer::AtGoal::stay));
    m_atGoal->addItem(tr("Stop"), static_cast<int>(Trainer::AtGoal::stop));
    m_atGoal->addItem(tr("Start Over"), static_cast<int>(Trainer::AtGoal::startOver));
    passes->addWidget(m_atGoal);
    passes->addStretch();
    return settings;
}

void TrainerControl::addEntry(QHBoxLayout& row, const QString& name, Entry entry)
{
    entry.field = new ValueField(name, fieldWidth);
    row.addWidget(entry.field);
    const std::size_t place = m_entries.size();
    entry.field->onCommit([this, place](const QString& text) { commit(m_entries[place], text); });
    entry.field->onStep([this, place](int direction) {
        const Entry& stepped = m_entries[place];
        commit(stepped, QString::number(stepped.get(m_state.trainer()) + direction, 'g', 6));
    });
    m_entries.push_back(entry);
}

/// What is no number leaves it as it is.
void TrainerControl::commit(const Entry& entry, const QString& text)
{
    QString typed = text.trimmed();
    typed.remove(QLatin1Char('%'));
    if (const auto value = readNumber(typed.trimmed().toStdString()); value && std::isfinite(*value)) {
        Trainer trainer = m_state.trainer();
        entry.set(trainer, std::clamp(*value, entry.min, entry.max));
        m_state.setTrainer(trainer);
    }
    entry.field->showValue(shown(entry.get(m_state.trainer()), entry.isPercent));
}

void TrainerControl::syncSettings()
{
    const Trainer& trainer = m_state.trainer();
    for (const Entry& entry : m_entries)
        entry.field->showValue(shown(entry.get(trainer), entry.isPercent));
    m_atGoal->setCurrentIndex(m_atGoal->findData(static_cast<int>(trainer.atGoal)));
    syncState();
}

void TrainerControl::syncState()
{
    const TrainerState state = m_state.trainerState();
    m_switch->setChecked(state != TrainerState::off);
    m_drawer->setOpen(state != TrainerState::off);
    m_resume->setVisible(state == TrainerState::paused);
    m_status->setText(status());
}

QString TrainerControl::status() const
{
    const Trainer& trainer = m_state.trainer();
    const std::int64_t pass = m_state.trainerPass();
    switch (m_state.trainerState()) {
    case TrainerState::off:
        return {};
    case TrainerState::paused:
        return tr("Paused");
    case TrainerState::on:
        break;
    }
    const QString speed = shown(m_state.speed(), true);
    if (trainer.atGoal == Trainer::AtGoal::stay && pass / trainer.passesPerStep >= trainer.stepCount() - 1)
        return tr("Goal reached: %1").arg(speed);
    return tr("Pass %1 of %2 at %3").arg(pass % trainer.passesPerStep + 1).arg(trainer.passesPerStep).arg(speed);
}

}  // namespace quillet
