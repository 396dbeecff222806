// The tables of the two interfaces of MprisPlayer.

#include "AppCore/SpeedInputParser.h"
#include "app/core/SupportedAudio.h"
#include "app/desktop/MprisPlayer.h"

#include <QDBusObjectPath>
#include <QGuiApplication>

#include <utility>

namespace quillet {
namespace {

using Changes = DBusProperty::Changes;

DBusProperty constant(const char* name, const char* type, const QVariant& value)
{
    return { QLatin1String(name), QLatin1String(type), Changes::told, [value] { return value; } };
}

DBusProperty changing(const char* name, const char* type, std::function<QVariant()> value)
{
    return { QLatin1String(name), QLatin1String(type), Changes::told, std::move(value) };
}

DBusMethod simple(const char* name, std::function<void()> action)
{
    return { QLatin1String(name), {}, [action = std::move(action)](const QVariantList&) {
                action();
                return DBusOutcome();
            } };
}

DBusMethod::Argument argument(const char* name, const char* type) { return { QLatin1String(name), QLatin1String(type) }; }

template <typename List> QStringList texts(const List& list)
{
    QStringList all;
    for (const std::string_view text : list)
        all << QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
    return all;
}

double seconds(const QVariant& microseconds) { return static_cast<double>(microseconds.toLongLong()) / 1e6; }

}  // namespace

std::vector<DBusInterface> MprisPlayer::interfaces()
{
    const DBusMethod seeked{ QStringLiteral("Seeked"), { argument("Position", "x") } };
    return {
        { QStringLiteral("org.mpris.MediaPlayer2"), applicationProperties(), applicationMethods() },
        { QStringLiteral("org.mpris.MediaPlayer2.Player"), playerProperties(), playerMethods(), { seeked } },
    };
}

std::vector<DBusProperty> MprisPlayer::applicationProperties()
{
    return {
        constant("CanQuit", "b", true),
        constant("CanRaise", "b", true),
        constant("HasTrackList", "b", false),
        constant("Identity", "s", QGuiApplication::applicationDisplayName()),
        constant("DesktopEntry", "s", QGuiApplication::desktopFileName()),
        constant("SupportedUriSchemes", "as", QStringList{ QStringLiteral("file") }),
        constant("SupportedMimeTypes", "as", texts(supportedAudioMimeTypes)),
    };
}

std::vector<DBusMethod> MprisPlayer::applicationMethods()
{
    return {
        simple("Raise", [this] { m_window.raise(); }),
        // Once the call is answered.
        simple("Quit", [this] { m_services.scheduler.post(m_window.close); }),
    };
}

std::vector<DBusProperty> MprisPlayer::playerProperties()
{
    DBusProperty loop = changing("LoopStatus", "s",
                                 [this] { return m_state.loopEnabled() ? QStringLiteral("Track") : QStringLiteral("None"); });
    loop.set = [this](const QVariant& status) { return setLoopStatus(status.toString()); };
    DBusProperty rate = changing("Rate", "d", [this] { return m_state.speed() / 100; });
    rate.set = [this](const QVariant& value) { return setRate(value.toDouble()); };
    DBusProperty position = changing("Position", "x", [this] { return positionMicroseconds(); });
    position.changes = Changes::untold;
    return {
        changing("PlaybackStatus", "s", [this] { return playbackStatus(); }),
        std::move(loop),
        std::move(rate),
        changing("Metadata", "a{sv}", [this] { return metadata(); }),
        constant("Volume", "d", 1.0),
        std::move(position),
        constant("MinimumRate", "d", SpeedInputParser::min / 100),
        constant("MaximumRate", "d", SpeedInputParser::max / 100),
        changing("CanGoNext", "b", [this] { return m_services.songs.next() != nullptr; }),
        changing("CanGoPrevious", "b", [this] { return m_services.songs.previous() != nullptr; }),
        changing("CanPlay", "b", [this] { return canPlay(); }),
        changing("CanPause", "b", [this] { return m_state.isLoaded(); }),
        changing("CanSeek", "b", [this] { return canSeek(); }),
        constant("CanControl", "b", true),
    };
}

std::vector<DBusMethod> MprisPlayer::playerMethods()
{
    const auto playPauseIf = [this](bool isPlaying) {
        if (m_state.isPlaying() == isPlaying)
            m_services.commands.execute(CommandId::playPause);
    };
    const auto seek = [this](const QVariantList& arguments) {
        goTo(m_state.playbackPosition() + seconds(arguments[0]));
        return DBusOutcome();
    };
    const auto setPosition = [this](const QVariantList& arguments) {
        const double place = seconds(arguments[1]);
        const bool isMeant = arguments[0].value<QDBusObjectPath>().path() == trackPath();
        if (isMeant && place >= 0 && place <= m_state.audioDuration())
            goTo(place);
        return DBusOutcome();
    };
    return {
        simple("Next", [this] { m_services.commands.execute(CommandId::nextSong); }),
        simple("Previous", [this] { m_services.commands.execute(CommandId::previousSong); }),
        simple("Play", [playPauseIf] { playPauseIf(false); }),
        simple("Pause", [playPauseIf] { playPauseIf(true); }),
        simple("Stop", [this] { m_services.commands.execute(CommandId::stopReset); }),
        { QStringLiteral("PlayPause"), {}, [this](const QVariantList&) { return playPause(); } },
        { QStringLiteral("Seek"), { argument("Offset", "x") }, seek },
        { QStringLiteral("SetPosition"), { argument("TrackId", "o"), argument("Position", "x") }, setPosition },
        { QStringLiteral("OpenUri"),
          { argument("Uri", "s") },
          [this](const QVariantList& arguments) { return openUri(arguments[0].toString()); } },
    };
}

}  // namespace quillet
