#include "app/download/YtDlpUpdater.h"

#include <QCoreApplication>
#include <QString>

#include <utility>

namespace quillet {
namespace {

struct Text {
    Q_DECLARE_TR_FUNCTIONS(YtDlpUpdater)
};

QString trimmed(const std::string& text) { return QString::fromStdString(text).simplified(); }

}  // namespace

YtDlpUpdater::YtDlpUpdater(Services services, YtDlpReleases releases)
    : m_services(std::move(services)),
      m_releases(std::move(releases)),
      m_self(std::make_shared<YtDlpUpdater*>(this))
{
}

YtDlpUpdater::~YtDlpUpdater() = default;

void YtDlpUpdater::update(std::function<void(const Outcome& outcome)> ended)
{
    m_waiting.push_back(std::move(ended));
    if (isRunning())
        return;
    const FilePath uv = m_services.executableDirectory / "uv";
    const FilePath script = m_services.resourcesDirectory / "download" / "update.py";
    const ProcessRequest request{ uv,
                                  { "run", "--no-project", "--python", "3.12", script.native(), uv.native(),
                                    m_releases.updates().native() },
                                  // uv would take a Python project in its working directory for ours.
                                  m_releases.updates().root_path(),
                                  ProcessInput::none };
    m_process = m_services.processes.run(
        request, { .standardOutput = {}, .standardError = {}, .ended = [this](const auto& end) { finish(end); } });
}

void YtDlpUpdater::finish(const std::expected<ProcessEnd, ProcessStartError>& end)
{
    m_process.reset();
    const auto tellAll = [waiting = std::exchange(m_waiting, {})](const Outcome& outcome) {
        for (const auto& told : waiting)
            told(outcome);
    };
    if (end && end->status == 0) {
        tellPresent(tellAll, false);
        return;
    }
    const QString reason = end ? trimmed(end->standardError) : trimmed(end.error().description);
    tellAll(std::unexpected((reason.isEmpty() ? Text::tr("The newest yt-dlp could not be fetched.") : reason).toStdString()));
}

void YtDlpUpdater::undo(const std::function<void(const Outcome& outcome)>& done) { tellPresent(done, true); }

void YtDlpUpdater::tellPresent(const std::function<void(const Outcome& outcome)>& told, bool undoFirst)
{
    m_services.background.run(
        [releases = m_releases, &scheduler = m_services.scheduler, self = std::weak_ptr(m_self), told, undoFirst] {
            if (undoFirst)
                releases.undoUpdates();
            scheduler.post([self, told, present = releases.present()] {
                if (self.lock())
                    told(present);
            });
        });
}

}  // namespace quillet
