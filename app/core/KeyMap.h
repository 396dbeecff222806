// The keys that the user has chosen for commands, in place of those in the table. They are kept in the user's defaults domain,
// one JSON object by the commands' names. It hears no keys itself.
// Threads: main thread.
#pragma once

#include "app/core/Commands.h"
#include "platform/defaults/DefaultsDomain.h"

#include <QObject>

#include <map>
#include <optional>

namespace quillet {

/// A key with what is held with it, exactly.
struct KeyChord {
    static constexpr int modifierMask = static_cast<int>(Qt::ControlModifier) | static_cast<int>(Qt::AltModifier)
        | static_cast<int>(Qt::ShiftModifier) | static_cast<int>(Qt::MetaModifier);

    PhysicalKey key;
    /// Qt's, of `modifierMask`.
    int modifiers = 0;

    /// Whether the key has no effect of its own in a text, so that it acts while one is edited too.
    [[nodiscard]] bool actsInTexts() const
    {
        return (modifiers & ~static_cast<int>(Qt::ShiftModifier)) != 0 || (key.key >= Qt::Key_F1 && key.key <= Qt::Key_F35);
    }
    /// The same place (or, where either has none, the same name) with the same keys held.
    [[nodiscard]] bool isSameAs(const KeyChord& other) const;
};

class KeyMap final : public QObject {
    Q_OBJECT

public:
    /// `defaults` outlives the map.
    explicit KeyMap(DefaultsDomain& defaults, QObject* parent = nullptr);

    /// Whether the command is one that a key can be chosen for.
    [[nodiscard]] static bool canBeChosenFor(const Command& command);
    /// By the table; nothing for a command without a key.
    [[nodiscard]] static std::optional<KeyChord> usual(const Command& command);

    [[nodiscard]] std::optional<KeyChord> chosen(CommandId id) const;
    /// The chosen one, or else the usual.
    [[nodiscard]] std::optional<KeyChord> present(const Command& command) const;
    /// Another command that has the key now.
    [[nodiscard]] std::optional<CommandId> otherWith(const KeyChord& chord, CommandId id) const;

    void choose(CommandId id, const KeyChord& chord);
    void reset(CommandId id);
    void resetAll();

    /// While a key is being chosen, none acts.
    void setIsChoosing(bool isChoosing) { m_isChoosing = isChoosing; }
    [[nodiscard]] bool isChoosing() const { return m_isChoosing; }

Q_SIGNALS:
    void changed();

private:
    void load();
    void save();

    DefaultsDomain& m_defaults;
    std::map<CommandId, KeyChord> m_chosen;
    bool m_isChoosing = false;
};

}  // namespace quillet
