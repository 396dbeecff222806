// A file that is rendered while the window goes on.
// Threads: main thread; the work is done on one of the background's.
#pragma once

#include "app/export/Rendering.h"
#include "platform/schedule/BackgroundRunner.h"
#include "platform/schedule/Scheduler.h"

#include <atomic>
#include <memory>

namespace quillet {

class BackgroundRender {
public:
    /// Outlive the work, which may go on for a moment after this object.
    struct Services {
        RenderMedia media;
        BackgroundRunner& background;
        Scheduler& scheduler;
    };

    struct Handlers {
        /// 0 to 100, once for each.
        std::function<void(int percent)> progress;
        /// Or a sentence for the user. It may destroy the object.
        std::function<void(const std::expected<RenderEnd, std::string>& end)> ended;
    };

    /// Begins at once.
    BackgroundRender(const Services& services, const RenderOptions& options, Handlers handlers);
    /// Cancels; nobody is told any more.
    ~BackgroundRender();
    BackgroundRender(const BackgroundRender&) = delete;
    BackgroundRender& operator=(const BackgroundRender&) = delete;

    void cancel() { *m_isCancelled = true; }

private:
    std::shared_ptr<std::atomic<bool>> m_isCancelled = std::make_shared<std::atomic<bool>>(false);
    std::shared_ptr<const Handlers> m_handlers;
};

}  // namespace quillet
