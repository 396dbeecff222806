#!/usr/bin/env python3
"""The real program as a part of the desktop's session: the player that media keys, shells and other programs see on the session bus, what
keeps the machine awake, and what a second start of the program does.

Usage: session_test.py PROGRAM FOLDER-FOR-PICTURES [unittest's arguments]
"""

import json
import os
import signal
import subprocess
import sys
import time
from urllib.parse import unquote_to_bytes

from gi.repository import Gio, GLib

from desktop import loudness, wait_for
from window import ProgramTest, Watchdog, run_tests, write_song

SONG_SECONDS = 12
NAME, PATH = "org.mpris.MediaPlayer2.quillet", "/org/mpris/MediaPlayer2"
APPLICATION, PLAYER = "org.mpris.MediaPlayer2", "org.mpris.MediaPlayer2.Player"
PROPERTIES = "org.freedesktop.DBus.Properties"
# As run_tests sets it.
DESKTOP = None


def playerctl(*arguments):
    return DESKTOP.run("playerctl", "-p", "quillet", *map(str, arguments), check=False).stdout.decode().strip()


def busctl(*arguments):
    """What is printed, and whether it was no error."""
    ended = DESKTOP.run("busctl", "--user", *map(str, arguments), check=False)
    return ended.stdout.decode().strip(), ended.returncode == 0


class Bus:
    """A client that asks without waiting for a program of its own."""

    def __init__(self):
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        self.connection = Gio.DBusConnection.new_for_address_sync(DESKTOP.environment["DBUS_SESSION_BUS_ADDRESS"], flags, None, None)

    def get(self, name, interface=PLAYER):
        return self.connection.call_sync(NAME, PATH, PROPERTIES, "Get", GLib.Variant("(ss)", (interface, name)), None, 0, 20000,
                                         None).unpack()[0]

    def flood(self, interface, method, arguments, count=1000):
        for _ in range(count):
            self.connection.call(NAME, PATH, interface, method, arguments, None, Gio.DBusCallFlags.NONE, -1, None, None)
        self.connection.flush_sync(None)


class SessionTest(ProgramTest):
    def setUp(self):
        super().setUp()
        self.song = DESKTOP.folder / "étude #1 (100%).flac"
        self.plain = DESKTOP.folder / "plain.wav"
        self.cover = DESKTOP.folder / "cover.png"
        if not self.song.exists():
            write_song(self.plain, SONG_SECONDS)
            make = ["ffmpeg", "-v", "error", "-y"]
            subprocess.run([*make, "-f", "lavfi", "-i", "testsrc2=s=64x64", "-frames:v", "1", str(self.cover)], check=True)
            subprocess.run([*make, "-i", str(self.plain), "-i", str(self.cover), "-map", "0", "-map", "1", "-c:v", "copy", "-disposition:v",
                            "attached_pic", "-metadata", "title=Étude\x07 [*]", "-metadata", "artist=Anna Żak", "-metadata",
                            "album=Studies", str(self.song)], check=True)

    def open_song(self):
        window = self.open(self.song)
        window.wait_until_loaded()
        self.wait_for_player()
        return window

    def wait_for_player(self):
        wait_for("the player on the bus", lambda: self.value("Identity", APPLICATION) == "Quillet")
        self.bus = Bus()

    @staticmethod
    def value(name, interface=PLAYER):
        text, is_there = busctl("get-property", NAME, PATH, interface, name)
        return text.split(" ", 1)[1].strip('"') if is_there else None

    def title(self):
        return DESKTOP.run("xdotool", "getwindowname", self.window.id()).stdout.decode().strip()

    # ---- Media keys, shells and other programs ----

    def test_players_see_the_song_and_play_it(self):
        watched = DESKTOP.folder / "signals"
        with open(watched, "wb") as file:
            monitor = DESKTOP.start("dbus-monitor", "--session", f"type='signal',path='{PATH}'", stdout=file)
        self.addCleanup(lambda: (monitor.kill(), monitor.wait()))
        wait_for("the monitor", lambda: watched.stat().st_size > 0)
        window = self.open_song()

        self.assertEqual(self.title(), "Étude [*] – Anna Żak — Quillet")
        for key, text in (("xesam:title", "Étude [*]"), ("xesam:artist", "Anna Żak"), ("xesam:album", "Studies"),
                          ("mpris:length", str(SONG_SECONDS * 10**6))):
            self.assertEqual(playerctl("metadata", key), text)
        address = playerctl("metadata", "xesam:url")
        self.assertEqual(unquote_to_bytes(address.removeprefix("file://")), bytes(self.song))
        wait_for("the cover", lambda: playerctl("metadata", "mpris:artUrl"))
        with open(unquote_to_bytes(playerctl("metadata", "mpris:artUrl").removeprefix("file://")), "rb") as cover:
            self.assertEqual(cover.read(), self.cover.read_bytes())
        self.assertEqual(self.value("DesktopEntry", APPLICATION), "org.quillet.Quillet")
        for name in ("CanPlay", "CanPause", "CanSeek", "CanControl"):
            self.assertEqual(self.value(name), "true", name)
        described, _ = busctl("call", NAME, PATH, "org.freedesktop.DBus.Introspectable", "Introspect", "--json=short")
        for text in ("PlayPause", "OpenUri", "Seeked", "Volume", "HasTrackList"):
            self.assertIn(text, described)

        # Play, jumps, pause; the window shows all of it. So slow that a busy machine's questions are no way on.
        self.assertEqual(playerctl("status"), "Stopped")
        busctl("set-property", NAME, PATH, PLAYER, "Rate", "d", "0.05")
        playerctl("play")
        window.find("push button", "Pause")
        wait_for("Playing", lambda: playerctl("status") == "Playing")
        playerctl("position", 6)
        self.assertGreaterEqual(self.bus.get("Position"), 6 * 10**6)
        playerctl("position", "2-")
        self.assertLess(self.bus.get("Position"), 6 * 10**6)
        playerctl("pause")
        window.find("push button", "Play")
        self.assertEqual(playerctl("status"), "Paused")
        # A place that is chosen meanwhile is where it goes on, and else it begins at the start.
        playerctl("position", 9)
        self.assertEqual(self.bus.get("Position"), 9 * 10**6)
        playerctl("play-pause")
        wait_for("the way on from 9 s", lambda: self.bus.get("Position") > 9.1 * 10**6)
        playerctl("play-pause")
        playerctl("play-pause")
        self.assertLess(self.bus.get("Position"), 8 * 10**6)
        wait_for("the sound", lambda: loudness(DESKTOP.record(1)) > 0.2)

        # The rate and the loop are edits.
        busctl("set-property", NAME, PATH, PLAYER, "Rate", "d", "0.55")
        wait_for("55 %", lambda: window.text("Speed in percent") == "55%")
        playerctl("loop", "None")
        wait_for("no loop", lambda: not window.is_on("Loop"))
        playerctl("loop", "Track")
        wait_for("the loop", lambda: window.is_on("Loop"))
        DESKTOP.key("ctrl+Left")
        wait_for("a rate of a half", lambda: self.value("Rate") == "0.5")

        # Where a client's own count goes wrong it is told: when the loop comes round.
        DESKTOP.drag(window.at(3, SONG_SECONDS), window.at(4.5, SONG_SECONDS))
        busctl("set-property", NAME, PATH, PLAYER, "Rate", "d", "3")
        before = watched.read_bytes().count(b"member=Seeked")
        wait_for("three rounds told", lambda: watched.read_bytes().count(b"member=Seeked") >= before + 3)
        self.assertTrue(2.5e6 < self.bus.get("Position") < 5e6)
        # Before the region is its start, after it nothing.
        playerctl("stop")
        self.assertEqual(playerctl("status"), "Stopped")
        start = self.bus.get("Position")
        for place in (0, 11):
            playerctl("position", place)
            self.assertEqual(self.bus.get("Position"), start)
        self.assertNotIn(b'"Position"', watched.read_bytes())
        self.assertIn(b'"PlaybackStatus"', watched.read_bytes())

        # Another song, from outside, with nothing to say of itself.
        playerctl("open", self.plain.as_uri())
        wait_for("the other song", lambda: self.title() == "plain.wav — Quillet")
        wait_for("its metadata", lambda: playerctl("metadata", "xesam:title") == "plain.wav")
        self.assertEqual(playerctl("metadata", "mpris:artUrl"), "")
        busctl("call", NAME, PATH, APPLICATION, "Quit")
        self.assertEqual(window.process.wait(60), 0)

    def test_absurd_calls_change_nothing_and_block_nothing(self):
        window = self.open()
        self.wait_for_player()
        for name in ("CanPlay", "CanPause", "CanSeek"):
            self.assertIs(self.bus.get(name), False, name)
        self.assertEqual((self.bus.get("Metadata"), self.bus.get("PlaybackStatus")), ({}, "Stopped"))
        self.assertFalse(busctl("call", NAME, PATH, PLAYER, "PlayPause")[1])
        self.assertFalse(busctl("set-property", NAME, PATH, PLAYER, "Rate", "d", "0.5")[1])
        window.close()

        window = self.open_song()
        track = playerctl("metadata", "mpris:trackid").strip("'")
        state = lambda: {name: self.bus.get(name) for name in ("Rate", "LoopStatus", "Position", "Volume", "PlaybackStatus", "Metadata")}
        usual = state()
        for refused in (*(("set-property", "Rate", "d", rate) for rate in ("nan", "inf", "-inf", "1e99", "-1", "3.01", "0.049")),
                        ("set-property", "Rate", "s", "fast"), ("set-property", "Rate", "as", "1", "fast"),
                        ("set-property", "LoopStatus", "s", "Playlist"), ("set-property", "Volume", "d", "0.5"),
                        ("set-property", "Position", "x", "5"), ("set-property", "Sound", "d", "5"),
                        ("call", "OpenUri", "s", "http://example.com/song.mp3"), ("call", "OpenUri", "s", ""),
                        ("call", "OpenUri", "s", "file://elsewhere/song.mp3"), ("call", "OpenUri", "s", "file:///a%00b.mp3"),
                        ("call", "OpenUri", "s", "file:///" + "a" * 5000), ("call", "OpenUri", "s", "file:///etc/notes.txt"),
                        ("call", "Seek", "s", "far"), ("call", "Seek"), ("call", "Eject")):
            self.assertFalse(busctl(refused[0], NAME, PATH, PLAYER, *refused[1:])[1], refused)
        far = str(2**63 - 1)
        for ignored in (("Seek", "x", far), ("Seek", "x", "-" + far), ("SetPosition", "ox", track, far), ("SetPosition", "ox", track, "-1"),
                        ("SetPosition", "ox", "/another/track", "5000000"), ("Next",), ("Previous",), ("Pause",)):
            # Negative numbers are no options.
            self.assertTrue(busctl("--", "call", NAME, PATH, PLAYER, *ignored)[1], ignored)
        self.assertEqual(state(), usual)

        # A thousand of each at once.
        with Watchdog(window) as watchdog:
            for interface, method, arguments in (
                    (PLAYER, "PlayPause", None), (PLAYER, "Seek", GLib.Variant("(x)", (10**5,))),
                    (PROPERTIES, "Set", GLib.Variant("(ssv)", (PLAYER, "Rate", GLib.Variant("d", 0.7)))),
                    (PROPERTIES, "GetAll", GLib.Variant("(s)", (PLAYER,))), (APPLICATION, "Raise", None),
                    (PLAYER, "OpenUri", GLib.Variant("(s)", (self.song.as_uri(),)))):
                self.bus.flood(interface, method, arguments)
                self.bus.get("Rate")
        print(watchdog)
        self.assertTrue(watchdog.is_quick, watchdog)
        window.wait_until_loaded()
        self.assertEqual(window.close(), 0)

    def test_without_a_bus_it_opens_the_song_all_the_same(self):
        process = subprocess.Popen([sys.argv[1], str(self.song)], env=dict(DESKTOP.environment, DBUS_SESSION_BUS_ADDRESS="unix:path=/nowhere"))
        self.addCleanup(process.kill)
        shows = ("xdotool", "search", "--onlyvisible", "--all", "--pid", str(process.pid), "--name", "Anna Żak — Quillet$")
        wait_for("the song's name", lambda: DESKTOP.run(*shows, check=False).stdout)
        process.terminate()
        self.assertEqual(process.wait(60), 0)

    # ---- The desktop's panel ----

    def test_files_are_chosen_in_the_desktops_panel(self):
        window = self.open_song()
        asked = DESKTOP.awake_file.with_suffix(".panel")
        DESKTOP.tell_portal("choose")
        DESKTOP.key("ctrl+o")
        wait_for("the question", asked.exists)
        # One that stays open, or was lost, is opened again.
        asked.unlink()
        DESKTOP.tell_portal("choose later")
        DESKTOP.key("ctrl+o")
        wait_for("the question", asked.exists)
        DESKTOP.tell_portal(f"choose {self.plain.as_uri()} {self.song.as_uri()}")
        DESKTOP.key("space")
        window.find("push button", "Pause")
        DESKTOP.key("space", "ctrl+o")
        wait_for("the other song", lambda: self.title() == "plain.wav — Quillet")
        parent, title, options = json.loads(asked.read_text())
        self.assertEqual((int(parent.removeprefix("x11:"), 16), title), (int(window.id()), "Open File..."))
        # Several are a list to go through.
        window.find("push button", "Songs, 1 of 2")
        self.assertTrue(options["multiple"])
        self.assertEqual((options["directory"], options["filters"][0], options["filters"][1]),
                         (False, options["current_filter"], ["All files", [[0, "*"]]]))
        self.assertIn([0, "*.FLAC"], options["current_filter"][1])
        DESKTOP.key("space")
        window.find("push button", "Pause")
        # Where it was; and one that does not answer is not waited for for ever.
        DESKTOP.tell_portal("choose never")
        DESKTOP.key("ctrl+o")
        wait_for("the toolkit's panel", lambda: window.has("file chooser") or window.has("dialog"))
        folder = bytes(json.loads(asked.read_text())[2]["current_folder"])
        self.assertEqual(folder, bytes(self.plain.parent) + b"\0")
        DESKTOP.key("Escape")
        self.assertEqual(window.close(), 0)

    # ---- Sleep ----

    def test_the_machine_stays_awake_while_something_plays(self):
        self.open_song()
        for told, line in (("grant", "portal 12\n"), ("refuse", "screen saver\n")):
            DESKTOP.tell_portal(told)
            for _ in range(2):
                playerctl("play")
                wait_for(line, lambda: DESKTOP.awake_file.read_text() == line)
                playerctl("pause")
                wait_for("sleep again", lambda: DESKTOP.awake_file.read_text() == "")
        DESKTOP.tell_portal("grant")
        # However fast it changes, what is held in the end is what is wanted.
        self.bus.flood(PLAYER, "PlayPause", None, 101)
        wait_for("Playing", lambda: self.bus.get("PlaybackStatus") == "Playing")
        wait_for("it to stay awake", lambda: DESKTOP.awake_file.read_text() == "portal 12\n")
        playerctl("stop")
        wait_for("sleep again", lambda: DESKTOP.awake_file.read_text() == "")

    # ---- A second start ----

    def start_again(self, *arguments, **environment):
        """The second start's process."""
        process = subprocess.Popen([sys.argv[1], *arguments], env=dict(DESKTOP.environment, **environment), cwd=DESKTOP.folder)
        self.addCleanup(lambda: (process.kill(), process.wait()))
        return process

    def hand_over(self, *arguments, **environment):
        """Starts it again until it has handed over; a busy machine's first instance may not answer in time."""
        for _ in range(10):
            process = self.start_again(*arguments, **environment)
            begin = time.monotonic()
            try:
                self.assertEqual(process.wait(10), 0)
                return time.monotonic() - begin
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
        self.fail("nothing is handed over")

    def active_process(self):
        return int(DESKTOP.run("xdotool", "getactivewindow", "getwindowpid", check=False).stdout or 0)

    def test_a_second_start_hands_its_file_over(self):
        window = self.open_song()
        # Other settings, another program, which comes to lie over the first.
        other = self.start_again(XDG_CONFIG_HOME=str(DESKTOP.folder / "other"))
        wait_for("the other program in front", lambda: self.active_process() == other.pid)

        # A name that is no text, from where the second start is.
        name = b"sch\xf6n.wav"
        os.link(self.plain, os.path.join(os.fsencode(DESKTOP.folder), name))
        took = self.hand_over(b"./" + name, DESKTOP_STARTUP_ID=f"launcher-1-host_TIME{self.display_time()}")
        print(f"handed over in {1000 * took:.0f} ms")
        wait_for("the song", lambda: self.title() == "sch�n.wav — Quillet")
        wait_for("the window in front", lambda: self.active_process() == window.process.pid)
        self.assertEqual(playerctl("metadata", "xesam:url"), f"file://{DESKTOP.folder}/sch%F6n.wav")
        # Without a file it only comes to the front, out of the dock as well.
        DESKTOP.run("xdotool", "windowminimize", "--sync", window.id())
        self.hand_over()
        wait_for("the window in front", lambda: self.active_process() == window.process.pid)
        # A folder and a file are a list, which media keys go through as well.
        album = DESKTOP.folder / "album"
        album.mkdir()
        os.link(self.plain, album / "10.wav")
        os.link(self.song, album / "9.flac")
        self.hand_over("album", name)
        window.find("push button", "Songs, 1 of 3")
        wait_for("a way on", lambda: (self.value("CanGoNext"), self.value("CanGoPrevious")) == ("true", "false"))
        playerctl("next")
        playerctl("next")
        wait_for("the last song", lambda: self.title() == "sch�n.wav — Quillet")
        wait_for("no way on", lambda: (self.value("CanGoNext"), self.value("CanGoPrevious")) == ("false", "true"))
        # Commands have nothing to do with it.
        shown = subprocess.run([sys.argv[1], "info", str(self.plain)], env=DESKTOP.environment, capture_output=True, check=True)
        self.assertIn(b"44100", shown.stdout.replace(b",", b""))
        places = [place for place in (DESKTOP.folder / "run").iterdir() if place.name.startswith("quillet-")]
        self.assertEqual(len(places), 4)
        self.assertEqual({place.stat().st_mode & 0o777 for place in places}, {0o600})

        # One that hangs is not waited for, and what was handed to it is not opened later.
        window.process.send_signal(signal.SIGSTOP)
        third = self.start_again(str(self.song))
        shows = ("xdotool", "search", "--onlyvisible", "--all", "--pid", str(third.pid), "--name", "Anna Żak — Quillet$")
        wait_for("a window of its own", lambda: DESKTOP.run(*shows, check=False).stdout)
        window.process.send_signal(signal.SIGCONT)
        self.hand_over()
        self.assertEqual(self.title(), "sch�n.wav — Quillet")
        third.terminate()
        third.wait(60)

        # One that was killed leaves nothing that is in the way.
        window.process.kill()
        window.process.wait()
        self.open(self.plain)
        wait_for("the song", lambda: self.title() == "plain.wav — Quillet")
        self.hand_over(str(self.song))
        wait_for("the other song", lambda: self.title().startswith("Étude"))

    @staticmethod
    def display_time():
        """The display's clock is that of the machine's start."""
        return int(time.clock_gettime(time.CLOCK_MONOTONIC) * 1000) & 0xFFFFFFFF


if __name__ == "__main__":
    sys.exit(run_tests())
