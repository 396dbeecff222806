#include "tests/support/EventLoop.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTimer>

namespace quillet {

EventLoop::EventLoop()
{
    static int argumentCount = 1;
    static char name[] = "test";
    static char* arguments[] = { name, nullptr };
    // Kept to the end: what the toolkit keeps itself may be gone before what is destroyed then.
    static const auto* const application = new QCoreApplication(argumentCount, arguments);
    static_cast<void>(application);
}

bool EventLoop::runUntil(const std::function<bool()>& condition, double seconds)
{
    const QDeadlineTimer end(static_cast<qint64>(1000 * seconds));
    // Conditions may be about other processes: the loop is woken to look again.
    QTimer wake;
    wake.start(10);
    while (!condition()) {
        if (end.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

}  // namespace quillet
