#include "app/ui/settings/LimitPicker.h"

#include "app/ui/AppTheme.h"
#include "app/ui/controls/Fonts.h"
#include "app/ui/controls/Label.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QVBoxLayout>

#include <utility>

namespace quillet {
namespace {

constexpr int fieldWidth = 70;
constexpr int fieldPadding = 6;

}  // namespace

LimitPicker::LimitPicker(const ThemeSource& source, const Texts& texts, const QStringList& labels, Handlers handlers,
                         QWidget* parent)
    : QWidget(parent),
      m_texts(texts),
      m_handlers(std::move(handlers)),
      m_choice(new QComboBox),
      m_field(new QLineEdit),
      m_unit(new Label(source, Label::Role::text, texts.unit)),
      m_refusal(new Label(source, Label::Role::error, {}))
{
    m_choice->addItems(labels);
    // A screen reader calls it by what is chosen.
    m_choice->setAccessibleName(texts.name);
    m_choice->setAccessibleDescription(texts.name);
    m_field->setFixedSize(scaled(fieldWidth), scaled(AppTheme::controlHeight));
    m_field->setTextMargins(fieldPadding, 0, fieldPadding, 0);
    m_field->setPlaceholderText(texts.placeholder);
    m_field->setAccessibleName(texts.title);
    auto* row = new QHBoxLayout;
    auto* title = new Label(source, Label::Role::text, texts.title);
    title->setBuddy(m_choice);
    row->addWidget(title);
    row->addStretch(1);
    row->addWidget(m_field);
    row->addWidget(m_unit);
    row->addWidget(m_choice);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);
    column->addLayout(row);
    column->addWidget(m_refusal, 0, Qt::AlignRight);
    m_refusal->hide();
    connect(m_choice, &QComboBox::activated, this, [this](int place) {
        m_refusal->hide();
        m_handlers.chosen(place);
        sync();
        if (!m_field->isHidden()) {
            m_field->setFocus();
            m_field->selectAll();
        }
    });
    connect(m_field, &QLineEdit::editingFinished, this, &LimitPicker::commit);
    sync();
}

void LimitPicker::show(int place, const QString& customText)
{
    m_choice->setCurrentIndex(place);
    m_field->setText(customText);
    m_refusal->hide();
    sync();
}

void LimitPicker::commit()
{
    // One who goes on to a preset means that.
    if (m_field->isHidden())
        return;
    const bool isLimit = m_handlers.committed(m_field->text());
    m_refusal->setText(m_texts.refusal);
    m_refusal->setVisible(!isLimit);
}

void LimitPicker::sync()
{
    const bool isCustom = m_choice->currentIndex() == m_choice->count() - 1;
    m_field->setVisible(isCustom);
    m_unit->setVisible(isCustom && !m_texts.unit.isEmpty());
}

}  // namespace quillet
