#!/usr/bin/env python3
"""The real program in a real window on a virtual screen, used as a musician uses it: with keys, mouse and typing. What it shows is
read as a screen reader reads it, what it plays is recorded, and every screen is kept as a picture.

Usage: window_test.py PROGRAM FOLDER-FOR-PICTURES [unittest's arguments]
"""

import json
import sqlite3
import signal
import subprocess
import sys
import time

from desktop import frequency, loudness, wait_for
from window import SLOWED, ProgramTest, Watchdog, run_tests, write_song

SONG_SECONDS = 12
# As run_tests sets it.
DESKTOP = None


class WindowTest(ProgramTest):
    def setUp(self):
        super().setUp()
        self.song = DESKTOP.folder / "Autumn étude (take 3).wav"
        if not self.song.exists():
            write_song(self.song, SONG_SECONDS)

    def stored(self):
        """The settings that are kept for the song."""
        with sqlite3.connect(DESKTOP.folder / "config" / "quillet" / "defaults.sqlite") as defaults:
            value, = defaults.execute("SELECT value FROM defaults WHERE key = ?", (b"settings." + bytes(self.song),)).fetchone()
        return json.loads(value)

    def expect(self, what, condition):
        wait_for(what, condition)

    def test_a_practice_session(self):
        window = self.open(self.song)
        window.wait_until_loaded()

        # A region is drawn, and looped.
        DESKTOP.drag(window.at(3.2, SONG_SECONDS), window.at(5.8, SONG_SECONDS))
        self.expect("the region in its fields", lambda: window.text("Region start, seconds") == "03")
        self.assertIn(window.text("Region end, seconds"), ("05", "06"))
        self.assertAlmostEqual(window.value("Region start"), 3.2, delta=0.1)
        DESKTOP.key("space")
        window.find("push button", "Pause")

        # It sounds on when the loop has come round. (That its joint has no hole is the audio tests' to say.)
        time.sleep(3)
        if not SLOWED:
            wait_for("the loop", lambda: abs(frequency(DESKTOP.record(1)) - 882) < 2)

        # Slower by key and by typing; the pitch stays.
        DESKTOP.key("ctrl+Left", "ctrl+Left")
        self.expect("90 %", lambda: window.text("Speed in percent") == "90%")
        window.click("text", "Speed in percent")
        DESKTOP.type("50")
        DESKTOP.key("Return")
        self.expect("50 %", lambda: window.text("Speed in percent") == "50%")
        if not SLOWED:
            wait_for("the same pitch", lambda: abs(frequency(DESKTOP.record(1)) - 882) < 4)
        DESKTOP.key("ctrl+Up", "ctrl+Up", "ctrl+Down")
        self.expect("+1 cent", lambda: window.text("Pitch in cents") == "+1")
        self.shot("player-light")

        # Hold, and steps through it.
        DESKTOP.key("h")
        self.expect("hold", lambda: window.is_on("Hold"))
        wait_for("the held sound", lambda: loudness(DESKTOP.record(0.7)) > 0.2)
        self.shot("hold-light")
        DESKTOP.key("Right", "Right", "Left", "h")
        self.expect("no hold", lambda: not window.is_on("Hold"))
        window.find("push button", "Play")
        wait_for("silence after hold", lambda: loudness(DESKTOP.record(0.5)) < 0.01)

        # The equaliser.
        window.click("check box", "EQ")
        self.expect("the sliders", lambda: window.has("slider", "EQ gain at 1kHz"))
        slider = window.find("slider", "EQ gain at 1kHz")
        slider.queryComponent().grabFocus()
        DESKTOP.key("Up", "Up", "Up")
        self.expect("1.5 dB", lambda: window.value("EQ gain at 1kHz") == 1.5)
        window.resize(1000, 960)
        self.shot("equaliser-light")
        DESKTOP.set_appearance("dark")
        self.shot("equaliser-dark")

        # The help comes and goes.
        window.click("push button", "Help")
        window.find("push button", "Done")
        self.shot("help-dark")
        DESKTOP.set_appearance("light")
        self.shot("help-light")
        DESKTOP.key("Escape")
        self.expect("no help", lambda: not window.has("push button", "Done"))
        window.resize(680, 604)
        self.shot("smallest-light")
        window.resize(1240, 960)
        self.assertEqual(window.close(), 0)

        # From the recent list everything is as it was left.
        DESKTOP.set_appearance("dark")
        window = self.open()
        window.find("push button", self.song.name)
        self.shot("empty-dark")
        DESKTOP.set_appearance("light")
        self.shot("empty-light")
        window.click("push button", self.song.name)
        window.wait_until_loaded()
        self.assertEqual(window.text("Speed in percent"), "50%")
        self.assertEqual(window.text("Pitch in cents"), "+1")
        self.assertEqual(window.text("Region start, seconds"), "03")
        self.assertEqual(window.value("EQ gain at 1kHz"), 1.5)
        self.assertTrue(window.is_on("EQ"))
        DESKTOP.set_appearance("dark")
        self.shot("player-dark")
        DESKTOP.set_appearance("light")

        # What was changed a moment before the end is kept, however the end comes.
        DESKTOP.key("ctrl+Left", "ctrl+q", delay=10)
        self.assertEqual(window.process.wait(60), 0)
        self.assertEqual(self.stored()["speed"], 45)
        window = self.open(self.song)
        window.wait_until_loaded()
        DESKTOP.key("ctrl+Right", delay=10)
        self.expect("105 %", lambda: window.text("Speed in percent") == "105%")
        window.process.terminate()
        window.process.wait(60)
        self.assertEqual(self.stored()["speed"], 105)

    def test_what_was_changed_outlives_the_terminal_and_the_display(self):
        display = DESKTOP.environment["DISPLAY"]
        screen = DESKTOP.start_screen(1280, 1000)
        DESKTOP.start_window_manager()
        try:
            for percent, end in ((95, lambda: self.window.process.send_signal(signal.SIGHUP)), (105, screen.kill)):
                window = self.open(self.song)
                window.wait_until_loaded()
                # Not by a key: the new screen's window manager may still be about to give the window the focus.
                window.find("push button", "Decrease speed" if percent < 100 else "Increase speed").queryAction().doAction(0)
                self.expect("the speed", lambda: window.text("Speed in percent") == f"{percent}%")
                end()
                window.process.wait(60)
                self.assertEqual(self.stored()["speed"], percent)
        finally:
            DESKTOP.environment["DISPLAY"] = display

    def test_floods_of_keys_leave_it_well_and_never_block_it(self):
        window = self.open(self.song)
        window.wait_until_loaded()
        with Watchdog(window) as watchdog:
            for key in ("ctrl+Left", "ctrl+Right", "ctrl+Up", "ctrl+Down", "ctrl+l", "ctrl+r", "space", "h", "Right", "Left"):
                DESKTOP.run("xdotool", "key", "--delay", "1", "--repeat", "500", "--repeat-delay", "2", key)
            time.sleep(1)
        self.assertIsNone(window.process.poll())
        self.assertRegex(window.text("Speed in percent"), r"^\d+%$")
        print(watchdog)
        self.assertTrue(watchdog.is_quick, watchdog)
        self.assertEqual(window.close(), 0)

    def test_without_a_sound_device_it_says_so(self):
        DESKTOP.environment["PULSE_SERVER"], server = "unix:/nowhere", DESKTOP.environment["PULSE_SERVER"]
        try:
            window = self.open(self.song)
        finally:
            DESKTOP.environment["PULSE_SERVER"] = server
        window.wait_until_loaded()
        self.expect("the notice", lambda: window.has("label", "There is no sound device"))
        DESKTOP.key("space")
        self.expect("the play head moving", lambda: window.find("label", "Position 00:0").name > "Position 00:00.2")
        self.shot("silent-light")
        self.assertEqual(window.close(), 0)

    def long_song(self):
        path = DESKTOP.folder / "long.flac"
        if not path.exists():
            subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "anoisesrc=d=900:c=pink", str(path)], check=True)
        return path

    def test_a_sound_server_that_hangs_keeps_nobody_waiting(self):
        window = self.open(self.long_song())
        window.wait_until_loaded()
        DESKTOP.key("space")
        player = DESKTOP.start(sys.argv[1], "play", self.long_song())
        self.expect("both to play", lambda: DESKTOP.run("pactl", "list", "short", "sink-inputs").stdout.count(b"\n") == 2)
        DESKTOP.sound_server.send_signal(signal.SIGSTOP)
        try:
            DESKTOP.key("space")
            window.find("push button", "Play")
            self.assertEqual(window.close(), 0)
            player.send_signal(signal.SIGINT)
            self.assertEqual(player.wait(60), 130)
        finally:
            DESKTOP.sound_server.send_signal(signal.SIGCONT)

    def test_closing_while_loading(self):
        window = self.open(self.long_song())
        self.assertEqual(window.close(), 0)


if __name__ == "__main__":
    sys.exit(run_tests())
