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
    std::vector<std::string> allKeys() const override;

protected:
    [[nodiscard]] std::optional<DefaultsValue> read(std::string_view key) const override;
    void write(std::string_view key, const DefaultsValue& value) override;

private:
    mutable std::mutex m_mutex;
    std::map<std::string, DefaultsValue, std::less<>> m_values;  // guarded by m_mutex
};

}  // namespace quillet
