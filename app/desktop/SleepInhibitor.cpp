#include "app/desktop/SleepInhibitor.h"

#include <QCoreApplication>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <utility>

namespace quillet {
namespace {

/// The portal's flags: 4 suspending, 8 the session's idleness, after which screens go dark.
constexpr uint suspendAndIdle = 4 | 8;

QString portalService() { return QStringLiteral("org.freedesktop.portal.Desktop"); }
QString screenSaver() { return QStringLiteral("org.freedesktop.ScreenSaver"); }

QString reason() { return QCoreApplication::translate("SleepInhibitor", "A song is playing"); }

QDBusMessage screenSaverCall(const QString& method)
{
    return QDBusMessage::createMethodCall(screenSaver(), QStringLiteral("/org/freedesktop/ScreenSaver"), screenSaver(), method);
}

/// `take` is given the answer, unless that never comes because `context` has gone.
template <typename Value, typename Take>
void ask(const QDBusConnection& bus, const QDBusMessage& question, QObject* context, Take take)
{
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(question), context);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context, [watcher, take = std::move(take)] {
        take(QDBusPendingReply<Value>(*watcher));
        watcher->deleteLater();
    });
}

}  // namespace

SleepInhibitor::SleepInhibitor(const AppState& state, const QDBusConnection& bus)
    : m_state(state),
      m_bus(bus)
{
    connect(&state, &AppState::isPlayingChanged, this, &SleepInhibitor::follow);
    follow();
}

/// One question at a time: while an answer is on its way, nothing is done; what is wanted by then is seen to when it comes.
void SleepInhibitor::follow()
{
    const bool isFree = std::holds_alternative<std::monostate>(m_held);
    if (m_state.isPlaying() && isFree)
        askPortal();
    else if (!m_state.isPlaying() && !isFree)
        release();
}

void SleepInhibitor::askPortal()
{
    m_held = Asked();
    QDBusMessage question =
        QDBusMessage::createMethodCall(portalService(), QStringLiteral("/org/freedesktop/portal/desktop"),
                                       QStringLiteral("org.freedesktop.portal.Inhibit"), QStringLiteral("Inhibit"));
    // No window is named: that takes what the toolkit does not tell.
    question << QString() << suspendAndIdle << QVariantMap{ { QStringLiteral("reason"), reason() } };
    ask<QDBusObjectPath>(m_bus, question, this, [this](const QDBusPendingReply<QDBusObjectPath>& answer) {
        if (answer.isValid())
            hold(answer.value());
        else
            askScreenSaver();
    });
}

void SleepInhibitor::askScreenSaver()
{
    QDBusMessage question = screenSaverCall(QStringLiteral("Inhibit"));
    question << QCoreApplication::applicationName() << reason();
    ask<uint>(m_bus, question, this, [this](const QDBusPendingReply<uint>& answer) {
        // Where neither does it, the next start asks again.
        hold(answer.isValid() ? Held(answer.value()) : Held());
    });
}

void SleepInhibitor::hold(const Held& held)
{
    m_held = held;
    if (!m_state.isPlaying())
        release();
}

void SleepInhibitor::release()
{
    if (std::holds_alternative<Asked>(m_held))
        return;
    const Held held = std::exchange(m_held, Held());
    if (const auto* request = std::get_if<QDBusObjectPath>(&held))
        m_bus.send(QDBusMessage::createMethodCall(portalService(), request->path(),
                                                  QStringLiteral("org.freedesktop.portal.Request"), QStringLiteral("Close")));
    if (const auto* number = std::get_if<uint>(&held)) {
        QDBusMessage message = screenSaverCall(QStringLiteral("UnInhibit"));
        message << *number;
        m_bus.send(message);
    }
}

}  // namespace quillet
