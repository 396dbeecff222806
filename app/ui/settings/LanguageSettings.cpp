#include "app/ui/settings/LanguageSettings.h"

#include "app/ui/Translations.h"
#include "app/ui/controls/Label.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include <utility>

namespace quillet {

LanguageSettings::LanguageSettings(const ThemeSource& source, DefaultsDomain& defaults, std::function<bool()> changeLanguage,
                                   QWidget* parent)
    : QWidget(parent),
      m_defaults(defaults),
      m_changeLanguage(std::move(changeLanguage)),
      m_choice(new QComboBox),
      m_hint(new Label(source, Label::Role::secondary,
                       tr("Something is still under way: it changes when Quillet is started again.")))
{
    m_choice->addItem(tr("As the desktop"), QString());
    for (const Language& language : Translations::languages)
        m_choice->addItem(QString::fromUtf8(language.name), QLatin1String(language.code));
    m_choice->setAccessibleDescription(tr("Language"));
    auto* title = new Label(source, Label::Role::text, tr("Language"));
    title->setBuddy(m_choice);
    setFocusProxy(m_choice);
    auto* row = new QHBoxLayout;
    row->addWidget(title);
    row->addStretch(1);
    row->addWidget(m_choice);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);
    column->addLayout(row);
    column->addWidget(m_hint, 0, Qt::AlignRight);
    m_hint->hide();
    connect(m_choice, &QComboBox::activated, this, [this] {
        Translations::choose(m_defaults, m_choice->currentData().toString().toStdString());
        m_hint->setVisible(!m_changeLanguage());
    });
}

void LanguageSettings::loadCurrentSettings()
{
    m_choice->setCurrentIndex(m_choice->findData(QString::fromStdString(Translations::chosen(m_defaults))));
}

}  // namespace quillet
