#include "app/ui/controls/TimePickerField.h"

#include "app/ui/controls/Fonts.h"
#include "app/ui/controls/Label.h"
#include "app/ui/controls/SymbolButton.h"
#include "app/ui/controls/ValueField.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>

namespace quillet {
namespace {

constexpr int fieldWidth = 50;
constexpr int stepButtonHeight = 16;
constexpr int stepSymbolSize = 12;
constexpr std::int64_t twoDigits = 100;

/// Digits with an optional sign, and nothing else.
std::optional<std::int64_t> wholeNumber(const QString& text)
{
    const std::string bytes = text.toStdString();
    const char* begin = bytes.data() + (bytes.starts_with('+') ? 1 : 0);
    const char* end = bytes.data() + bytes.size();
    if (bytes.starts_with("+-"))
        return std::nullopt;
    std::int64_t number = 0;
    const auto [last, failure] = std::from_chars(begin, end, number);
    return failure == std::errc() && last == end ? std::optional(number) : std::nullopt;
}

class StepButton final : public SymbolButton {
public:
    StepButton(const ThemeSource& source, const QString& symbol, const QString& name)
        : SymbolButton(source, symbol, name, ButtonKind::bare, stepSymbolSize)
    {
        setFixedSize(fieldWidth / 2 - 3, scaled(stepButtonHeight));
        setAutoRepeat(true);
        // The field before it does the same with the arrow keys.
        setFocusPolicy(Qt::NoFocus);
    }
};

}  // namespace

TimePickerField::TimePickerField(const ThemeSource& source, const QString& label, const QString& name, Range range,
                                 QWidget* parent)
    : QWidget(parent),
      m_range(range),
      m_value(range.lowest),
      m_field(new ValueField(name, fieldWidth))
{
    auto* up = new StepButton(source, QStringLiteral("chevron.up"), tr("Increase %1").arg(name));
    auto* down = new StepButton(source, QStringLiteral("chevron.down"), tr("Decrease %1").arg(name));
    auto* steps = new QVBoxLayout;
    steps->setSpacing(0);
    steps->addWidget(up);
    steps->addWidget(down);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(2);
    row->addWidget(m_field);
    row->addLayout(steps);
    row->addWidget(new Label(source, Label::Role::secondary, label));

    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);

    connect(up, &QAbstractButton::clicked, this, &TimePickerField::increment);
    connect(down, &QAbstractButton::clicked, this, &TimePickerField::decrement);
    m_field->onCommit([this](const QString& text) { commit(text); });
    m_field->onStep([this](int direction) { step(direction); });
    m_field->showValue(formatted(m_value));
}

void TimePickerField::setValue(std::int64_t value)
{
    m_value = value;
    m_field->showValue(formatted(value));
}

QString TimePickerField::formatted(std::int64_t value) const
{
    return QStringLiteral("%1").arg(value, m_range.highest < twoDigits ? 2 : 3, 10, QLatin1Char('0'));
}

void TimePickerField::step(int direction)
{
    setValue(std::clamp(m_value + direction, m_range.lowest, m_range.highest));
    if (m_onCommit)
        m_onCommit();
}

void TimePickerField::commit(const QString& text)
{
    if (const auto typed = wholeNumber(text))
        m_value = std::clamp(*typed, m_range.lowest, m_range.highest);
    m_field->showValue(formatted(m_value));
    if (m_onCommit)
        m_onCommit();
}

}  // namespace quillet
