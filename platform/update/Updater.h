// Whether there is a newer version of this program. It tells, and installs nothing.
// Threads: main thread; it never waits.
#pragma once

#include <expected>
#include <functional>
#include <optional>
#include <string>

namespace quillet {

struct Release {
    std::string version;
    /// HTML or plain, at most 64 KiB: data, in which nothing is to act.
    std::string notes;
    /// Where it can be had: an HTTPS address, or none.
    std::string page;

    bool operator==(const Release&) const = default;
};

class Updater {
public:
    /// The newer release, nothing if this one is the newest, or a sentence for the user that says why nobody knows.
    using Answer = std::expected<std::optional<Release>, std::string>;

    virtual ~Updater() = default;

    /// Asks, and tells `answered` later; the last question alone is answered.
    virtual void checkForUpdates(std::function<void(const Answer& answer)> answered) = 0;
    /// Whether there is a feed to ask.
    [[nodiscard]] virtual bool isConfigured() const = 0;
};

}  // namespace quillet
