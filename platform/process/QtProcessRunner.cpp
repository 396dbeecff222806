#include "platform/process/QtProcessRunner.h"

#include <QFile>
#include <QProcess>
#include <QTimer>

#include <csignal>
#include <cstddef>
#include <unistd.h>
#include <utility>

#ifdef Q_OS_LINUX
#include <sys/prctl.h>
#endif

namespace quillet {
namespace {

/// How long the end of the program waits for a child that has been killed.
constexpr int lastTimeoutMilliseconds = 100;

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
        : m_handlers(std::make_shared<const Handlers>(std::move(handlers)))
    {
        QProcess* process = m_process.get();
        process->setChildProcessModifier(becomeLeader);
        QObject::connect(process, &QProcess::readyReadStandardOutput, process, [this] { drainOutput(); });
        QObject::connect(process, &QProcess::readyReadStandardError, process, [this] { drainErrors(); });
        QObject::connect(process, &QProcess::finished, process, [this](int status) {
            endGroup();
            drainOutput();
            drainErrors();
            m_end.status = status;
            finish(std::move(m_end));
        });
        QObject::connect(process, &QProcess::errorOccurred, process, [this](QProcess::ProcessError error) {
            if (error != QProcess::FailedToStart)
                return;
            // It may be said inside `start`.
            QTimer::singleShot(0, m_process.get(), [this] {
                finish(std::unexpected(ProcessStartError{ m_process->errorString().toStdString() }));
            });
        });
    }

    ~Child()
    {
        m_process->disconnect();
        // One that hangs in the kernel would hold up the end of the program.
        if (m_process->state() != QProcess::NotRunning && !m_process->waitForFinished(lastTimeoutMilliseconds))
            (void)m_process.release();
    }

    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    void start(const ProcessRequest& request)
    {
        QStringList arguments;
        for (const std::string& argument : request.arguments)
            arguments.append(toQt(argument));
        if (request.input == ProcessInput::inherited)
            m_process->setInputChannelMode(QProcess::ForwardedInputChannel);
        else
            m_process->setStandardInputFile(QProcess::nullDevice());
        m_process->setWorkingDirectory(toQt(request.workingDirectory.native()));
        m_process->start(toQt(request.executable.native()), arguments);
        m_leader = static_cast<pid_t>(m_process->processId());
    }

    void terminate() const
    {
        if (m_process->state() != QProcess::NotRunning)
            m_process->terminate();
    }

    void end()
    {
        m_handlers.reset();
        if (m_process->state() == QProcess::NotRunning)
            return;
        // It may not have become a leader yet, and starts nothing after this.
        m_process->kill();
        endGroup();
    }

    /// Everything has been said.
    [[nodiscard]] bool isOver() const { return m_isOver; }

private:
    void endGroup() const
    {
        if (m_leader > 0)
            kill(-m_leader, SIGKILL);
    }

    void drainOutput() { pass(m_process->readAllStandardOutput(), &Handlers::standardOutput, m_end.standardOutput); }

    void drainErrors() { pass(m_process->readAllStandardError(), &Handlers::standardError, m_end.standardError); }

    void pass(const QByteArray& bytes, std::function<void(std::string_view)> Handlers::* handler, std::string& kept) const
    {
        // The handler may end the child, and with it all handlers.
        const auto handlers = m_handlers;
        if (!handlers || bytes.isEmpty())
            return;
        const std::string_view piece(bytes.data(), static_cast<std::size_t>(bytes.size()));
        if (const auto& take = handlers.get()->*handler)
            take(piece);
        else
            kept += piece;
    }

    void finish(std::expected<ProcessEnd, ProcessStartError> end)
    {
        if (const auto handlers = std::exchange(m_handlers, nullptr))
            handlers->ended(std::move(end));
        m_isOver = true;
    }

    /// None once it has been ended or has said everything.
    std::shared_ptr<const Handlers> m_handlers;
    std::unique_ptr<QProcess> m_process = std::make_unique<QProcess>();
    /// The child's number and its group's; 0 if it could not be started.
    pid_t m_leader = 0;
    ProcessEnd m_end;
    bool m_isOver = false;
};

class QtProcessRunner::Handle final : public RunningProcess {
public:
    explicit Handle(std::weak_ptr<Child> child)
        : m_child(std::move(child))
    {
    }
    ~Handle() override
    {
        if (const auto child = m_child.lock())
            child->end();
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    void terminate() override
    {
        if (const auto child = m_child.lock())
            child->terminate();
    }

private:
    std::weak_ptr<Child> m_child;
};

QtProcessRunner::QtProcessRunner() = default;

QtProcessRunner::~QtProcessRunner() { endAll(); }

std::unique_ptr<RunningProcess> QtProcessRunner::run(const ProcessRequest& request, Handlers handlers)
{
    // Not as they end: they are still at work then.
    std::erase_if(m_children, [](const auto& child) { return child->isOver(); });
    const auto child = std::make_shared<Child>(std::move(handlers));
    m_children.push_back(child);
    child->start(request);
    return std::make_unique<Handle>(child);
}

void QtProcessRunner::endAll()
{
    for (const auto& child : m_children)
        child->end();
}

}  // namespace quillet
