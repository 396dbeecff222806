// Keeps the practice settings of every audio file in the user's defaults domain, one JSON record under the file's path. It
// holds nothing in memory and reports nothing: a record that cannot be written or read counts as absent.
// Threads: main thread.
#pragma once

#include "AppCore/FileSettings.h"
#include "platform/base/FilePath.h"
#include "platform/defaults/DefaultsDomain.h"

#include <optional>

namespace quillet {

class SettingsStore {
public:
    /// Over any domain, which outlives the store.
    explicit SettingsStore(DefaultsDomain& defaults)
        : m_defaults(defaults)
    {
    }

    /// The composition root's store over the standard domain.
    static SettingsStore& shared();

    /// Replaces the record of the file named by `url`, whose path is taken as it is. Settings that cannot be encoded
    /// leave the stored record alone.
    void save(const FileSettings& settings, const FilePath& url);

    /// The record of the file; nothing when there is none or it does not decode (it stays stored).
    [[nodiscard]] std::optional<FileSettings> load(const FilePath& url) const;

    // ---- Aside ----
    // Settings of a file that starts with the defaults once more, for as long as the user may want them back. One record a
    // file, beside the one above.

    void keepAside(const FileSettings& settings, const FilePath& url);
    [[nodiscard]] std::optional<FileSettings> loadAside(const FilePath& url) const;
    void forgetAside(const FilePath& url);

    /// Removes the records of all files, those kept aside too, and nothing else.
    void clearAll();

private:
    DefaultsDomain& m_defaults;
};

}  // namespace quillet
