#include "AppCore/SettingsStore.h"

#include "AppCore/SharedInstance.h"

#include <string>
#include <string_view>

namespace quillet {
namespace {

constexpr std::string_view keyPrefix = "settings.";

/// Paths begin with a slash: no file's own record has this prefix.
constexpr std::string_view asidePrefix = "settings.aside.";

std::string keyOf(const FilePath& url) { return std::string(keyPrefix) + url.native(); }
std::string asideKeyOf(const FilePath& url) { return std::string(asidePrefix) + url.native(); }

}  // namespace

SettingsStore& SettingsStore::shared() { return SharedInstance<SettingsStore>::get(); }

void SettingsStore::save(const FileSettings& settings, const FilePath& url)
{
    if (const auto json = encodeFileSettings(settings))
        m_defaults.setData(keyOf(url), *json);
}

std::optional<FileSettings> SettingsStore::load(const FilePath& url) const
{
    const auto json = m_defaults.data(keyOf(url));
    return json ? decodeFileSettings(*json) : std::nullopt;
}

void SettingsStore::keepAside(const FileSettings& settings, const FilePath& url)
{
    if (const auto json = encodeFileSettings(settings))
        m_defaults.setData(asideKeyOf(url), *json);
}

std::optional<FileSettings> SettingsStore::loadAside(const FilePath& url) const
{
    const auto json = m_defaults.data(asideKeyOf(url));
    return json ? decodeFileSettings(*json) : std::nullopt;
}

void SettingsStore::forgetAside(const FilePath& url) { m_defaults.remove(asideKeyOf(url)); }

void SettingsStore::clearAll() { m_defaults.removeAll(m_defaults.keysWithPrefix(keyPrefix)); }

}  // namespace quillet
