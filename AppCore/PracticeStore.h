// Keeps the practice of every song in the user's defaults domain, one JSON record under the song's path. A record that cannot
// be read counts as absent.
// Threads: callable from every thread.
#pragma once

#include "AppCore/Practice.h"
#include "platform/base/FilePath.h"
#include "platform/defaults/DefaultsDomain.h"

namespace quillet {

class PracticeStore {
public:
    /// Over any domain, which outlives the store.
    explicit PracticeStore(DefaultsDomain& defaults)
        : m_defaults(defaults)
    {
    }

    /// Replaces the record of `song`; a practice like that of a song without a record leaves none.
    void save(const Practice& practice, const FilePath& song);
    /// As by default where there is no record.
    [[nodiscard]] Practice load(const FilePath& song) const;

private:
    DefaultsDomain& m_defaults;
};

}  // namespace quillet
