#include "platform/defaults/MemoryDefaultsDomain.h"

namespace quillet {

void MemoryDefaultsDomain::remove(std::string_view key)
{
    const std::scoped_lock lock(m_mutex);
    if (const auto entry = m_values.find(key); entry != m_values.end())
        m_values.erase(entry);
}

std::vector<std::string> MemoryDefaultsDomain::allKeys() const
{
    const std::scoped_lock lock(m_mutex);
    std::vector<std::string> keys;
    for (const auto& [key, value] : m_values)
        keys.push_back(key);
    return keys;
}

std::optional<DefaultsValue> MemoryDefaultsDomain::read(std::string_view key) const
{
    const std::scoped_lock lock(m_mutex);
    const auto entry = m_values.find(key);
    return entry != m_values.end() ? std::optional(entry->second) : std::nullopt;
}

void MemoryDefaultsDomain::write(std::string_view key, const DefaultsValue& value)
{
    const std::scoped_lock lock(m_mutex);
    m_values.insert_or_assign(std::string(key), value);
}

}  // namespace quillet
