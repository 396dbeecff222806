#include "app/core/Hints.h"

#include "AppCore/RecentFilesStore.h"

#include <utility>

namespace quillet {

Hints::Hints(const AppState& state, CommandCenter& center, DefaultsDomain& defaults, QObject* parent)
    : QObject(parent),
      m_state(state),
      m_defaults(defaults),
      m_areWanted(!defaults.boolean(doneKey).value_or(false))
{
    // The list of recent files can be cleared later.
    if (m_areWanted && !RecentFilesStore(defaults).listed().empty())
        dismiss();
    if (!m_areWanted)
        return;
    connect(&state, &AppState::loadingStateChanged, this, &Hints::changed);
    connect(&state, &AppState::isPlayingChanged, this, &Hints::followPlaying);
    connect(&state, &AppState::speedChanged, this, &Hints::followSpeed);
    for (const auto& [id, deed] :
         { std::pair(CommandId::markRegionStart, Deed::markStart), std::pair(CommandId::markRegionEnd, Deed::markEnd) })
        m_subscriptions.push_back(center.onCommand(id, [this, deed](const auto&) {
            m_marked = m_state.region();
            note(deed);
        }));
}

void Hints::dismiss()
{
    if (!m_areWanted)
        return;
    m_areWanted = false;
    m_defaults.setBoolean(doneKey, true);
    Q_EMIT changed();
}

void Hints::note(Deed deed)
{
    constexpr std::size_t all = 4;
    if (!areShown())
        return;
    m_done.insert(deed);
    if (m_done.size() == all)
        dismiss();
}

/// Only a start counts: a part that is marked while it plays is chosen by keys.
void Hints::followPlaying()
{
    const bool isPart = m_state.regionStart() > 0 || m_state.regionEnd() < m_state.audioDuration();
    if (m_state.isPlaying() && isPart && m_state.region() != m_marked)
        note(Deed::playChosenPart);
}

void Hints::followSpeed()
{
    // What a song comes with is nobody's doing, and there before it is loaded.
    if (m_state.speed() != FileSettings().speed)
        note(Deed::changeSpeed);
}

}  // namespace quillet
