#include "app/core/CommandCenter.h"

#include "app/core/RegionMarks.h"
#include "platform/base/Require.h"

#include <QCoreApplication>

#include <algorithm>
#include <utility>

namespace quillet {
namespace {

struct PlaybackCommand {
    CommandId id;
    void (*carryOut)(AppState& state);
};

/// Mutes the stem at that place of the six, or lets it be heard again.
template <std::size_t place> void toggleMute(AppState& state)
{
    constexpr std::string_view key = StemSession::keys[place];
    if (const StemSession::Stem* stem = state.stem(key))
        state.setStemMuted(key, !stem->isMuted);
}

template <std::size_t place> void toggleSolo(AppState& state)
{
    constexpr std::string_view key = StemSession::keys[place];
    state.setStemSoloed(key, !state.stemMix().channel(key).isSoloed);
}

template <std::size_t place, AppState::CallUp when> void callLoop(AppState& state) { state.callLoop(place, when); }

constexpr std::array playbackCommands{
    PlaybackCommand{ CommandId::playPause, [](AppState& state) { state.togglePlayPause(); } },
    PlaybackCommand{ CommandId::stopReset, [](AppState& state) { state.stopReset(); } },
    PlaybackCommand{ CommandId::toggleLoop, [](AppState& state) { state.toggleLoop(); } },
    PlaybackCommand{ CommandId::toggleHold, [](AppState& state) { state.toggleHold(); } },
    PlaybackCommand{ CommandId::holdForward, [](AppState& state) { state.stepHoldForward(); } },
    PlaybackCommand{ CommandId::holdBackward, [](AppState& state) { state.stepHoldBackward(); } },
    PlaybackCommand{ CommandId::undo, [](AppState& state) { state.undo(); } },
    PlaybackCommand{ CommandId::redo, [](AppState& state) { state.redo(); } },
    PlaybackCommand{ CommandId::markRegionStart, &RegionMarks::markStart },
    PlaybackCommand{ CommandId::markRegionEnd, &RegionMarks::markEnd },
    PlaybackCommand{ CommandId::startEarlier,
                     [](AppState& state) { RegionMarks::nudgeStart(state, -RegionMarks::nudgeSeconds); } },
    PlaybackCommand{ CommandId::startLater,
                     [](AppState& state) { RegionMarks::nudgeStart(state, RegionMarks::nudgeSeconds); } },
    PlaybackCommand{ CommandId::endEarlier, [](AppState& state) { RegionMarks::nudgeEnd(state, -RegionMarks::nudgeSeconds); } },
    PlaybackCommand{ CommandId::endLater, [](AppState& state) { RegionMarks::nudgeEnd(state, RegionMarks::nudgeSeconds); } },
    PlaybackCommand{ CommandId::regionBack, [](AppState& state) { RegionMarks::moveByItsLength(state, -1); } },
    PlaybackCommand{ CommandId::regionOn, [](AppState& state) { RegionMarks::moveByItsLength(state, 1); } },
    PlaybackCommand{ CommandId::wholeSong, &RegionMarks::selectAll },
    PlaybackCommand{ CommandId::saveLoop, [](AppState& state) { state.saveLoop(); } },
    PlaybackCommand{ CommandId::playLoopList,
                     [](AppState& state) { state.listPlace() ? state.leaveLoopList() : state.playLoopList(); } },
    PlaybackCommand{ CommandId::toggleTrainer, [](AppState& state) { state.toggleTrainer(); } },
    PlaybackCommand{ CommandId::callLoop1, &callLoop<0, AppState::CallUp::atJoint> },
    PlaybackCommand{ CommandId::callLoop1AtOnce, &callLoop<0, AppState::CallUp::atOnce> },
    PlaybackCommand{ CommandId::callLoop2, &callLoop<1, AppState::CallUp::atJoint> },
    PlaybackCommand{ CommandId::callLoop2AtOnce, &callLoop<1, AppState::CallUp::atOnce> },
    PlaybackCommand{ CommandId::callLoop3, &callLoop<2, AppState::CallUp::atJoint> },
    PlaybackCommand{ CommandId::callLoop3AtOnce, &callLoop<2, AppState::CallUp::atOnce> },
    PlaybackCommand{ CommandId::callLoop4, &callLoop<3, AppState::CallUp::atJoint> },
    PlaybackCommand{ CommandId::callLoop4AtOnce, &callLoop<3, AppState::CallUp::atOnce> },
    PlaybackCommand{ CommandId::callLoop5, &callLoop<4, AppState::CallUp::atJoint> },
    PlaybackCommand{ CommandId::callLoop5AtOnce, &callLoop<4, AppState::CallUp::atOnce> },
    PlaybackCommand{ CommandId::callLoop6, &callLoop<5, AppState::CallUp::atJoint> },
    PlaybackCommand{ CommandId::callLoop6AtOnce, &callLoop<5, AppState::CallUp::atOnce> },
    PlaybackCommand{ CommandId::callLoop7, &callLoop<6, AppState::CallUp::atJoint> },
    PlaybackCommand{ CommandId::callLoop7AtOnce, &callLoop<6, AppState::CallUp::atOnce> },
    PlaybackCommand{ CommandId::callLoop8, &callLoop<7, AppState::CallUp::atJoint> },
    PlaybackCommand{ CommandId::callLoop8AtOnce, &callLoop<7, AppState::CallUp::atOnce> },
    PlaybackCommand{ CommandId::callLoop9, &callLoop<8, AppState::CallUp::atJoint> },
    PlaybackCommand{ CommandId::callLoop9AtOnce, &callLoop<8, AppState::CallUp::atOnce> },
    PlaybackCommand{ CommandId::callLoop10, &callLoop<9, AppState::CallUp::atJoint> },
    PlaybackCommand{ CommandId::callLoop10AtOnce, &callLoop<9, AppState::CallUp::atOnce> },
    PlaybackCommand{ CommandId::decreaseSpeed, [](AppState& state) { state.adjustSpeed(-state.speedStep()); } },
    PlaybackCommand{ CommandId::increaseSpeed, [](AppState& state) { state.adjustSpeed(state.speedStep()); } },
    PlaybackCommand{ CommandId::pitchUp, [](AppState& state) { state.adjustPitch(1); } },
    PlaybackCommand{ CommandId::muteVocals, &toggleMute<0> },
    PlaybackCommand{ CommandId::muteDrums, &toggleMute<1> },
    PlaybackCommand{ CommandId::muteBass, &toggleMute<2> },
    PlaybackCommand{ CommandId::muteGuitar, &toggleMute<3> },
    PlaybackCommand{ CommandId::mutePiano, &toggleMute<4> },
    PlaybackCommand{ CommandId::muteOther, &toggleMute<5> },
    PlaybackCommand{ CommandId::soloVocals, &toggleSolo<0> },
    PlaybackCommand{ CommandId::soloDrums, &toggleSolo<1> },
    PlaybackCommand{ CommandId::soloBass, &toggleSolo<2> },
    PlaybackCommand{ CommandId::soloGuitar, &toggleSolo<3> },
    PlaybackCommand{ CommandId::soloPiano, &toggleSolo<4> },
    PlaybackCommand{ CommandId::soloOther, &toggleSolo<5> },
    PlaybackCommand{ CommandId::pitchDown, [](AppState& state) { state.adjustPitch(-1); } },
};

}  // namespace

const Command& commandOf(CommandId id)
{
    const auto* const found = std::ranges::find(commands, id, &Command::id);
    REQUIRE(found != commands.end());
    return *found;
}

QString translated(const char* text) { return QCoreApplication::translate("Commands", text); }

CommandCenter::CommandCenter(AppState& state, Notifications& notifications)
    : m_state(state),
      m_notifications(notifications)
{
    for (const PlaybackCommand& command : playbackCommands)
        m_subscriptions.push_back(onCommand(command.id, [this, carryOut = command.carryOut](const auto&) {
            if (m_state.isLoaded())
                carryOut(m_state);
        }));
}

void CommandCenter::execute(CommandId id, const std::optional<FilePath>& object)
{
    m_notifications.post(commandOf(id).name, object);
}

Notifications::Subscription CommandCenter::onCommand(CommandId id, Notifications::Handler handler)
{
    return m_notifications.subscribe(commandOf(id).name, std::move(handler));
}

}  // namespace quillet
