// What every defaults domain has in common: the typed reads and writes, over one read and one write of a value. How values
// are kept is left to the class below.
// Threads: callable from every thread, as `read` and `write` are.
#pragma once

#include "platform/defaults/DefaultsDomain.h"
#include "platform/defaults/DefaultsValue.h"

namespace quillet {

class TypedDefaultsDomain : public DefaultsDomain {
public:
    std::optional<std::string> data(std::string_view key) const final;
    std::optional<std::string> string(std::string_view key) const final;
    std::optional<std::vector<std::string>> stringArray(std::string_view key) const final;
    std::optional<double> real(std::string_view key) const final;
    std::optional<std::int64_t> integer(std::string_view key) const final;
    std::optional<bool> boolean(std::string_view key) const final;

    void setData(std::string_view key, std::string_view bytes) final;
    void setString(std::string_view key, std::string_view text) final;
    void setStringArray(std::string_view key, const std::vector<std::string>& texts) final;
    /// What is not a number cannot be kept: the key stays as it is.
    void setReal(std::string_view key, double value) final;
    void setInteger(std::string_view key, std::int64_t value) final;
    void setBoolean(std::string_view key, bool value) final;

protected:
    [[nodiscard]] virtual std::optional<DefaultsValue> read(std::string_view key) const = 0;
    virtual void write(std::string_view key, const DefaultsValue& value) = 0;
};

}  // namespace quillet
