#include "app/export/BackgroundRender.h"

#include "platform/base/ThreadPriority.h"

#include <utility>

namespace quillet {

BackgroundRender::BackgroundRender(const Services& services, const RenderOptions& options, Handlers handlers)
    : m_handlers(std::make_shared<const Handlers>(std::move(handlers)))
{
    services.background.run([services, options, isCancelled = m_isCancelled, told = std::weak_ptr(m_handlers)] {
        // The window and what it plays go first; the threads that this one starts are as low.
        lowerThreadPriority();
        int lastPercent = -1;
        const auto showProgress = [&](double fraction) {
            const int percent = static_cast<int>(100 * fraction);
            if (std::exchange(lastPercent, percent) == percent)
                return;
            services.scheduler.post([told, percent] {
                if (const auto all = told.lock())
                    all->progress(percent);
            });
        };
        const auto end = renderToFile(options, services.media, { showProgress, [&] { return isCancelled->load(); } });
        services.scheduler.post([told, end] {
            if (const auto all = told.lock())
                all->ended(end);
        });
    });
}

BackgroundRender::~BackgroundRender() { cancel(); }

}  // namespace quillet
