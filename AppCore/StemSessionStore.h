// Keeps the stems of every track in the user's defaults domain, one JSON record under the track's path: an array of objects
// with the text "key", the text "filePath" and the boolean "isMuted". A path that is not UTF-8, which JSON has no text
// for, is stored as the array of its bytes instead. It holds nothing in memory, looks at no stem's file and reports
// nothing: a record that cannot be written or read counts as absent.
// Threads: callable from every thread.
#pragma once

#include "AppCore/StemSession.h"
#include "platform/base/FilePath.h"
#include "platform/defaults/DefaultsDomain.h"

#include <optional>
#include <vector>

namespace quillet {

class StemSessionStore {
public:
    /// Over any domain, which outlives the store.
    explicit StemSessionStore(DefaultsDomain& defaults)
        : m_defaults(defaults)
    {
    }

    /// The composition root's store over the standard domain.
    static StemSessionStore& shared();

    /// Replaces the record of `track`. A session with a key that is not UTF-8 leaves the stored record alone.
    void save(const StemSession& session, const FilePath& track);

    /// The stems of `track` in the order in which they were saved, whether their files still exist or not; nothing when
    /// there is no record or it does not decode (it stays stored).
    [[nodiscard]] std::optional<std::vector<StemSession::Stem>> load(const FilePath& track) const;

    /// Removes the record of `track`; the stems' files stay.
    void remove(const FilePath& track);

    /// Removes the records of all tracks, and nothing else.
    void clearAll();

private:
    DefaultsDomain& m_defaults;
};

}  // namespace quillet
