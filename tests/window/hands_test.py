#!/usr/bin/env python3
"""The real window in the hands of someone who goes from one control to the next: after whatever was done, the space bar plays or
pauses and changes nothing else; and a long program of random gestures, made by a seed, does the window no harm.

Usage: hands_test.py PROGRAM FOLDER-FOR-PICTURES [unittest's arguments]
Of the random hands QUILLET_GESTURES says how many (300) and QUILLET_SEED which (1).
"""

import os
import random
import shutil
import sys
import time

from desktop import loudness, wait_for
from window import HOARDS, ProgramTest, Watchdog, run_tests, write_song

SONG_SECONDS = 12
GESTURES = int(os.environ.get("QUILLET_GESTURES", "300"))
SEED = int(os.environ.get("QUILLET_SEED", "1"))
# As run_tests sets it.
DESKTOP = None


class HandsTest(ProgramTest):
    def setUp(self):
        super().setUp()
        self.song = DESKTOP.folder / "song.wav"
        if not self.song.exists():
            write_song(self.song, SONG_SECONDS)
            shutil.copy(self.song, DESKTOP.folder / "other.wav")
            (DESKTOP.folder / "loops").mkdir()

    def tearDown(self):
        # For whoever wants to see what went wrong.
        self.shot(self.id().split(".")[-1])
        super().tearDown()

    def wait_until_loaded(self):
        self.window.wait_until_loaded()
        # The one button has two names.
        self.transport = self.window.find("push button", "Play")

    def is_playing(self):
        return self.transport.name == "Pause"

    def all_that_is_set(self):
        """What a person sees of the settings: every field, switch, slider and sheet."""
        look = {
            "text": self.window.text_of,
            "check box": self.window.is_checked,
            "slider": lambda node: node.queryValue().currentValue,
            "push button": lambda node: True,
        }
        return sorted(f"{role} {node.name}: {look[role](node)}" for role, node in self.window.in_view()
                      if role in look and node.name not in ("Play", "Pause"))

    def all_that_comes_to_be_set(self):
        """The same, once what was done has had its effect."""
        time.sleep(0.1)
        earlier, now = None, self.all_that_is_set()
        while earlier != now:
            earlier, now = now, self.all_that_is_set()
        return now

    def space_plays(self, what):
        """Presses Space, and undoes what it did."""
        settings = self.all_that_comes_to_be_set()
        before = self.is_playing()
        for playing in (not before, before):
            DESKTOP.key("space")
            wait_for(f"Space to {'play' if playing else 'pause'} after: {what}", lambda wanted=playing: self.is_playing() == wanted)
        self.assertEqual(self.all_that_is_set(), settings, f"Space did more than play after: {what}")

    def test_the_space_bar_plays_after_everything(self):
        # One song in the list, to be opened by hand.
        window = self.open(self.song)
        self.wait_until_loaded()
        click, key, typed = window.click, DESKTOP.key, DESKTOP.type

        def type_into(field, text):
            click("text", field)
            typed(text)

        def tab_to(role, name):
            window.find(role, name).queryComponent().grabFocus()

        def has_loop(name):
            return any(role == "list item" and node.name.startswith(name) for role, node in window.in_view())

        def turn_wheel():
            DESKTOP.run("xdotool", "mousemove", *map(str, window.place("slider", "EQ gain at 1kHz")), "click", "4", "click", "5")

        def choose(menu, command):
            click("menu item", menu)
            click("menu item", command)

        def take_loops_away_and_back():
            choose("Loops", "Save Loops to a File…")
            window.wait_for_keyboard()
            typed(str(DESKTOP.folder / "loops"))
            key("Return")
            file = DESKTOP.folder / "loops" / "song loops.json"
            wait_for("the file of loops", file.exists)
            DESKTOP.run("xdotool", "mousemove", *map(str, window.place("list item", "a hard bar")), "click", "3")
            key("Up", "Return")
            wait_for("the loop's end", lambda: not has_loop("a hard bar"))
            choose("Loops", "Load Loops from a File…")
            window.wait_for_keyboard()
            typed(str(file))
            key("Return")
            wait_for("the loop that was deleted", lambda: has_loop("a hard bar"))
            window.find("label", "Loops added: 1. There already:")
            click("push button", "Close")
            self.assertFalse(window.has("push button", "Close"), "the sentence before it has gone")

        actions = [
            ("the song was named on the command line", lambda: None),
            ("Increase speed", lambda: click("push button", "Increase speed")),
            ("a speed typed and entered", lambda: (type_into("Speed in percent", "50"), key("Return"))),
            ("a speed typed, then a click on Hold and off", lambda: (type_into("Speed in percent", "60"), click("check box", "Hold"),
                                                                     click("check box", "Hold"))),
            ("Reset speed", lambda: click("push button", "Reset speed")),
            ("Custom, then 10 %", lambda: (click("check box", "Speed step Custom"), click("check box", "Speed step 10%"))),
            ("a custom step typed, then 25 %", lambda: (click("check box", "Speed step Custom"), typed("7"),
                                                         click("check box", "Speed step 25%"))),
            ("a pitch typed, then Escape", lambda: (type_into("Pitch in cents", "300"), key("Escape"))),
            ("Pitch up", lambda: click("push button", "Pitch up 1 cent")),
            ("Reset pitch", lambda: click("push button", "Reset pitch")),
            ("the keys of the speed", lambda: key("ctrl+Left", "ctrl+Right")),
            ("a step up of the region's start", lambda: click("push button", "Increase Region start, milliseconds")),
            ("a field of the region typed and left by a click", lambda: (type_into("Region start, seconds", "02"),
                                                                           click("filler", "Waveform"))),
            ("a drag on the waveform", lambda: DESKTOP.drag(window.at(3, SONG_SECONDS), window.at(6, SONG_SECONDS))),
            ("a handle by keys, then Escape", lambda: (tab_to("slider", "Region start"), key("Right", "Escape"))),
            ("a handle by keys", lambda: (tab_to("slider", "Region end"), key("Left"))),
            ("Zoom in", lambda: click("push button", "Zoom in")),
            ("Pan right", lambda: click("push button", "Pan right")),
            ("Fit Region", lambda: click("push button", "Fit Region")),
            ("Zoom out until it is off", lambda: [click("push button", "Zoom out") for _ in range(6)]),
            ("Fit Track", lambda: click("push button", "Fit Track")),
            ("a delay being typed when its field goes", lambda: (type_into("Loop delay, milliseconds", "20"), key("ctrl+l"))),
            ("Loop by mouse", lambda: click("check box", "Loop")),
            ("EQ on", lambda: click("check box", "EQ")),
            ("a gain by mouse", lambda: DESKTOP.drag(window.place("slider", "EQ gain at 1kHz"),
                                                     tuple(map(sum, zip(window.place("slider", "EQ gain at 1kHz"), (0, -30)))))),
            ("a wheel over a gain", turn_wheel),
            ("a gain by key, then the switch by mouse", lambda: (tab_to("slider", "EQ gain at 60Hz"), key("Up"),
                                                                 click("check box", "EQ"))),
            ("Reset EQ by Space, which turns it off", lambda: (tab_to("push button", "Reset EQ"), key("space"))),
            ("hold by key", lambda: key("h", "Right", "h")),
            ("the help left by Escape", lambda: (click("push button", "Help"), window.find("push button", "Done"), key("Escape"),
                                                 time.sleep(0.3))),
            ("the help by F1, left by Escape", lambda: (key("F1"), window.find("push button", "Done"), key("Escape"), time.sleep(0.3))),
            ("the help opened by key and left", lambda: (tab_to("push button", "Help"), key("space"),
                                                         window.find("push button", "Done"), key("Escape"), time.sleep(0.3))),
            ("the web address left", lambda: (key("ctrl+shift+o"), window.find("text", "Web address"), key("Escape"), time.sleep(0.3))),
            ("the settings left", lambda: (key("ctrl+comma"), window.find("push button", "Check for Updates"), key("Escape"), time.sleep(0.3))),
            ("Stop and Reset", lambda: key("ctrl+r")),
            ("a start and an end marked while it plays", lambda: (key("space"), time.sleep(0.3), key("bracketleft"), time.sleep(0.4),
                                                                  key("bracketright", "shift+bracketleft", "alt+bracketright"))),
            ("the region moved by its length, undone", lambda: key("period", "comma", "ctrl+z", "ctrl+shift+z")),
            ("a loop saved and named while it plays", lambda: (key("space", "ctrl+s"), time.sleep(0.3), typed("a hard bar"),
                                                               key("Return"), wait_for("its name", lambda: has_loop("a hard bar")))),
            ("another one, its name left", lambda: (key("BackSpace", "ctrl+s"), time.sleep(0.3), key("Escape"), time.sleep(0.3))),
            ("the first loop called up by key, then at once", lambda: (key("ctrl+1"), time.sleep(0.2), key("ctrl+alt+1"))),
            ("the list of loops on by mouse, off by key", lambda: (click("check box", "Play List"), time.sleep(0.3), key("ctrl+p"),
                                                                    time.sleep(0.3))),
            ("the trainer on by key, a goal typed, off by mouse", lambda: (
                key("ctrl+t"), wait_for("its fields", lambda: window.has("text", "Trainer, goal in percent")), time.sleep(0.4), type_into("Trainer, goal in percent", "90"),
                click("check box", "Trainer"), time.sleep(0.3))),
            ("the loops saved to a file, one deleted, and loaded again", take_loops_away_and_back),
            ("the export left", lambda: (key("ctrl+e"), window.find("push button", "Choose Folder…"), key("Escape"), time.sleep(0.3))),
            ("the whole song again", lambda: key("BackSpace")),
            ("another size while typing", lambda: (type_into("Speed in percent", "80"), window.resize(700, 620), time.sleep(0.3),
                                                     key("Return"))),
            ("a wide window", lambda: (window.resize(1270, 960), time.sleep(0.3))),
            ("a second click on what Tab has led to", lambda: (tab_to("check box", "Loop"), click("check box", "Loop"),
                                                               click("check box", "Loop"))),
            ("the open panel", lambda: (key("ctrl+o"), window.wait_for_keyboard(), typed(str(DESKTOP.folder / "other.wav")), key("Return"),
                                        wait_for("the other song", lambda: window.has("label", "other.wav")), self.wait_until_loaded())),
            ("the recent files of the toolbar, by key", lambda: (tab_to("push button", "Recent files"), key("space"), time.sleep(0.3),
                                                                 key("Down", "Down", "Return"), self.wait_until_loaded())),
            ("two songs chosen in the panel, the next and back", lambda: (
                key("ctrl+o"), window.wait_for_keyboard(), typed('"song.wav" "other.wav"'), key("Return"), window.find("push button", "Songs, 1 of 2"), click("push button", "Next song"),
                window.find("push button", "Songs, 2 of 2"), self.wait_until_loaded(), key("ctrl+Prior"),
                window.find("push button", "Songs, 1 of 2"), self.wait_until_loaded())),
            ("a song chosen from the list by keys", lambda: (click("push button", "Songs, 1 of 2"), window.find("list item", "other.wav"),
                                                             key("Down", "Return"), window.find("push button", "Songs, 2 of 2"),
                                                             self.wait_until_loaded())),
            ("a song chosen from the list by mouse", lambda: (click("push button", "Songs, 2 of 2"), click("list item", "song.wav"),
                                                              window.find("push button", "Songs, 1 of 2"), self.wait_until_loaded())),
            ("all songs left by Escape", lambda: (click("push button", "Songs, 1 of 2"), window.find("list item", "other.wav"),
                                                  key("Escape"), time.sleep(0.3))),
            ("the list closed", lambda: (click("push button", "Close the list"), time.sleep(0.3))),
            ("the menus by key, left again", lambda: (key("Alt_L"), key("Down"), wait_for("a menu", lambda: window.has("menu item", "Quit")),
                                                      key("Escape", "Escape"))),
            ("the menu's recent files", lambda: (click("menu item", "File"), key("Down", "Down", "Down", "Down", "Right", "Return"),
                                                 time.sleep(0.3), self.wait_until_loaded())),
        ]
        for what, action in actions:
            action()
            self.space_plays(what)

        # What was typed counts before what was clicked acts.
        type_into("Speed in percent", "50")
        click("push button", "Play")
        self.space_plays("a speed typed, then Play")
        self.assertEqual(window.text("Speed in percent"), "50%")
        self.assertEqual(window.close(), 0)

        window = self.open()
        tab_to("push button", "song.wav")
        key("space")
        self.wait_until_loaded()
        self.space_plays("a recent file by key")
        self.assertEqual(window.close(), 0)

    # ---- Random hands ----

    def gestures(self):
        """Endless, and the same for the same seed: each a name and the words for xdotool."""
        hands = random.Random(SEED)
        size = [1000, 860]
        sheets = ("ctrl+o", "ctrl+shift+o", "F1", "ctrl+e")

        def place():
            # Not on the menus, where the program can be ended.
            return str(hands.randrange(4, size[0] - 4)), str(hands.randrange(30, size[1] - 4))

        def move(where):
            return ["mousemove", "--window", "WINDOW", *where]

        def keys():
            return hands.choice(("space", "h", "Left", "Right", "Up", "Down", "Tab", "shift+Tab", "Return", "Escape", "Home", "End",
                                 "ctrl+Left", "ctrl+Right", "ctrl+Up", "ctrl+Down", "ctrl+l", "ctrl+r", "Page_Down", "BackSpace",
                                 "bracketleft", "bracketright", "comma", "period", "ctrl+s", "ctrl+z", "ctrl+shift+z", "ctrl+1"))

        while True:
            kind = hands.choices(("click", "double", "drag", "wheel", "key", "type", "resize", "sheet"), (30, 5, 15, 10, 30, 8, 1, 1))[0]
            if kind == "click":
                yield kind, move(place()) + ["click", "1"]
            elif kind == "double":
                yield kind, move(place()) + ["click", "--repeat", "2", "--delay", "40", "1"]
            elif kind == "drag":
                yield kind, move(place()) + ["mousedown", "1"] + move(place()) + move(place()) + ["mouseup", "1"]
            elif kind == "wheel":
                modifier = hands.choice(("ctrl", "shift", None))
                turn = move(place()) + ["click", hands.choice("4567"), "click", hands.choice("4567")]
                yield kind, turn if modifier is None else ["keydown", modifier, *turn, "keyup", modifier]
            elif kind == "key":
                yield kind, ["key", *(keys() for _ in range(hands.randrange(1, 4)))]
            elif kind == "type":
                yield kind, ["type", "--", hands.choice(("50", "+10", "-3", "abc", "999999", "0", "12.5", " "))]
            elif kind == "resize":
                size[:] = hands.randrange(680, 1260), hands.randrange(604, 960)
                yield kind, ["windowsize", "--sync", "WINDOW", *map(str, size), "sleep", "0.1"]
            else:
                yield kind, ["key", hands.choice(sheets), "sleep", "0.3", "key", "Escape", "sleep", "0.1"]

    def memory(self):
        """Megabytes."""
        with open(f"/proc/{self.window.process.pid}/status") as status:
            return int(next(line for line in status if line.startswith("VmRSS")).split()[1]) / 1024

    def leaves_something_open(self):
        """After one Escape more, where something is: a panel of a busy machine may come late."""
        window = self.window
        opened = any(window.has(*what) for what in (("file chooser",), ("dialog",), ("text", "Web address"), ("push button", "Done"),
                                                  ("push button", "Choose Folder…")))
        if opened:
            DESKTOP.key("Escape")
            time.sleep(0.15)
        return opened

    def tell_the_truth(self, after):
        """Escape leaves whatever is open; then Space plays; and what the button says is what is heard."""
        window = self.window
        for _ in range(3):
            DESKTOP.key("Escape")
            time.sleep(0.15)
        wait_for(f"nothing to be open after {after} gestures", lambda: not self.leaves_something_open())
        if not window.has("push button", "Play") and not self.is_playing():
            self.fail(f"no player after {after} gestures")
        DESKTOP.key("ctrl+r")
        wait_for(f"an end after {after} gestures", lambda: not self.is_playing())
        if window.is_on("Hold"):
            DESKTOP.key("h")
            wait_for("no hold", lambda: not window.is_on("Hold"))
        wait_for(f"silence while stopped, after {after} gestures", lambda: loudness(DESKTOP.record(0.2)) < 0.001)
        # What is played once may be over before anyone sees it play.
        if not window.is_on("Loop"):
            DESKTOP.key("ctrl+l")
            wait_for("the loop", lambda: window.is_on("Loop"))
        DESKTOP.key("space")
        length = window.value("Region end") - window.value("Region start")
        if length <= 0.001:
            return
        wait_for(f"Space to play after {after} gestures", self.is_playing)
        # What is short, or pauses for long, may be silent whenever one listens.
        if length > 0.5 and window.text("Loop delay, seconds") == "00":
            wait_for(f"sound while playing, after {after} gestures", lambda: loudness(DESKTOP.record(0.5)) > 0.005)

    def test_random_hands_do_no_harm(self):
        window = self.open(self.song)
        self.wait_until_loaded()
        window.resize(1000, 860)
        place = window.id()
        DESKTOP.key("space")
        settled = self.memory()
        with Watchdog(window) as watchdog:
            for count, (kind, words) in zip(range(1, GESTURES + 1), self.gestures()):
                DESKTOP.run("xdotool", *(place if word == "WINDOW" else word for word in words), check=False)
                self.assertIsNone(window.process.poll(), f"gesture {count} of seed {SEED} ended the program: {kind} {words}")
                if count % 100 == 0:
                    self.tell_the_truth(count)
                    if count == 100:
                        settled = self.memory()
        print(f"seed {SEED}, {GESTURES} gestures: {watchdog}, memory {settled:.0f} to {self.memory():.0f} MB")
        self.assertTrue(watchdog.is_quick, watchdog)
        if not HOARDS:
            self.assertLess(self.memory() - settled, 40)
        self.assertEqual(window.close(), 0)


if __name__ == "__main__":
    sys.exit(run_tests())
