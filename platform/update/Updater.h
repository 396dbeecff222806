// Whether there is a newer version of this program. It tells, and installs nothing.
// Threads: main thread; it never waits.
#pragma once

#include "platform/update/Release.h"

#include <QString>

#include <expected>
#include <functional>
#include <optional>

namespace quillet {

class Updater {
public:
    /// The newer release, nothing if this one is the newest, or a sentence for the user that says why nobody knows.
    using Answer = std::expected<std::optional<Release>, QString>;

    virtual ~Updater() = default;

    /// Asks, and tells `answered` later; the last question alone is answered.
    virtual void checkForUpdates(std::function<void(const Answer& answer)> answered) = 0;
    /// Whether there is a feed to ask.
    [[nodiscard]] virtual bool isConfigured() const = 0;
};

}  // namespace quillet
