#include "platform/defaults/LateWrites.h"

#include <cstdint>
#include <utility>

namespace quillet {

void LateWrites::keep(std::string_view key, Value value)
{
    m_values.insert_or_assign(std::string(key), std::make_shared<const Value>(std::move(value)));
}

const LateWrites::Value* LateWrites::find(std::string_view key) const
{
    const auto late = m_values.find(key);
    return late != m_values.end() ? late->second.get() : nullptr;
}

std::vector<LateWrites::Write> LateWrites::batch() const
{
    std::vector<Write> writes;
    writes.reserve(m_values.size());
    for (const auto& [key, value] : m_values)
        writes.push_back({ key, value });
    return writes;
}

void LateWrites::forget(const std::vector<Write>& stored)
{
    for (const Write& write : stored)
        if (const auto late = m_values.find(write.key); late != m_values.end() && late->second == write.value)
            m_values.erase(late);
}

void LateWrites::correct(std::string_view prefix, std::vector<std::string>& keys) const
{
    if (!empty())
        std::erase_if(keys, [&](const std::string& key) { return m_values.contains(key); });
    for (auto late = m_values.lower_bound(prefix); late != m_values.end() && late->first.starts_with(prefix); ++late)
        if (*late->second)
            keys.push_back(late->first);
}

void LateWrites::correct(std::string_view prefix, std::size_t headBytes, std::vector<DefaultsHead>& heads) const
{
    if (!empty())
        std::erase_if(heads, [&](const DefaultsHead& head) { return m_values.contains(head.key); });
    for (auto late = m_values.lower_bound(prefix); late != m_values.end() && late->first.starts_with(prefix); ++late)
        if (const auto* data = *late->second ? std::get_if<DefaultsData>(&**late->second) : nullptr)
            heads.push_back({ late->first, data->bytes.substr(0, headBytes), static_cast<std::int64_t>(data->bytes.size()) });
}

}  // namespace quillet
