#include "app/ui/SpeedControl.h"

#include "AppCore/SpeedInputParser.h"
#include "AppCore/TypedNumber.h"
#include "app/ui/QuilletStyle.h"
#include "app/ui/controls/Fonts.h"
#include "app/ui/controls/Label.h"
#include "app/ui/controls/ValueField.h"
#include "app/ui/controls/ValueRow.h"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace quillet {
namespace {

constexpr int fieldWidth = 64;
constexpr int customFieldWidth = 64;
constexpr int segmentWidth = 46;
/// The least, where there is little room.
constexpr int segmentPadding = 7;
constexpr double maxStep = 100;

/// The choices of the step picker, as they are shown from left to right.
enum class StepPreset { one, two, five, ten, twentyFive, custom };

struct StepChoice {
    StepPreset preset;
    const char* label;
    /// 0: whatever the field says.
    double percent;
};
constexpr std::array stepChoices{
    StepChoice{ StepPreset::one, QT_TRANSLATE_NOOP("quillet::SpeedControl", "1%"), 1 },
    StepChoice{ StepPreset::two, QT_TRANSLATE_NOOP("quillet::SpeedControl", "2%"), 2 },
    StepChoice{ StepPreset::five, QT_TRANSLATE_NOOP("quillet::SpeedControl", "5%"), 5 },
    StepChoice{ StepPreset::ten, QT_TRANSLATE_NOOP("quillet::SpeedControl", "10%"), 10 },
    StepChoice{ StepPreset::twentyFive, QT_TRANSLATE_NOOP("quillet::SpeedControl", "25%"), 25 },
    StepChoice{ StepPreset::custom, QT_TRANSLATE_NOOP("quillet::SpeedControl", "Custom"), 0 },
};

/// The preset of that step, or `custom`.
StepPreset presetOf(double percent)
{
    const auto* const found = std::ranges::find(stepChoices, percent, &StepChoice::percent);
    return found == stepChoices.end() ? StepPreset::custom : found->preset;
}

/// As few digits as name it: "5", "7.5".
QString shortNumber(double value) { return QString::number(value, 'g', 6); }

}  // namespace

SpeedControl::SpeedControl(AppState& state, const ThemeSource& source, QWidget* parent)
    : QWidget(parent),
      m_state(state),
      m_row(new ValueRow(
          source,
          { tr("Speed"), tr("Speed in percent"), fieldWidth, tr("Decrease speed"), tr("Increase speed"), tr("Reset speed") })),
      m_steps(new QButtonGroup(this)),
      m_customStep(new ValueField(tr("Custom speed step in percent"), customFieldWidth))
{
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(12);
    column->addWidget(m_row);
    buildSteps(source);

    m_row->onStep([this](int direction) { m_state.adjustSpeed(direction * m_state.speedStep()); });
    m_row->onReset([this] { m_state.setSpeed(100); });
    m_row->field().onCommit([this](const QString& text) { commitSpeedInput(text); });
    connect(&state, &AppState::speedChanged, this, &SpeedControl::showSpeed);
    connect(&state, &AppState::speedStepChanged, this, &SpeedControl::showStep);
    connect(&state, &AppState::audioFileURLChanged, this, [this] {
        m_wantsCustomStep = false;
        showStep();
    });
    showSpeed();
    showStep();
}

void SpeedControl::buildSteps(const ThemeSource& source)
{
    auto* row = new QHBoxLayout;
    row->setSpacing(6);
    auto* caption = new Label(source, Label::Role::secondary, tr("Step:"));
    caption->setFixedWidth(ValueRow::titleWidth());
    row->addWidget(caption);
    row->addSpacing(2);
    const auto add = [&](const StepChoice& choice) {
        const QString label = tr(choice.label);
        auto* button = new QPushButton(label);
        button->setCheckable(true);
        button->setAccessibleName(tr("Speed step %1").arg(label));
        button->setFocusPolicy(Qt::TabFocus);
        setButtonKind(*button, ButtonKind::segment);
        if (choice.preset != StepPreset::custom) {
            button->setMinimumWidth(fontMetrics().horizontalAdvance(label) + 2 * segmentPadding);
            button->setMaximumWidth(scaled(segmentWidth));
            button->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
        }
        m_steps->addButton(button, static_cast<int>(choice.preset));
        row->addWidget(button);
    };
    for (const StepChoice& choice : stepChoices)
        add(choice);
    row->addWidget(m_customStep);
    row->addStretch();
    // The row keeps its height while the field is hidden.
    m_customStep->hide();
    static_cast<QVBoxLayout*>(layout())->addLayout(row);

    connect(m_steps, &QButtonGroup::idClicked, this, [this](int id) {
        const StepChoice& choice = stepChoices[static_cast<std::size_t>(id)];
        m_wantsCustomStep = choice.preset == StepPreset::custom;
        if (!m_wantsCustomStep)
            m_state.setSpeedStep(choice.percent);
        showStep();
        if (m_wantsCustomStep)
            m_customStep->setFocus(Qt::OtherFocusReason);
    });
    m_customStep->onCommit([this](const QString& text) { commitCustomStep(text); });
}

/// Cut to the whole percent, as it is shown everywhere.
void SpeedControl::showSpeed()
{
    m_row->field().showValue(QString::number(static_cast<int>(m_state.speed())) + QLatin1Char('%'));
    m_row->setCanReset(m_state.speed() != 100);
}

void SpeedControl::showStep()
{
    const double step = m_state.speedStep();
    const StepPreset preset = m_wantsCustomStep ? StepPreset::custom : presetOf(step);
    m_steps->button(static_cast<int>(preset))->setChecked(true);
    m_customStep->showValue(shortNumber(step));
    m_customStep->setVisible(preset == StepPreset::custom);
}

void SpeedControl::commitSpeedInput(const QString& text)
{
    if (const auto typed = SpeedInputParser::parse(text.toStdString(), m_state.speed()))
        m_state.setSpeed(*typed);
    showSpeed();
}

void SpeedControl::commitCustomStep(const QString& text)
{
    const auto typed = readNumber(text.toStdString());
    if (typed && *typed > 0 && *typed <= maxStep) {
        m_wantsCustomStep = false;
        m_state.setSpeedStep(*typed);
    }
    showStep();
}

}  // namespace quillet
