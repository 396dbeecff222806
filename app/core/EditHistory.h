// What the edits of the open song were, so that they can be undone and done again: the values before each step. One press of
// the mouse is one step, whatever it drags through; edits of one kind that follow each other closely (a key that repeats, a
// wheel) are one too. It knows what the values were, and not how they are set.
// Threads: main thread.
#pragma once

#include "AppCore/Practice.h"
#include "AppCore/StemMix.h"
#include "AppCore/TimeRange.h"
#include "platform/schedule/Scheduler.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quillet {

/// The values that can be undone.
struct EditedValues {
    TimeRange region;
    double speed = 100;
    double pitch = 0;
    bool eqEnabled = false;
    std::vector<double> eqGains;
    std::shared_ptr<const Practice> practice;
    /// By the stem's key; empty where there are none, and then the mix means nothing.
    std::map<std::string, bool, std::less<>> mutes;
    StemMix stemMix;

    bool operator==(const EditedValues&) const = default;
};

enum class EditKind { region, speed, pitch, equalizer, channels, trainer, loops, stems };

class EditHistory {
public:
    static constexpr std::size_t maxSteps = 200;
    /// Edits of one kind that follow each other within this time are one step.
    static constexpr double mergeSeconds = 0.7;

    explicit EditHistory(Scheduler& scheduler)
        : m_scheduler(scheduler)
    {
    }

    /// Before a value is edited; `present` are the values until then.
    void note(EditKind kind, const EditedValues& present);
    /// Until `endGesture`, everything is one step.
    void beginGesture();
    void endGesture() { m_gesture = Gesture::none; }
    /// What follows is no part of the step before.
    void separate() { m_mergesUntilSeconds = 0; }
    void clear();

    /// What the next step back (or forth) undoes or does again; nothing where there is none.
    [[nodiscard]] std::optional<EditKind> undoable() const { return m_done.kind(); }
    [[nodiscard]] std::optional<EditKind> redoable() const { return m_undone.kind(); }
    /// Goes one step back, or forth: the values to be set, which differ from `present`; nothing if there are none.
    [[nodiscard]] std::optional<EditedValues> undo(const EditedValues& present) { return move(m_done, m_undone, present); }
    [[nodiscard]] std::optional<EditedValues> redo(const EditedValues& present) { return move(m_undone, m_done, present); }

private:
    struct Step {
        EditKind kind;
        EditedValues values;
    };
    struct Steps : std::vector<Step> {
        [[nodiscard]] std::optional<EditKind> kind() const { return empty() ? std::nullopt : std::optional(back().kind); }
    };
    enum class Gesture { none, begun, noted };

    std::optional<EditedValues> move(Steps& from, Steps& to, const EditedValues& present);

    Scheduler& m_scheduler;
    Steps m_done, m_undone;
    Gesture m_gesture = Gesture::none;
    /// Until when an edit of the last kind is part of the last step.
    double m_mergesUntilSeconds = 0;
};

}  // namespace quillet
