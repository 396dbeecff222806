#include "app/ui/controls/ValueRow.h"

#include "app/ui/controls/Fonts.h"
#include "app/ui/controls/Label.h"
#include "app/ui/controls/SymbolButton.h"
#include "app/ui/controls/ValueField.h"

#include <QCoreApplication>
#include <QFontMetrics>
#include <QHBoxLayout>
#include <QPushButton>

#include <algorithm>
#include <array>
#include <utility>

namespace quillet {
namespace {

/// All that stand in the column.
constexpr std::array<std::pair<const char*, const char*>, 5> titles{ { { "quillet::SpeedControl", "Speed" },
                                                                       { "quillet::SpeedControl", "Step:" },
                                                                       { "quillet::PitchControl", "Pitch" },
                                                                       { "quillet::LoopControl", "Loop" },
                                                                       { "quillet::EQView", "EQ" } } };

}  // namespace

int ValueRow::titleWidth()
{
    int width = scaled(minTitleWidth);
    const QFontMetrics letters(titleFont());
    for (const auto& [context, title] : titles)
        width = std::max(width, letters.horizontalAdvance(QCoreApplication::translate(context, title)));
    return width;
}

ValueRow::ValueRow(const ThemeSource& source, const Names& names, QWidget* parent)
    : QWidget(parent),
      m_field(new ValueField(names.field, names.fieldWidth)),
      m_less(new SymbolButton(source, QStringLiteral("minus"), names.less, ButtonKind::plain)),
      m_more(new SymbolButton(source, QStringLiteral("plus"), names.more, ButtonKind::plain)),
      m_reset(new QPushButton(tr("Reset")))
{
    auto* title = new Label(source, Label::Role::title, names.title);
    title->setFixedWidth(titleWidth());
    m_less->setAutoRepeat(true);
    m_more->setAutoRepeat(true);
    m_reset->setAccessibleName(names.reset);
    m_reset->setFocusPolicy(Qt::TabFocus);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(spacing);
    for (QWidget* widget : std::initializer_list<QWidget*>{ title, m_less, m_field, m_more })
        row->addWidget(widget);
    row->addStretch();
    row->addWidget(m_reset);
}

void ValueRow::setCanReset(bool canReset) { m_reset->setEnabled(canReset); }

void ValueRow::onStep(const std::function<void(int direction)>& step)
{
    m_field->onStep(step);
    connect(m_less, &QAbstractButton::clicked, this, [step] { step(-1); });
    connect(m_more, &QAbstractButton::clicked, this, [step] { step(1); });
}

void ValueRow::onReset(std::function<void()> reset)
{
    connect(m_reset, &QAbstractButton::clicked, this, [reset = std::move(reset)] { reset(); });
}

}  // namespace quillet
