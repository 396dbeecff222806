// The separated stems of one track, each with its mute flag. A record only: nothing here plays, stores or separates, and it
// looks at no disk itself.
// Threads: a value, no shared state.
#pragma once

#include "platform/base/FilePath.h"

#include <array>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace quillet {

struct StemSession {
    /// Every key that a separation yields, in the order in which stems are listed.
    static constexpr std::array<std::string_view, 6> keys{ "vocals", "drums", "bass", "guitar", "piano", "other" };

    struct Stem {
        std::string key;
        FilePath fileURL;
        bool isMuted = false;

        bool operator==(const Stem&) const = default;
    };

    std::vector<Stem> stems;

    bool operator==(const StemSession&) const = default;

    /// The session of what a separation yields, a file under each key: in the order of `keys`, nothing muted. Keys that are
    /// missing are left out, keys that are no stem's are ignored.
    [[nodiscard]] static StemSession fromSeparation(const std::map<std::string, FilePath>& files);

    /// A stored session comes back whole or not at all: true if it has stems and `exists` holds for the file of each.
    [[nodiscard]] bool isRestorable(const std::function<bool(const FilePath&)>& exists) const;

    /// Sets the flag of the first stem with `key`; does nothing when there is none.
    void setMuted(bool isMuted, std::string_view key);

    /// The name shown for `key`: each word with a capital (ASCII) letter first and small ones after it.
    [[nodiscard]] static std::string displayName(std::string_view key);
};

}  // namespace quillet
