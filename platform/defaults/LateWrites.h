// What has been set but is not in the file yet: the last value of each key, or that it is removed. It answers for these keys in
// the file's place.
// Threads: one thread at a time; a batch is a copy that another thread may work on.
#pragma once

#include "platform/defaults/DefaultsDomain.h"
#include "platform/defaults/DefaultsValue.h"

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillet {

class LateWrites {
public:
    /// Nothing stands for a key to remove.
    using Value = std::optional<DefaultsValue>;
    struct Write {
        std::string key;
        std::shared_ptr<const Value> value;
    };

    void keep(std::string_view key, Value value);
    [[nodiscard]] bool empty() const { return m_values.empty(); }
    /// Null if the key is not late.
    [[nodiscard]] const Value* find(std::string_view key) const;

    /// All that is late now. Values are shared, not copied.
    [[nodiscard]] std::vector<Write> batch() const;
    /// Forgets those, now that they are stored, that have not been set again since.
    void forget(const std::vector<Write>& stored);

    /// Corrects what the file says of the keys that begin with `prefix`.
    void correct(std::string_view prefix, std::vector<std::string>& keys) const;
    void correct(std::string_view prefix, std::size_t headBytes, std::vector<DefaultsHead>& heads) const;

private:
    std::map<std::string, std::shared_ptr<const Value>, std::less<>> m_values;
};

}  // namespace quillet
