// Where songs from the web are put. It is looked up at every call, so a change holds from the next download on. It creates and
// sets nothing: whoever lets the user choose writes the path as a text under the key of the domain, or removes the key.
// Threads: callable from every thread, as long as none changes the environment.
#pragma once

#include "platform/base/FilePath.h"
#include "platform/defaults/DefaultsDomain.h"

#include <string_view>

namespace quillet {

class DownloadSettingsStore {
public:
    static constexpr std::string_view directoryKey = "QLT.downloadDirectory";

    /// Over any domain, which outlives the store.
    explicit DownloadSettingsStore(DefaultsDomain& domain)
        : defaults(domain)
    {
    }

    /// The composition root's store over the standard domain.
    static DownloadSettingsStore& shared();

    /// The desktop's download folder unless another was chosen; "Downloads" in the home directory where the desktop names
    /// none. It need not exist.
    [[nodiscard]] FilePath downloadDirectory() const;

    DefaultsDomain& defaults;
};

}  // namespace quillet
