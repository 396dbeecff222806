#include "platform/process/QtProcessRunner.h"

#include <QFile>
#include <QProcess>
#include <QTimer>

#include <csignal>
#include <unistd.h>
#include <utility>

#ifdef Q_OS_LINUX
#include <sys/prctl.h>
#endif

namespace quillet {
namespace {

QString toQt(const std::string& bytes) { return QFile::decodeName(QByteArray::fromStdString(bytes)); }

/// Runs in the child, between fork and exec.
void becomeLeader()
{
    // Without a controlling terminal: one that asks questions on it would be stopped for ever.
    setsid();
#ifdef Q_OS_LINUX
    prctl(PR_SET_PDEATHSIG, SIGTERM);
#endif
}

}  // namespace

class QtProcessRunner::Child {
public:
    explicit Child(Handlers handlers)
        : m_handlers(std::move(handlers))
    {
        m_process.setInputChannelMode(QProcess::ForwardedInputChannel);
        m_process.setChildProcessModifier(becomeLeader);
        QObject::connect(&m_process, &QProcess::readyReadStandardOutput, &m_process, [this] { drainOutput(); });
        QObject::connect(&m_process, &QProcess::readyReadStandardError, &m_process, [this] { drainErrors(); });
        QObject::connect(&m_process, &QProcess::finished, &m_process, [this](int status) {
            drainOutput();
            drainErrors();
            m_end.status = status;
            finish(std::move(m_end));
        });
        QObject::connect(&m_process, &QProcess::errorOccurred, &m_process, [this](QProcess::ProcessError error) {
            if (error != QProcess::FailedToStart)
                return;
            // It may be said inside `start`.
            QTimer::singleShot(0, &m_process,
                               [this] { finish(std::unexpected(ProcessStartError{ m_process.errorString().toStdString() })); });
        });
    }

    ~Child()
    {
        m_process.disconnect();
        const auto leader = static_cast<pid_t>(m_process.processId());
        if (leader <= 0)
            return;
        kill(-leader, SIGKILL);
        // It may not have become a leader yet.
        m_process.kill();
        m_process.waitForFinished();
    }

    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    void start(const ProcessRequest& request)
    {
        QStringList arguments;
        for (const std::string& argument : request.arguments)
            arguments.append(toQt(argument));
        m_process.setWorkingDirectory(toQt(request.workingDirectory.native()));
        m_process.start(toQt(request.executable.native()), arguments);
    }

    /// Everything has been said.
    [[nodiscard]] bool isOver() const { return m_isOver; }

private:
    void drainOutput() { m_end.standardOutput += m_process.readAllStandardOutput().toStdString(); }

    void drainErrors()
    {
        const std::string piece = m_process.readAllStandardError().toStdString();
        m_end.standardError += piece;
        if (m_handlers.standardError && !piece.empty())
            m_handlers.standardError(piece);
    }

    void finish(std::expected<ProcessEnd, ProcessStartError> end)
    {
        m_handlers.ended(std::move(end));
        m_isOver = true;
    }

    Handlers m_handlers;
    QProcess m_process;
    ProcessEnd m_end;
    bool m_isOver = false;
};

QtProcessRunner::QtProcessRunner() = default;

QtProcessRunner::~QtProcessRunner() = default;

void QtProcessRunner::run(const ProcessRequest& request, Handlers handlers)
{
    // Not as they end: they are still at work then.
    std::erase_if(m_children, [](const auto& child) { return child->isOver(); });
    m_children.push_back(std::make_unique<Child>(std::move(handlers)));
    m_children.back()->start(request);
}

void QtProcessRunner::endAll() { m_children.clear(); }

}  // namespace quillet
