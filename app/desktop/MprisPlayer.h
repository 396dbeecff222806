// The player as desktops know players: the two interfaces of MPRIS 2 on the session bus, by which media keys, the shell's
// controls and other programs play, pause, seek and see what is open. Whatever they ask for takes the road of a key or an edit;
// what makes no sense is answered by an error, or changes nothing.
// Threads: main thread.
#pragma once

#include "app/core/AppState.h"
#include "app/core/CommandCenter.h"
#include "app/core/SongList.h"
#include "app/desktop/BelievedPosition.h"
#include "app/desktop/DBusObject.h"
#include "platform/base/FilePath.h"
#include "platform/schedule/BackgroundRunner.h"
#include "platform/schedule/Scheduler.h"

#include <QByteArray>
#include <QDBusConnection>
#include <QObject>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace quillet {

class MprisPlayer final : public QObject {
public:
    /// What the window does.
    struct Window {
        std::function<void()> raise;
        std::function<void()> close;
        std::function<void(const FilePath& file)> open;
    };
    /// All outlive the player.
    struct Services {
        AppState& state;
        const SongList& songs;
        CommandCenter& commands;
        Scheduler& scheduler;
        BackgroundRunner& background;
    };

    /// The player is on the bus from now on. The name is asked for without waiting for it; where another program has it, one
    /// with this process's number is taken.
    MprisPlayer(const Services& services, Window window, const QDBusConnection& bus);
    ~MprisPlayer() override = default;
    MprisPlayer(const MprisPlayer&) = delete;
    MprisPlayer& operator=(const MprisPlayer&) = delete;

private:
    void requestName(const QString& name, const QString& nextName);
    void followState();
    void followLoading();
    void followRate();
    void followPosition();
    void tellPosition();
    void provideCover();

    [[nodiscard]] std::vector<DBusInterface> interfaces();
    [[nodiscard]] std::vector<DBusProperty> applicationProperties();
    [[nodiscard]] std::vector<DBusMethod> applicationMethods();
    [[nodiscard]] std::vector<DBusProperty> playerProperties();
    [[nodiscard]] std::vector<DBusMethod> playerMethods();

    [[nodiscard]] QString playbackStatus() const;
    [[nodiscard]] QVariantMap metadata() const;
    [[nodiscard]] QString trackPath() const;
    [[nodiscard]] qlonglong positionMicroseconds() const;
    [[nodiscard]] bool canPlay() const;
    [[nodiscard]] bool canSeek() const;

    [[nodiscard]] DBusOutcome setLoopStatus(const QString& status);
    [[nodiscard]] DBusOutcome setRate(double rate);
    [[nodiscard]] DBusOutcome playPause();
    [[nodiscard]] DBusOutcome openUri(const QString& address);
    void goTo(double seconds);

    Services m_services;
    AppState& m_state;
    Window m_window;
    QDBusConnection m_bus;
    BelievedPosition m_believed;
    /// Counts the songs that have been opened.
    std::int64_t m_track = 0;
    bool m_wasLoaded = false;
    /// Of the song's cover, once it is a file.
    QByteArray m_coverAddress;
    ScheduledTask m_opening;
    /// Expires with the player.
    std::shared_ptr<MprisPlayer*> m_self;
    /// Asks for all of the above.
    DBusObject m_object;
};

}  // namespace quillet
