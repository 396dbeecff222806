// What somebody new cannot guess, said once: with the first song of a fresh profile, until it is dismissed or has been done.
// A profile that has had songs never gets it. The sentences are the window's.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"
#include "app/core/CommandCenter.h"
#include "platform/defaults/DefaultsDomain.h"

#include <QObject>

#include <optional>
#include <set>
#include <string_view>
#include <vector>

namespace quillet {

class Hints final : public QObject {
    Q_OBJECT

public:
    /// True: never again.
    static constexpr std::string_view doneKey = "QLT.hintsDone";

    /// Made before a song is opened. All outlive the hints.
    Hints(const AppState& state, CommandCenter& center, DefaultsDomain& defaults, QObject* parent = nullptr);

    /// While a song is open.
    [[nodiscard]] bool areShown() const { return m_areWanted && m_state.isLoaded(); }
    void dismiss();

Q_SIGNALS:
    void changed();

private:
    /// All of what the hints say.
    enum class Deed { playChosenPart, changeSpeed, markStart, markEnd };

    void note(Deed deed);
    void followPlaying();
    void followSpeed();

    const AppState& m_state;
    DefaultsDomain& m_defaults;
    bool m_areWanted;
    std::set<Deed> m_done;
    /// What was marked by keys: it has not been chosen on the waveform.
    std::optional<TimeRange> m_marked;
    std::vector<Notifications::Subscription> m_subscriptions;
};

}  // namespace quillet
