// Fetches the newest yt-dlp into the user's data folder, from where it is used from then on.
// Threads: main thread; handlers run there.
#pragma once

#include "app/download/YtDlpReleases.h"
#include "platform/process/ProcessRunner.h"
#include "platform/schedule/BackgroundRunner.h"
#include "platform/schedule/Scheduler.h"

#include <expected>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace quillet {

class YtDlpUpdater {
public:
    /// All outlive the updater.
    struct Services {
        ProcessRunner& processes;
        BackgroundRunner& background;
        Scheduler& scheduler;
        /// Where uv lies, and where what belongs to the program does.
        FilePath executableDirectory;
        FilePath resourcesDirectory;
    };
    /// What is used from now on, or a sentence for the user.
    using Outcome = std::expected<YtDlpRelease, std::string>;

    YtDlpUpdater(Services services, YtDlpReleases releases);
    ~YtDlpUpdater();
    YtDlpUpdater(const YtDlpUpdater&) = delete;
    YtDlpUpdater& operator=(const YtDlpUpdater&) = delete;

    [[nodiscard]] const YtDlpReleases& releases() const { return m_releases; }
    [[nodiscard]] bool isRunning() const { return m_process != nullptr; }

    /// Tells `ended` how it went; one who asks while another's question runs is told of the same outcome.
    void update(std::function<void(const Outcome& outcome)> ended);
    /// Goes back to what came with the program, and tells `done` what that is.
    void undo(const std::function<void(const Outcome& outcome)>& done);

private:
    void finish(const std::expected<ProcessEnd, ProcessStartError>& end);
    void tellPresent(const std::function<void(const Outcome& outcome)>& told, bool undoFirst);

    Services m_services;
    YtDlpReleases m_releases;
    std::vector<std::function<void(const Outcome& outcome)>> m_waiting;
    std::unique_ptr<RunningProcess> m_process;
    std::shared_ptr<YtDlpUpdater*> m_self;
};

}  // namespace quillet
