// What AppState does with saved loops, the list of them and the trainer.
#include "app/core/AppState.h"

#include <algorithm>
#include <utility>

namespace quillet {
namespace {

/// Where the loop is that was at `index` before; nothing if it is gone.
std::optional<std::size_t> placeAfter(const std::vector<NamedLoop>& before, std::size_t index,
                                      const std::vector<NamedLoop>& now)
{
    if (index < now.size() && now[index] == before.at(index))
        return index;
    const auto found = std::ranges::find(now, before.at(index));
    if (found != now.end())
        return static_cast<std::size_t>(found - now.begin());
    // It is changed where none came or went.
    return now.size() == before.size() ? std::optional(index) : std::nullopt;
}

}  // namespace

// ---- What is kept ----

void AppState::editPractice(EditKind kind, Practice practice)
{
    if (practice == *m_practice)
        return;
    noteEdit(kind);
    setPractice(std::make_shared<Practice>(std::move(practice)));
    tellWhatFollows();
    m_saver.savePracticeSoon();
}

void AppState::setPractice(std::shared_ptr<const Practice> practice)
{
    const auto before = std::exchange(m_practice, std::move(practice));
    if (m_waitingLoop)
        assign(m_waitingLoop, placeAfter(before->loops, *m_waitingLoop, loops()), &AppState::waitingLoopChanged);
    if (m_listPlace) {
        if (const auto place = placeAfter(before->loops, m_listPlace->loop, loops()))
            assign(m_listPlace, std::optional(ListPlace{ *place, m_listPlace->pass }), &AppState::listPlaceChanged);
        else
            leaveLoopList();
    }
    // A song of one channel has nothing to choose, and nothing to lose.
    m_engine.setChannels(m_isStereo ? channels() : ChannelMode::stereo);
    if (before->channels != channels())
        Q_EMIT channelsChanged();
    if (before->trainer != trainer())
        Q_EMIT trainerChanged();
    if (before->loops != loops())
        Q_EMIT loopsChanged();
}

void AppState::setChannels(ChannelMode channels)
{
    Practice practice = *m_practice;
    practice.channels = channels;
    editPractice(EditKind::channels, std::move(practice));
}

// ---- The trainer ----

void AppState::setTrainer(const Trainer& trainer)
{
    Practice practice = *m_practice;
    practice.trainer = trainer;
    editPractice(EditKind::trainer, std::move(practice));
    if (m_trainerState != TrainerState::on)
        return;
    const bool wasByItself = std::exchange(m_isByItself, true);
    setSpeed(trainer.speedOfPass(m_trainerPass).value_or(trainer.goalSpeed));
    m_isByItself = wasByItself;
}

void AppState::startTrainer()
{
    leaveLoopList();
    setLoopEnabled(true);
    setSpeed(trainer().fromSpeed);
    setTrainerState(TrainerState::on, 0);
}

void AppState::stopTrainer() { setTrainerState(TrainerState::off, 0); }

void AppState::toggleTrainer()
{
    switch (m_trainerState) {
    case TrainerState::off:
        startTrainer();
        break;
    case TrainerState::paused:
        resumeTrainer();
        break;
    case TrainerState::on:
        stopTrainer();
        break;
    }
}

void AppState::resumeTrainer()
{
    if (m_trainerState == TrainerState::paused)
        setTrainerState(TrainerState::on, m_trainerPass);
}

void AppState::setTrainerState(TrainerState trainerState, std::int64_t pass)
{
    assign(m_trainerPass, pass, &AppState::trainerPassChanged);
    if (assign(m_trainerState, trainerState, &AppState::trainerStateChanged))
        tellWhatFollows();
}

/// What plays next is its first pass.
void AppState::rewindTrainer()
{
    if (m_trainerState != TrainerState::on)
        return;
    setTrainerState(TrainerState::on, 0);
    m_isByItself = true;
    setSpeed(trainer().fromSpeed);
    m_isByItself = false;
}

// ---- Loops ----

std::optional<std::size_t> AppState::saveLoop()
{
    const std::size_t place = loops().size();
    if (m_region.isEmpty() || place >= Practice::maxLoops)
        return std::nullopt;
    NamedLoop loop{
        .name = tr("Loop %1").arg(place + 1).toStdString(), .region = m_region, .speed = m_speed, .pitch = m_pitch
    };
    loop.color = static_cast<int>(place % NamedLoop::colorCount);
    if (m_trainerState != TrainerState::off)
        loop.trainer = trainer();
    Practice practice = *m_practice;
    practice.loops.push_back(std::move(loop));
    editPractice(EditKind::loops, std::move(practice));
    Q_EMIT loopSaved(place);
    return place;
}

void AppState::replaceLoop(std::size_t index)
{
    NamedLoop loop = loops().at(index);
    if (m_region.isEmpty())
        return;
    loop.region = m_region;
    loop.speed = m_speed;
    loop.pitch = m_pitch;
    loop.trainer = m_trainerState == TrainerState::off ? std::nullopt : std::optional(trainer());
    setLoop(index, std::move(loop));
}

void AppState::setLoop(std::size_t index, NamedLoop loop)
{
    Practice practice = *m_practice;
    practice.loops.at(index) = std::move(loop);
    editPractice(EditKind::loops, std::move(practice));
}

void AppState::removeLoop(std::size_t index)
{
    Practice practice = *m_practice;
    practice.loops.erase(practice.loops.begin() + static_cast<std::ptrdiff_t>(index));
    editPractice(EditKind::loops, std::move(practice));
}

void AppState::moveLoop(std::size_t from, std::size_t to)
{
    Practice practice = *m_practice;
    const auto place = [&practice](std::size_t index) { return practice.loops.begin() + static_cast<std::ptrdiff_t>(index); };
    if (from < to)
        std::rotate(place(from), place(from) + 1, place(to) + 1);
    else
        std::rotate(place(to), place(from), place(from) + 1);
    editPractice(EditKind::loops, std::move(practice));
}

void AppState::setLoops(std::vector<NamedLoop> loops)
{
    Practice practice = *m_practice;
    loops.resize(std::min(loops.size(), Practice::maxLoops));
    practice.loops = std::move(loops);
    editPractice(EditKind::loops, std::move(practice));
}

void AppState::callLoop(std::size_t index, CallUp when)
{
    // The file may have become shorter since it was saved.
    if (index >= loops().size() || loops()[index].region.start >= m_audioDuration)
        return;
    if (m_isPlaying && !m_holdEnabled && when == CallUp::atJoint) {
        // Called up once more, it is called off.
        assign(m_waitingLoop, m_waitingLoop == index ? std::nullopt : std::optional(index), &AppState::waitingLoopChanged);
        tellWhatFollows();
        return;
    }
    assign(m_waitingLoop, {}, &AppState::waitingLoopChanged);
    if (m_listPlace)
        assign(m_listPlace, std::optional(ListPlace{ index, 0 }), &AppState::listPlaceChanged);
    noteStep(EditKind::region);
    // A copy: what it belongs to is replaced on the way.
    const NamedLoop called = loops()[index];
    takeLoop(called);
    if (m_isPlaying)
        restartRegion();
    else
        setPlaybackPosition(m_region.start);
}

/// Begins to play as the loop was kept, at once.
void AppState::takeLoop(const NamedLoop& taken)
{
    const auto trainer = m_listPlace ? std::nullopt : taken.trainer;
    m_isByItself = true;
    takeTrainer(trainer, 0);
    setRegion(taken.region);
    setSpeed(trainer ? trainer->fromSpeed : taken.speed);
    setPitch(taken.pitch);
    m_isByItself = false;
}

/// A loop's trainer at that pass, or none.
void AppState::takeTrainer(const std::optional<Trainer>& trainer, std::int64_t pass)
{
    if (trainer)
        setTrainer(*trainer);
    setTrainerState(trainer ? TrainerState::on : TrainerState::off, trainer ? pass : 0);
}

void AppState::playLoopList()
{
    if (loops().empty())
        return;
    setLoopEnabled(true);
    const std::size_t first = presentLoop().value_or(0);
    setTrainerState(TrainerState::off, 0);
    assign(m_listPlace, std::optional(ListPlace{ first, 0 }), &AppState::listPlaceChanged);
    if (m_isPlaying && m_region == loops()[first].region)
        tellWhatFollows();
    else
        callLoop(first, CallUp::atOnce);
    if (!m_isPlaying)
        togglePlayPause();
}

void AppState::leaveLoopList()
{
    if (assign(m_listPlace, {}, &AppState::listPlaceChanged))
        tellWhatFollows();
}

/// Whoever chooses another region wants that one, and not what was to follow.
void AppState::callOffLoops()
{
    assign(m_waitingLoop, {}, &AppState::waitingLoopChanged);
    leaveLoopList();
}

/// No edit, but for a loop that the user has called up.
void AppState::passBegins(const UpcomingPass& pass, std::int64_t repetition)
{
    const std::int64_t number = pass.number + repetition;
    const bool isLoop = pass.loop && *pass.loop < loops().size() && loops()[*pass.loop].region == pass.segment;
    if (pass.loop && m_waitingLoop == pass.loop) {
        noteStep(EditKind::region);
        assign(m_waitingLoop, {}, &AppState::waitingLoopChanged);
    }
    m_isByItself = true;
    if (m_listPlace && isLoop)
        assign(m_listPlace, std::optional(ListPlace{ *pass.loop, number }), &AppState::listPlaceChanged);
    else if (pass.loop)
        takeTrainer(isLoop && m_loopEnabled ? loops()[*pass.loop].trainer : std::nullopt, number);
    else if (m_trainerState == TrainerState::on && pass.speed)
        assign(m_trainerPass, number, &AppState::trainerPassChanged);
    if (pass.loop)
        setRegion(pass.segment);
    if (pass.speed)
        setSpeed(*pass.speed);
    if (pass.pitch)
        setPitch(*pass.pitch);
    m_isByItself = false;
}

}  // namespace quillet
