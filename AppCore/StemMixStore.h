// Keeps the mix of every track's stems in the user's defaults domain, one JSON record under the track's path: an object with a
// member for each stem, of the number "volume" and the boolean "soloed". A record that cannot be read counts as absent.
// Threads: callable from every thread.
#pragma once

#include "AppCore/StemMix.h"
#include "platform/base/FilePath.h"
#include "platform/defaults/DefaultsDomain.h"

namespace quillet {

class StemMixStore {
public:
    /// Over any domain, which outlives the store.
    explicit StemMixStore(DefaultsDomain& defaults)
        : m_defaults(defaults)
    {
    }

    /// Replaces the record of `track`; a mix like that of a track without a record leaves none.
    void save(const StemMix& mix, const FilePath& track);
    /// With every volume within its limits; the default mix where there is no record.
    [[nodiscard]] StemMix load(const FilePath& track) const;
    void remove(const FilePath& track);
    /// Removes the records of all tracks, and nothing else.
    void clearAll();

private:
    DefaultsDomain& m_defaults;
};

}  // namespace quillet
