// A defaults domain that lasts as long as the object: for runs that leave the user's settings alone, and for tests.
// Threads: callable from every thread.
#pragma once

#include "platform/defaults/TypedDefaultsDomain.h"

#include <map>
#include <mutex>

namespace quillet {

class MemoryDefaultsDomain final : public TypedDefaultsDomain {
public:
    void remove(std::string_view key) override;
    void removeAll(std::span<const std::string> keys) override;
    std::vector<std::string> allKeys() const override;
    std::vector<std::string> keysWithPrefix(std::string_view prefix) const override;
    DefaultsSize sizeOfPrefix(std::string_view prefix) const override;
    std::vector<DefaultsHead> dataHeads(std::string_view prefix, std::size_t headBytes) const override;

protected:
    [[nodiscard]] std::optional<DefaultsValue> read(std::string_view key) const override;
    void write(std::string_view key, const DefaultsValue& value) override;

private:
    template <typename Visit> void forEachWithPrefix(std::string_view prefix, Visit visit) const;

    mutable std::mutex m_mutex;
    std::map<std::string, DefaultsValue, std::less<>> m_values;  // guarded by m_mutex
};

}  // namespace quillet
