// Named notifications, by which menus, buttons and keys ask for what others carry out. They are delivered at once, to whoever
// has subscribed by then; one that nobody waits for does nothing.
// Threads: main thread.
#pragma once

#include "platform/base/FilePath.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quillet {

class Notifications {
public:
    using Handler = std::function<void(const std::optional<FilePath>& object)>;

    /// Ends with the object.
    class Subscription {
    public:
        Subscription() = default;

    private:
        friend class Notifications;
        explicit Subscription(std::shared_ptr<void> entry)
            : m_entry(std::move(entry))
        {
        }
        std::shared_ptr<void> m_entry;
    };

    /// `handler` is called for every `post` of `name`, until the subscription ends, which may be while it is called.
    [[nodiscard]] Subscription subscribe(std::string_view name, Handler handler);

    /// Calls the handlers of `name` in the order in which they subscribed. Those that subscribe meanwhile are not called.
    void post(std::string_view name, const std::optional<FilePath>& object = std::nullopt);

private:
    struct Entry {
        std::string name;
        Handler handler;
    };

    std::vector<std::weak_ptr<Entry>> m_entries;
};

}  // namespace quillet
