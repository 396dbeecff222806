// The user's defaults domain: a persistent store of small typed values under text keys. Every read goes to the store, so
// two instances (and two processes) over one store see each other's writes. Keys are bytes and may hold file names that are
// not UTF-8. A read of a key that is missing or holds another type answers nothing. A write never fails: what the store cannot
// take now counts all the same for whoever reads here, and the class below sees to it.
// Threads: callable from every thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quillet {

/// Of all values under a family of keys.
struct DefaultsSize {
    std::int64_t keys = 0;
    /// Of the values that are data; others count nothing.
    std::int64_t dataBytes = 0;

    bool operator==(const DefaultsSize&) const = default;
};

/// The beginning of a data value.
struct DefaultsHead {
    std::string key;
    std::string head;
    /// Of the whole value.
    std::int64_t byteCount = 0;
};

class DefaultsDomain {
public:
    virtual ~DefaultsDomain() = default;

    /// Bytes, opaque to the store.
    virtual std::optional<std::string> data(std::string_view key) const = 0;
    virtual std::optional<std::string> string(std::string_view key) const = 0;
    virtual std::optional<std::vector<std::string>> stringArray(std::string_view key) const = 0;
    /// Numbers convert between `real` and `integer` where the value is exact; a boolean reads as 0 or 1 and a number as a
    /// boolean (not 0).
    virtual std::optional<double> real(std::string_view key) const = 0;
    virtual std::optional<std::int64_t> integer(std::string_view key) const = 0;
    virtual std::optional<bool> boolean(std::string_view key) const = 0;

    virtual void setData(std::string_view key, std::string_view bytes) = 0;
    virtual void setString(std::string_view key, std::string_view text) = 0;
    virtual void setStringArray(std::string_view key, const std::vector<std::string>& texts) = 0;
    virtual void setReal(std::string_view key, double value) = 0;
    virtual void setInteger(std::string_view key, std::int64_t value) = 0;
    virtual void setBoolean(std::string_view key, bool value) = 0;

    /// Removes the key, whatever it holds; harmless when it is missing.
    virtual void remove(std::string_view key) = 0;

    /// Removes the keys all at once; those that are missing are no matter.
    virtual void removeAll(std::span<const std::string> keys) = 0;

    /// Every key of the domain, in no particular order.
    virtual std::vector<std::string> allKeys() const = 0;

    // What follows concerns the keys that begin with `prefix`, byte for byte, and costs by their number: it does not read
    // the values.

    virtual std::vector<std::string> keysWithPrefix(std::string_view prefix) const = 0;
    virtual DefaultsSize sizeOfPrefix(std::string_view prefix) const = 0;
    /// Up to `headBytes` of each value that is data, in no particular order.
    virtual std::vector<DefaultsHead> dataHeads(std::string_view prefix, std::size_t headBytes) const = 0;
};

}  // namespace quillet
