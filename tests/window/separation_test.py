#!/usr/bin/env python3
"""A song is separated in the real program, with the real uv, the environment that it builds, and a small model: from the first use on,
called off and tried again, in the background, and quit in the middle.

Usage: separation_test.py PROGRAM FOLDER-FOR-PICTURES [unittest's arguments]. Exit status 77: that cannot be done here.
"""

import array
import os
import subprocess
import sys
import time
from pathlib import Path

SUPPORT = Path(__file__).resolve().parents[1] / "support"
sys.path.insert(0, str(SUPPORT))
from desktop import loudness, wait_for
from fetched_tools import ends, environment_or_skip, processes
from window import ProgramTest, Watchdog, run_tests, write_song

# As run_tests sets it.
DESKTOP = None
TOOLS = Path(sys.argv[1]).resolve().parent
BUILD = TOOLS.parents[1]
KEYS = ["vocals", "drums", "bass", "guitar", "piano", "other"]


class SeparationTest(ProgramTest):
    def separate(self, song):
        window = self.open(song)
        window.wait_until_loaded()
        window.click("push button", "Separate Stems")
        window.find("label", "Stem separation splits")
        DESKTOP.key("Return")
        return window

    def children(self):
        return [group for pid, (parent, group) in processes().items() if parent == self.window.process.pid and group == pid]

    def stems(self, song):
        return sorted(path.name for path in (DESKTOP.folder / ".quillet/stems").glob(f"*/htdemucs_6s/{song.stem}/*"))

    def test_from_the_first_use_to_the_sound(self):
        songs = [DESKTOP.folder / f"song {number}.wav" for number in (1, 2)]
        for song in songs:
            write_song(song, 12)
        environment = DESKTOP.folder / ".quillet/venv"

        # The set-up is called off, and leaves nothing. So that it is never over before, uv waits for its settings at each start: here
        # the first of them gets some.
        settings = DESKTOP.folder / "uv.toml"
        os.mkfifo(settings)
        DESKTOP.environment["UV_CONFIG_FILE"] = str(settings)
        window = self.separate(songs[0])
        settings.write_text("")
        window.find("label", "Installing dependencies")
        self.shot("setup-light")
        self.assertTrue(environment.exists())
        child, = self.children()
        DESKTOP.key("Escape")
        wait_for("the question again", lambda: window.has("push button", "Separate") and window.has("label", "Stem separation splits"))
        self.assertFalse(environment.exists())
        self.assertTrue(ends(child, 60))

        settings.unlink()
        settings.touch()

        # Once more, in the background, while the song plays.
        DESKTOP.key("Return")
        window.find("push button", "Continue in Background")
        window.click("push button", "Continue in Background")
        window.find("push button", "Show the separation")
        DESKTOP.key("space")
        window.find("push button", "Pause")
        with Watchdog(window) as watchdog:
            wait_for("the separation", lambda: window.has("label", "Separating “"), 600)
            self.shot("separating-light")
            wait_for("the stems", lambda: window.has("push button", "Use the Stems"), 600)
        print(watchdog)
        self.assertTrue(window.has("push button", "Pause"), "what plays was left alone")
        self.assertEqual(self.stems(songs[0]), sorted(f"{key}.wav" for key in KEYS))
        window.click("push button", "Use the Stems")
        window.find("check box", "Mute Vocals")
        DESKTOP.key("space")
        wait_for("the stems' sound", lambda: loudness(DESKTOP.record(0.3)) > 0.2)
        DESKTOP.key(*"123456")
        wait_for("silence", lambda: loudness(DESKTOP.record(0.3)) < 0.001)
        self.assertEqual(window.close(), 0)

        # Quit in the middle.
        window = self.separate(songs[1])
        wait_for("the separation", lambda: window.has("label", "Separating") or window.has("label", "Loading the model"), 120)
        child, = self.children()
        DESKTOP.key("ctrl+q")
        window.process.wait(60)
        self.assertTrue(ends(child, 60), "something of it goes on")
        self.assertEqual(self.stems(songs[1]), [])

        # The first song comes back as it was left, the second can be separated.
        window = self.open(songs[0])
        window.find("check box", "Unmute Vocals")
        window.close()
        window = self.separate(songs[1])
        window.find("check box", "Mute Vocals", 600)
        self.assertEqual(self.stems(songs[1]), sorted(f"{key}.wav" for key in KEYS))
        self.shot("separated-light")
        self.assertEqual(window.close(), 0)
        self.check_command_line(songs)

    def check_command_line(self, songs):
        """What is separated is passed over, what cannot be is named, and the stems together are the song."""
        broken = DESKTOP.folder / "broken.mp3"
        broken.write_text("no song")
        copies, folder = DESKTOP.folder / "copies", DESKTOP.folder / ".quillet/stems"
        before = {path: path.stat().st_mtime_ns for path in folder.rglob("*.wav")}
        outcome = DESKTOP.run(sys.argv[1], "separate", broken, *songs, "-o", copies, check=False)
        self.assertEqual(outcome.returncode, 1)
        self.assertEqual(outcome.stderr.decode().splitlines()[-1].strip(), str(broken))
        self.assertEqual({path: path.stat().st_mtime_ns for path in folder.rglob("*.wav")}, before)
        self.assertEqual(len(list(copies.rglob("*.wav"))), 2 * len(KEYS))
        rendered = []
        for options in ([], ["--stems", "vocals=1"]):
            DESKTOP.run(sys.argv[1], "render", songs[0], "-o", DESKTOP.folder / "out.wav", *options)
            samples = array.array("f")
            samples.frombytes(DESKTOP.run("ffmpeg", "-v", "error", "-i", DESKTOP.folder / "out.wav", "-f", "f32le", "-").stdout)
            rendered.append(samples)
        self.assertEqual(len(rendered[0]), len(rendered[1]))
        self.assertLess(max(abs(one - other) for one, other in zip(*rendered)), 1e-6)


def begin(desktop):
    desktop.environment.update(ENVIRONMENT, HOME=str(desktop.folder), QUILLET_STEM_MODEL=str(MODEL.parent))


if __name__ == "__main__":
    ENVIRONMENT = {name: value for name, value in environment_or_skip(TOOLS).items() if name.startswith("UV_") or name == "PATH"}
    MODEL = BUILD / "small-stem-model/small.safetensors"
    MODEL.parent.mkdir(exist_ok=True)
    made = subprocess.run([sys.executable, SUPPORT / "small_stem_model.py", BUILD, MODEL])
    if made.returncode != 0:
        sys.exit(made.returncode)
    # What the environment of the tests had to be built with.
    for override in (BUILD / "separation-environment").glob("*.override"):
        ENVIRONMENT["UV_OVERRIDE"] = str(override)
    sys.exit(run_tests(begin))
