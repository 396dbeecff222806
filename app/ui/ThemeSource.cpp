#include "app/ui/ThemeSource.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QGuiApplication>
#include <QMetaType>
#include <QPalette>

namespace quillet {
namespace {

constexpr int middleLightness = 128;
/// What the portal's "color-scheme" says: 0 no preference, 1 dark, 2 light.
constexpr uint prefersDark = 1;
constexpr uint prefersLight = 2;

QString portalService() { return QStringLiteral("org.freedesktop.portal.Desktop"); }
QString portalPath() { return QStringLiteral("/org/freedesktop/portal/desktop"); }
QString portalSettings() { return QStringLiteral("org.freedesktop.portal.Settings"); }
QString appearanceGroup() { return QStringLiteral("org.freedesktop.appearance"); }
QString colorScheme() { return QStringLiteral("color-scheme"); }

Appearance appearanceOfPalette()
{
    const QColor window = QGuiApplication::palette().color(QPalette::Window);
    return window.lightness() < middleLightness ? Appearance::dark : Appearance::light;
}

/// The portal wraps its answers once or twice.
QVariant unwrapped(QVariant value)
{
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

}  // namespace

ThemeSource::ThemeSource(QObject* parent)
    : QObject(parent),
      m_theme(appearanceOfPalette()),
      m_usual(m_theme.appearance)
{
}

void ThemeSource::setAppearance(Appearance appearance)
{
    if (m_theme.appearance == appearance)
        return;
    m_theme = AppTheme(appearance);
    Q_EMIT themeChanged();
}

void ThemeSource::followDesktop()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    // The bus looks the slot's types up by name, and knows this one only once somebody has used it.
    qRegisterMetaType<QDBusVariant>();
    bus.connect(portalService(), portalPath(), portalSettings(), QStringLiteral("SettingChanged"), this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    QDBusMessage question =
        QDBusMessage::createMethodCall(portalService(), portalPath(), portalSettings(), QStringLiteral("Read"));
    question << appearanceGroup() << colorScheme();
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(question), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        const QDBusPendingReply<QDBusVariant> answer = *watcher;
        if (answer.isValid())
            takePreference(unwrapped(QVariant::fromValue(answer.value())));
        watcher->deleteLater();
    });
}

void ThemeSource::settingChanged(const QString& group, const QString& key, const QDBusVariant& value)
{
    if (group == appearanceGroup() && key == colorScheme())
        takePreference(unwrapped(value.variant()));
}

void ThemeSource::takePreference(const QVariant& preference)
{
    switch (preference.toUInt()) {
    case prefersDark:
        // The palette may have been dark for that reason alone.
        m_usual = Appearance::light;
        setAppearance(Appearance::dark);
        break;
    case prefersLight:
        m_usual = Appearance::light;
        setAppearance(Appearance::light);
        break;
    default:
        setAppearance(m_usual);
    }
}

}  // namespace quillet
