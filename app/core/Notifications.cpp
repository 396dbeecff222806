#include "app/core/Notifications.h"

namespace quillet {

Notifications::Subscription Notifications::subscribe(std::string_view name, Handler handler)
{
    auto entry = std::make_shared<Entry>(std::string(name), std::move(handler));
    m_entries.emplace_back(entry);
    return Subscription(std::move(entry));
}

void Notifications::post(std::string_view name, const std::optional<FilePath>& object)
{
    std::erase_if(m_entries, [](const std::weak_ptr<Entry>& entry) { return entry.expired(); });
    // A copy: handlers may subscribe and post. Each entry is held only while it is called, so that one that unsubscribes
    // another ends it at once.
    const auto entries = m_entries;
    for (const auto& weak : entries)
        if (const auto entry = weak.lock(); entry && entry->name == name)
            entry->handler(object);
}

}  // namespace quillet
