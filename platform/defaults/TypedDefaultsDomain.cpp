#include "platform/defaults/TypedDefaultsDomain.h"

#include <cmath>
#include <utility>

namespace quillet {
namespace {

template <typename T> std::optional<T> as(std::optional<DefaultsValue> value)
{
    T* held = value ? std::get_if<T>(&*value) : nullptr;
    return held != nullptr ? std::optional<T>(std::move(*held)) : std::nullopt;
}

}  // namespace

std::optional<std::string> TypedDefaultsDomain::data(std::string_view key) const
{
    return as<DefaultsData>(read(key)).transform([](DefaultsData&& data) { return std::move(data.bytes); });
}

std::optional<std::string> TypedDefaultsDomain::string(std::string_view key) const { return as<std::string>(read(key)); }

std::optional<std::vector<std::string>> TypedDefaultsDomain::stringArray(std::string_view key) const
{
    return as<std::vector<std::string>>(read(key));
}

std::optional<double> TypedDefaultsDomain::real(std::string_view key) const { return read(key).and_then(realOf); }

std::optional<std::int64_t> TypedDefaultsDomain::integer(std::string_view key) const { return read(key).and_then(integerOf); }

std::optional<bool> TypedDefaultsDomain::boolean(std::string_view key) const { return read(key).and_then(booleanOf); }

void TypedDefaultsDomain::setData(std::string_view key, std::string_view bytes)
{
    write(key, DefaultsData{ std::string(bytes) });
}

void TypedDefaultsDomain::setString(std::string_view key, std::string_view text) { write(key, std::string(text)); }

void TypedDefaultsDomain::setStringArray(std::string_view key, const std::vector<std::string>& texts) { write(key, texts); }

void TypedDefaultsDomain::setReal(std::string_view key, double value)
{
    if (!std::isnan(value))
        write(key, value);
}

void TypedDefaultsDomain::setInteger(std::string_view key, std::int64_t value) { write(key, value); }

void TypedDefaultsDomain::setBoolean(std::string_view key, bool value) { write(key, value); }

}  // namespace quillet
