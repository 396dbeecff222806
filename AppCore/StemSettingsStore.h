// Where stems are written and where the environment that separates them lies. Each place is looked up at every call, so a
// change holds from the next use on. It creates nothing and sets nothing: whoever lets the user choose writes the path as a
// text under the key, or removes the key.
// Threads: callable from every thread, as long as none changes the environment.
#pragma once

#include "platform/base/FilePath.h"
#include "platform/defaults/DefaultsDomain.h"

#include <string_view>

namespace quillet {

class StemSettingsStore {
public:
    static constexpr std::string_view stemsDirKey = "QLT.stemsDirectory";
    static constexpr std::string_view depsDirKey = "QLT.dependenciesDirectory";

    /// Over any domain, which outlives the store.
    explicit StemSettingsStore(const DefaultsDomain& defaults)
        : m_defaults(defaults)
    {
    }

    /// The composition root's store over the standard domain.
    static StemSettingsStore& shared();

    /// "stems" and "venv" in ".quillet" of the home directory unless others were chosen. They need not exist.
    [[nodiscard]] FilePath stemsDirectory() const;
    [[nodiscard]] FilePath dependenciesDirectory() const;

private:
    [[nodiscard]] FilePath directory(std::string_view key, const char* nameAtHome) const;

    const DefaultsDomain& m_defaults;
};

}  // namespace quillet
