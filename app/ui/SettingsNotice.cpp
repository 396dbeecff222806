#include "app/ui/SettingsNotice.h"

#include "app/ui/FileNames.h"

#include <QAccessible>
#include <QPushButton>

namespace quillet {
namespace {

using Trouble = DefaultsHealth::Trouble;

/// Why the settings cannot be saved, and what helps; `%1` is their file.
QString reasonOf(Trouble trouble)
{
    switch (trouble) {
    case Trouble::busy:
        return SettingsNotice::tr(
            "Your settings cannot be saved: another program has “%1” locked. They are saved once it lets go.");
    case Trouble::full:
        return SettingsNotice::tr(
            "Your settings cannot be saved: there is no space left for “%1”. They are saved once there is.");
    case Trouble::readOnly:
        return SettingsNotice::tr("Your settings cannot be saved: “%1” may not be written. They are saved once it may.");
    case Trouble::unreadable:
        return SettingsNotice::tr("Your settings cannot be read or saved: “%1” cannot be opened. They are saved once it can.");
    case Trouble::other:
        return SettingsNotice::tr("Your settings cannot be saved: writing “%1” fails. They are saved once that works.");
    case Trouble::none:
        break;
    }
    return {};
}

}  // namespace

SettingsNotice::SettingsNotice(const ThemeSource& source, QWidget* parent)
    : Notice(source, {}, parent),
      m_close(&addButton(tr("Close")))
{
    connect(m_close, &QAbstractButton::clicked, this, [this] {
        m_readOf = m_health.movedAside;
        sync();
    });
    sync();
}

void SettingsNotice::setHealth(const DefaultsHealth& health)
{
    m_health = health;
    sync();
}

void SettingsNotice::sync()
{
    const bool isInTrouble = m_health.trouble != Trouble::none;
    const bool tellsOfDamage = m_health.movedAside && m_health.movedAside != m_readOf;
    if (isInTrouble)
        setSentence(reasonOf(m_health.trouble).arg(abbreviatedPath(m_health.file)));
    else if (tellsOfDamage)
        setSentence(tr("The file of your settings was damaged. It was moved aside as “%1”, and a new one was begun.")
                        .arg(abbreviatedPath(*m_health.movedAside)));
    m_close->setVisible(!isInTrouble);
    setVisible(isInTrouble || tellsOfDamage);
    if (isVisible()) {
        QAccessibleEvent alert(this, QAccessible::Alert);
        QAccessible::updateAccessibility(&alert);
    }
}

}  // namespace quillet
