#include "app/core/KeyMap.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace quillet {
namespace {

constexpr const char* mapKey = "QLT.keys";

int usualModifiers(const Command& command)
{
    switch (command.use) {
    case KeyUse::withCommandKey:
    case KeyUse::withCommandKeyWithoutAlt:
        return Qt::ControlModifier;
    case KeyUse::withCommandKeyAndAlt:
        return static_cast<int>(Qt::ControlModifier) | static_cast<int>(Qt::AltModifier);
    case KeyUse::plainWithShift:
        return Qt::ShiftModifier;
    case KeyUse::plainWithAlt:
        return Qt::AltModifier;
    case KeyUse::never:
    case KeyUse::plain:
    case KeyUse::plainWithoutShift:
    case KeyUse::plainWhileHeld:
    case KeyUse::inPlayer:
        break;
    }
    return 0;
}

}  // namespace

bool KeyChord::isSameAs(const KeyChord& other) const
{
    if (modifiers != other.modifiers)
        return false;
    const bool havePlaces = key.scanCode != 0 && other.key.scanCode != 0;
    return havePlaces ? key.scanCode == other.key.scanCode : key.key == other.key.key;
}

KeyMap::KeyMap(DefaultsDomain& defaults, QObject* parent)
    : QObject(parent),
      m_defaults(defaults)
{
    load();
}

bool KeyMap::canBeChosenFor(const Command& command) { return command.title != nullptr || usual(command); }

std::optional<KeyChord> KeyMap::usual(const Command& command)
{
    if (command.use != KeyUse::never)
        return KeyChord{ command.key, usualModifiers(command) };
    if (command.shortcut == 0)
        return std::nullopt;
    const int modifiers = command.shortcut & KeyChord::modifierMask;
    return KeyChord{ { 0, static_cast<Qt::Key>(command.shortcut & ~modifiers) }, modifiers };
}

std::optional<KeyChord> KeyMap::chosen(CommandId id) const
{
    const auto found = m_chosen.find(id);
    return found != m_chosen.end() ? std::optional(found->second) : std::nullopt;
}

std::optional<KeyChord> KeyMap::present(const Command& command) const
{
    const auto own = chosen(command.id);
    return own ? own : usual(command);
}

std::optional<CommandId> KeyMap::otherWith(const KeyChord& chord, CommandId id) const
{
    for (const Command& command : commands) {
        const auto other = command.id != id ? present(command) : std::nullopt;
        if (other && other->isSameAs(chord))
            return command.id;
    }
    return std::nullopt;
}

void KeyMap::choose(CommandId id, const KeyChord& chord)
{
    m_chosen[id] = chord;
    save();
}

void KeyMap::reset(CommandId id)
{
    if (m_chosen.erase(id) > 0)
        save();
}

void KeyMap::resetAll()
{
    m_chosen.clear();
    save();
}

/// What names no command, or no key, is left out.
void KeyMap::load()
{
    const auto text = m_defaults.data(mapKey);
    const QJsonObject map = QJsonDocument::fromJson(QByteArray::fromStdString(text.value_or(""))).object();
    for (const Command& command : commands) {
        const QJsonObject chord = map[QString::fromUtf8(command.name.data(), std::ssize(command.name))].toObject();
        const int key = chord[QStringLiteral("key")].toInt();
        const int place = chord[QStringLiteral("place")].toInt();
        if (key > 0 && place >= 0)
            m_chosen[command.id] = { { static_cast<quint32>(place), static_cast<Qt::Key>(key) },
                                     chord[QStringLiteral("modifiers")].toInt() & KeyChord::modifierMask };
    }
}

void KeyMap::save()
{
    QJsonObject map;
    for (const auto& [id, chord] : m_chosen) {
        const std::string_view name = commandOf(id).name;
        map[QString::fromUtf8(name.data(), std::ssize(name))] =
            QJsonObject{ { QStringLiteral("key"), static_cast<int>(chord.key.key) },
                         { QStringLiteral("place"), static_cast<int>(chord.key.scanCode) },
                         { QStringLiteral("modifiers"), chord.modifiers } };
    }
    if (map.isEmpty())
        m_defaults.remove(mapKey);
    else
        m_defaults.setData(mapKey, QJsonDocument(map).toJson(QJsonDocument::Compact).toStdString());
    Q_EMIT changed();
}

}  // namespace quillet
