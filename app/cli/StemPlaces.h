// Where the stems of songs are kept, for the commands: the user's settings say so, as for the window.
// Threads: main thread.
#pragma once

#include "AppCore/StemSettingsStore.h"
#include "app/export/PlaybackOptions.h"
#include "platform/defaults/SqliteDefaultsDomain.h"

#include <expected>
#include <string>

namespace quillet {

class StemPlaces {
public:
    [[nodiscard]] const StemSettingsStore& settings() const { return m_settings; }

    /// Fills in the files of the stems that the options ask for; fails with a sentence where the song has none.
    [[nodiscard]] std::expected<void, std::string> findStems(PlaybackOptions& options) const;

private:
    SqliteDefaultsDomain m_defaults{ SqliteDefaultsDomain::standardFile() };
    StemSettingsStore m_settings{ m_defaults };
};

}  // namespace quillet
