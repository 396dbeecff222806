// How the stems of a song are mixed beyond being muted: how loud each is, and which are listened to alone. A record only.
// Threads: a value, no shared state.
#pragma once

#include "AppCore/StemSession.h"

#include <map>
#include <string>
#include <string_view>

namespace quillet {

struct StemMix {
    /// A linear factor.
    static constexpr double maxVolume = 1.5;

    struct Channel {
        /// 0 to `maxVolume`.
        double volume = 1;
        bool isSoloed = false;

        bool operator==(const Channel&) const = default;
    };

    /// By the stem's key; one that is missing is as by default.
    std::map<std::string, Channel, std::less<>> channels;

    bool operator==(const StemMix&) const = default;

    [[nodiscard]] Channel channel(std::string_view key) const;
    /// Whether `stem`, one of the session's, is heard: where any of them is soloed those are, muted or not, and no other.
    [[nodiscard]] bool isHeard(const StemSession::Stem& stem, const StemSession& session) const;
    /// How loud that makes it, as a linear factor.
    [[nodiscard]] double heardVolume(const StemSession::Stem& stem, const StemSession& session) const;
};

}  // namespace quillet
