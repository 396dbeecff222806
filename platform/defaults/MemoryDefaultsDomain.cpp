#include "platform/defaults/MemoryDefaultsDomain.h"

namespace quillet {

void MemoryDefaultsDomain::remove(std::string_view key)
{
    const std::scoped_lock lock(m_mutex);
    if (const auto entry = m_values.find(key); entry != m_values.end())
        m_values.erase(entry);
}

void MemoryDefaultsDomain::removeAll(std::span<const std::string> keys)
{
    const std::scoped_lock lock(m_mutex);
    for (const std::string& key : keys)
        m_values.erase(key);
}

std::vector<std::string> MemoryDefaultsDomain::allKeys() const { return keysWithPrefix(""); }

/// Calls `visit(key, value)` for each, under the lock.
template <typename Visit> void MemoryDefaultsDomain::forEachWithPrefix(std::string_view prefix, Visit visit) const
{
    const std::scoped_lock lock(m_mutex);
    for (auto entry = m_values.lower_bound(prefix); entry != m_values.end() && entry->first.starts_with(prefix); ++entry)
        visit(entry->first, entry->second);
}

std::vector<std::string> MemoryDefaultsDomain::keysWithPrefix(std::string_view prefix) const
{
    std::vector<std::string> keys;
    forEachWithPrefix(prefix, [&](const std::string& key, const DefaultsValue&) { keys.push_back(key); });
    return keys;
}

DefaultsSize MemoryDefaultsDomain::sizeOfPrefix(std::string_view prefix) const
{
    DefaultsSize size;
    forEachWithPrefix(prefix, [&](const std::string&, const DefaultsValue& value) {
        const auto* data = std::get_if<DefaultsData>(&value);
        ++size.keys;
        size.dataBytes += data != nullptr ? static_cast<std::int64_t>(data->bytes.size()) : 0;
    });
    return size;
}

std::vector<DefaultsHead> MemoryDefaultsDomain::dataHeads(std::string_view prefix, std::size_t headBytes) const
{
    std::vector<DefaultsHead> heads;
    forEachWithPrefix(prefix, [&](const std::string& key, const DefaultsValue& value) {
        if (const auto* data = std::get_if<DefaultsData>(&value))
            heads.push_back({ key, data->bytes.substr(0, headBytes), static_cast<std::int64_t>(data->bytes.size()) });
    });
    return heads;
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
