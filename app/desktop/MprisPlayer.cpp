#include "app/desktop/MprisPlayer.h"

#include "AppCore/SpeedInputParser.h"
#include "app/core/FileAddress.h"
#include "app/core/SupportedAudio.h"
#include "app/desktop/CoverFolder.h"
#include "platform/files/UserDirectories.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <algorithm>
#include <climits>
#include <cmath>
#include <utility>

namespace quillet {
namespace {

constexpr double microsecondsPerSecond = 1e6;
/// Several addresses within so short a time are one wish, the last.
constexpr double openingDelaySeconds = 0.05;

QString playerInterface() { return QStringLiteral("org.mpris.MediaPlayer2.Player"); }

std::unexpected<DBusProblem> refusal(QDBusError::ErrorType kind, const char* sentence)
{
    return std::unexpected(DBusProblem{ kind, QString::fromUtf8(sentence) });
}

}  // namespace

MprisPlayer::MprisPlayer(const Services& services, Window window, const QDBusConnection& bus)
    : m_services(services),
      m_state(services.state),
      m_window(std::move(window)),
      m_bus(bus),
      m_self(std::make_shared<MprisPlayer*>(this)),
      m_object(bus, QStringLiteral("/org/mpris/MediaPlayer2"), interfaces(), services.scheduler)
{
    followState();
    followLoading();
    const QString name = QStringLiteral("org.mpris.MediaPlayer2.quillet");
    requestName(name, QStringLiteral("%1.instance%2").arg(name).arg(QCoreApplication::applicationPid()));
}

/// The library's own function waits for the answer.
void MprisPlayer::requestName(const QString& name, const QString& nextName)
{
    constexpr uint doNotQueue = 4;
    constexpr uint isTaken = 3;
    const QString bus = QStringLiteral("org.freedesktop.DBus");
    QDBusMessage request =
        QDBusMessage::createMethodCall(bus, QStringLiteral("/org/freedesktop/DBus"), bus, QStringLiteral("RequestName"));
    request << name << doNotQueue;
    auto* watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(request), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, nextName] {
        const QDBusPendingReply<uint> answer = *watcher;
        watcher->deleteLater();
        if (answer.isValid() && answer.value() == isTaken && !nextName.isEmpty())
            requestName(nextName, {});
    });
}

// ---- The state ----

void MprisPlayer::followState()
{
    connect(&m_state, &AppState::loadingStateChanged, this, &MprisPlayer::followLoading);
    connect(&m_state, &AppState::playbackPositionChanged, this, &MprisPlayer::followPosition);
    for (const auto changed : { &AppState::isPlayingChanged, &AppState::holdEnabledChanged, &AppState::speedChanged })
        connect(&m_state, changed, this, &MprisPlayer::followRate);
    for (const auto changed : { &AppState::loopEnabledChanged, &AppState::regionChanged })
        connect(&m_state, changed, this, [this] { m_object.propertiesMayHaveChanged(); });
    for (const auto changed : { &SongList::songsChanged, &SongList::placeChanged })
        connect(&m_services.songs, changed, this, [this] { m_object.propertiesMayHaveChanged(); });
}

void MprisPlayer::followLoading()
{
    const bool isLoaded = m_state.isLoaded();
    if (isLoaded && !m_wasLoaded) {
        ++m_track;
        m_coverAddress.clear();
        // Who learns of another song takes it to be at its start.
        m_believed = BelievedPosition();
        m_believed.tell(0, m_services.scheduler.nowSeconds());
        followRate();
        provideCover();
    }
    m_wasLoaded = isLoaded;
    m_object.propertiesMayHaveChanged();
}

void MprisPlayer::followRate()
{
    const bool moves = m_state.isPlaying() && !m_state.holdEnabled();
    m_believed.setRate(moves ? m_state.speed() / 100 : 0, m_services.scheduler.nowSeconds());
    followPosition();
    m_object.propertiesMayHaveChanged();
}

/// Clients count the position on by themselves; they are told where that goes wrong: after a jump, and when a loop starts over.
void MprisPlayer::followPosition()
{
    if (!m_state.isLoaded())
        return;
    if (m_believed.isWrong(m_state.playbackPosition(), m_services.scheduler.nowSeconds()))
        tellPosition();
    // Whether it is paused or stopped depends on the place.
    if (!m_state.isPlaying())
        m_object.propertiesMayHaveChanged();
}

void MprisPlayer::tellPosition()
{
    m_believed.tell(m_state.playbackPosition(), m_services.scheduler.nowSeconds());
    m_object.sendSignal(playerInterface(), QStringLiteral("Seeked"), { positionMicroseconds() });
}

void MprisPlayer::provideCover()
{
    const auto cover = m_state.songTags().cover;
    if (!cover)
        return;
    m_services.background.run([cover, folder = cacheDirectory() / "covers", track = m_track, &scheduler = m_services.scheduler,
                               self = std::weak_ptr(m_self)] {
        const auto file = keepCover(folder, *cover);
        if (!file)
            return;
        scheduler.post([self, track, address = fileAddress(*file)] {
            const auto player = self.lock();
            if (!player || (*player)->m_track != track)
                return;
            (*player)->m_coverAddress = address;
            (*player)->m_object.propertiesMayHaveChanged();
        });
    });
}

// ---- What clients see ----

/// Paused is what can be seen to have begun.
QString MprisPlayer::playbackStatus() const
{
    if (m_state.isPlaying())
        return QStringLiteral("Playing");
    const bool isPaused = m_state.isLoaded() && m_state.playbackPosition() > m_state.regionStart();
    return isPaused ? QStringLiteral("Paused") : QStringLiteral("Stopped");
}

QVariantMap MprisPlayer::metadata() const
{
    if (!m_state.isLoaded() || !m_state.audioFileURL())
        return {};
    const FilePath& file = *m_state.audioFileURL();
    const SongTags& tags = m_state.songTags();
    const std::string title = tags.title.empty() ? displayText(file.filename()) : tags.title;
    QVariantMap metadata{
        { QStringLiteral("mpris:trackid"), QVariant::fromValue(QDBusObjectPath(trackPath())) },
        { QStringLiteral("mpris:length"), static_cast<qlonglong>(m_state.audioDuration() * microsecondsPerSecond) },
        { QStringLiteral("xesam:url"), QString::fromLatin1(fileAddress(file)) },
        { QStringLiteral("xesam:title"), QString::fromStdString(title) },
    };
    if (!tags.album.empty())
        metadata.insert(QStringLiteral("xesam:album"), QString::fromStdString(tags.album));
    if (!tags.artist.empty())
        metadata.insert(QStringLiteral("xesam:artist"), QStringList{ QString::fromStdString(tags.artist) });
    if (!m_coverAddress.isEmpty())
        metadata.insert(QStringLiteral("mpris:artUrl"), QString::fromLatin1(m_coverAddress));
    return metadata;
}

QString MprisPlayer::trackPath() const { return QStringLiteral("/org/quillet/track/%1").arg(m_track); }

qlonglong MprisPlayer::positionMicroseconds() const
{
    const double seconds = m_state.isLoaded() ? std::clamp(m_state.playbackPosition(), 0.0, m_state.audioDuration()) : 0;
    return static_cast<qlonglong>(seconds * microsecondsPerSecond);
}

bool MprisPlayer::canPlay() const { return m_state.isLoaded() && (m_state.holdEnabled() || !m_state.region().isEmpty()); }

bool MprisPlayer::canSeek() const { return m_state.isLoaded() && !m_state.holdEnabled() && !m_state.region().isEmpty(); }

// ---- What clients do ----

DBusOutcome MprisPlayer::playPause()
{
    if (!m_state.isLoaded())
        return refusal(QDBusError::Failed, "No song is open.");
    m_services.commands.execute(CommandId::playPause);
    return {};
}

/// A place before the region is its start; at one after it there is nothing, and whoever wanted to go there learns where it is.
void MprisPlayer::goTo(double seconds)
{
    if (!canSeek())
        return;
    const double place = std::max(seconds, m_state.regionStart());
    m_believed.tell(place, m_services.scheduler.nowSeconds());
    m_state.seek(place);
    tellPosition();
}

DBusOutcome MprisPlayer::setLoopStatus(const QString& status)
{
    if (status != QLatin1String("None") && status != QLatin1String("Track"))
        return refusal(QDBusError::InvalidArgs, "The loop can be “None” or “Track”.");
    if (!m_state.isLoaded())
        return refusal(QDBusError::Failed, "No song is open.");
    m_state.setLoopEnabled(status == QLatin1String("Track"));
    return {};
}

DBusOutcome MprisPlayer::setRate(double rate)
{
    constexpr double lowest = SpeedInputParser::min / 100;
    constexpr double highest = SpeedInputParser::max / 100;
    if (!m_state.isLoaded())
        return refusal(QDBusError::Failed, "No song is open.");
    // As the standard has it.
    if (rate == 0)
        return m_state.isPlaying() ? playPause() : DBusOutcome();
    if (!(rate >= lowest && rate <= highest))
        return refusal(QDBusError::InvalidArgs, "The rate can be 0.05 to 3.");
    // 0.55 is 55 %, not 55.00000000000001 %.
    m_state.setSpeed(std::round(rate * 1e8) / 1e6);
    return {};
}

DBusOutcome MprisPlayer::openUri(const QString& address)
{
    const auto file = localFile(address.toUtf8());
    if (!file || file->native().size() >= PATH_MAX)
        return refusal(QDBusError::InvalidArgs, "Only the addresses of files on this machine (file:///…) can be opened.");
    if (isNoAudio(*file))
        return refusal(QDBusError::InvalidArgs, "This is not an audio file.");
    m_opening = m_services.scheduler.after(openingDelaySeconds, [this, file = *file] { m_window.open(file); });
    return {};
}

}  // namespace quillet
