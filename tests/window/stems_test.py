#!/usr/bin/env python3
"""The stems of a song in the real program: found on disk, mixed by hand and by keys, heard as they are mixed, and there again.

Usage: stems_test.py PROGRAM FOLDER-FOR-PICTURES [unittest's arguments]
"""

import sys

from desktop import SINK_RATE, wait_for
from window import SLOWED, STEMS, ProgramTest, run_tests, write_song, write_stems

# As run_tests sets it.
DESKTOP = None
SONG_SECONDS = 12


def level(samples, frequency):
    """How loud that frequency is in a quarter of a second: 1 for a sine of full scale (Goertzel)."""
    import cmath
    step = cmath.exp(-2j * cmath.pi * frequency / SINK_RATE)
    total, turn = 0, 1
    for sample in samples:
        total += sample * turn
        turn *= step
    return 2 * abs(total) / max(1, len(samples))


class StemsTest(ProgramTest):
    def setUp(self):
        super().setUp()
        self.song = DESKTOP.folder / "song.wav"
        write_song(self.song, SONG_SECONDS)
        write_stems(DESKTOP.folder, self.song, SONG_SECONDS)

    def heard(self):
        samples = DESKTOP.record(0.25)
        return {key: level(samples, frequency) / 0.1 for key, frequency in STEMS.items()}

    def expect_heard(self, what, **volumes):
        """The stems in these volumes, all others not at all. A busy machine tears holes into what is recorded."""
        if SLOWED:
            return
        wanted = {key: volumes.get(key, 0) for key in STEMS}
        wait_for(what, lambda: all(abs(volume - wanted[key]) < 0.03 for key, volume in self.heard().items()))

    def test_stems_are_heard_as_they_are_mixed(self):
        window = self.open(self.song)
        window.wait_until_loaded()
        window.click("push button", "Separate Stems")
        window.find("check box", "Mute Vocals")
        self.shot("stems-light")
        DESKTOP.key("space")
        window.find("push button", "Pause")
        self.expect_heard("the whole song", **dict.fromkeys(STEMS, 1))
        DESKTOP.key("1")
        self.expect_heard("no vocals", **{key: 1 for key in STEMS if key != "vocals"})
        DESKTOP.key("shift+4")
        self.expect_heard("the guitar alone", guitar=1)
        DESKTOP.key("shift+1")
        self.expect_heard("with the vocals, which are muted", guitar=1, vocals=1)
        window.click("check box", "Unmute Vocals")
        fader = window.find("slider", "Guitar volume").queryValue()
        fader.currentValue = 50
        self.expect_heard("a softer guitar", guitar=0.5, vocals=1)
        fader.currentValue = 150
        self.expect_heard("a louder guitar", guitar=1.5, vocals=1)
        fader.currentValue = 50
        DESKTOP.key("shift+4", "shift+1", "3")
        self.expect_heard("no bass", **{**dict.fromkeys(STEMS, 1), "guitar": 0.5, "bass": 0})
        DESKTOP.set_appearance("dark")
        self.shot("stems-dark")
        DESKTOP.set_appearance("light")
        self.assertEqual(window.close(), 0)

        # Everything of it is there again.
        window = self.open(self.song)
        window.find("check box", "Unmute Bass")
        self.assertEqual(window.value("Guitar volume"), 50)
        DESKTOP.key("space")
        self.expect_heard("the same mix", **{**dict.fromkeys(STEMS, 1), "guitar": 0.5, "bass": 0})

        window.click("push button", "Cleanup Stems")
        window.find("push button", "Delete Stems")
        self.shot("cleanup-light")
        window.click("push button", "Delete Stems")
        wait_for("the controls' end", lambda: not window.has("slider", "Guitar volume"))
        wait_for("the files' end", lambda: not list((DESKTOP.folder / ".quillet/stems").iterdir()))
        window.click("push button", "Separate Stems")
        wait_for("the sheet", lambda: window.has("label", "Stem separation splits"))
        self.shot("separate-light")
        DESKTOP.key("Escape")
        DESKTOP.key("space")
        window.find("push button", "Pause")
        self.assertEqual(window.close(), 0)


if __name__ == "__main__":
    sys.exit(run_tests())
