#include "platform/schedule/QtRealtimeKit.h"

#include "platform/base/RealtimeTimeLimit.h"
#include "platform/base/ThreadPriority.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusVariant>
#include <QVariant>

#include <algorithm>
#include <optional>
#include <stop_token>

#include <unistd.h>

namespace quillet {
namespace {

/// Requests seldom come; this only bounds what a wake that went astray could cost.
constexpr double idleSeconds = 3600;
constexpr double answerPollSeconds = 0.01;
constexpr int answerMilliseconds = 5000;

QString service() { return QStringLiteral("org.freedesktop.RealtimeKit1"); }
QString path() { return QStringLiteral("/org/freedesktop/RealtimeKit1"); }

/// A connection of this thread's own, so that nobody waits for it.
class Bus {
public:
    Bus()
        : m_connection(QDBusConnection::connectToBus(QDBusConnection::SystemBus, name()))
    {
    }
    /// What has come in the meantime is still delivered by the library's own thread, which must not do so while the program
    /// ends and its types are gone. That thread makes connections too: one that fails at once comes back when the rest is done.
    ~Bus()
    {
        QDBusConnection::disconnectFromBus(name());
        m_connection = QDBusConnection(QString());
        QDBusConnection::connectToBus(QStringLiteral("none:"), name());
        QDBusConnection::disconnectFromBus(name());
    }
    Bus(const Bus&) = delete;
    Bus& operator=(const Bus&) = delete;

    [[nodiscard]] bool isConnected() const { return m_connection.isConnected(); }

    /// The answer's message; nothing on an error, without an answer in time, and once a stop is requested.
    [[nodiscard]] std::optional<QDBusMessage> ask(const QString& interface, const QString& method,
                                                  const QVariantList& arguments, const std::stop_token& stopped,
                                                  RealtimeRequests& requests)
    {
        QDBusMessage question = QDBusMessage::createMethodCall(service(), path(), interface, method);
        question.setArguments(arguments);
        const QDBusPendingCall call = m_connection.asyncCall(question, answerMilliseconds);
        while (!call.isFinished() && !stopped.stop_requested())
            requests.wait(answerPollSeconds);
        if (!call.isFinished() || call.isError())
            return std::nullopt;
        return call.reply();
    }

private:
    static QString name() { return QStringLiteral("quillet-realtime-kit"); }

    QDBusConnection m_connection;
};

/// One round of questions.
class Asking {
public:
    Asking(RealtimeRequests& requests, const std::stop_token& stopped)
        : m_requests(requests),
          m_stopped(stopped)
    {
    }

    void askFor(pid_t thread)
    {
        if (!m_bus.isConnected())
            return;
        if (!m_highestPriority)
            m_highestPriority = property(QStringLiteral("MaxRealtimePriority"));
        if (!m_longestRun)
            m_longestRun = property(QStringLiteral("RTTimeUSecMax"));
        if (m_highestPriority.value_or(0) >= 1 && m_longestRun.value_or(0) > 0 && limitRealtimeRuns(*m_longestRun)) {
            watchRealtimeThread(thread);
            const auto priority = static_cast<quint32>(std::min<std::int64_t>(realtimePriority, *m_highestPriority));
            if (make(QStringLiteral("MakeThreadRealtimeWithPID"), thread, QVariant::fromValue(priority)))
                return;
        }
        [[maybe_unused]] const bool raised = make(QStringLiteral("MakeThreadHighPriorityWithPID"), thread,
                                                  QVariant::fromValue(static_cast<qint32>(raisedNiceLevel)));
    }

private:
    [[nodiscard]] bool make(const QString& method, pid_t thread, const QVariant& level)
    {
        const QVariantList arguments{ QVariant::fromValue(static_cast<quint64>(::getpid())),
                                      QVariant::fromValue(static_cast<quint64>(thread)), level };
        return m_bus.ask(service(), method, arguments, m_stopped, m_requests).has_value();
    }

    [[nodiscard]] std::optional<std::int64_t> property(const QString& name)
    {
        const auto answer = m_bus.ask(QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"),
                                      { service(), name }, m_stopped, m_requests);
        if (!answer || answer->arguments().isEmpty())
            return std::nullopt;
        bool isNumber = false;
        const qlonglong value = answer->arguments().constFirst().value<QDBusVariant>().variant().toLongLong(&isNumber);
        return isNumber ? std::optional<std::int64_t>(value) : std::nullopt;
    }

    RealtimeRequests& m_requests;
    const std::stop_token& m_stopped;
    Bus m_bus;
    std::optional<std::int64_t> m_highestPriority;
    std::optional<std::int64_t> m_longestRun;
};

void run(RealtimeRequests& requests, const std::stop_token& stopped)
{
    for (;;) {
        if (auto thread = requests.take()) {
            Asking asking(requests, stopped);
            for (; thread && !stopped.stop_requested(); thread = requests.take())
                asking.askFor(*thread);
        }
        // The wake that came with the stop may have been taken while an answer was waited for.
        if (stopped.stop_requested())
            return;
        requests.wait(idleSeconds);
    }
}

}  // namespace

QtRealtimeKit::QtRealtimeKit(RealtimeRequests& requests)
    : m_requests(requests),
      m_asker([&requests](const std::stop_token& stopped) { run(requests, stopped); })
{
}

QtRealtimeKit::~QtRealtimeKit()
{
    m_asker.request_stop();
    m_requests.wake();
}

}  // namespace quillet
