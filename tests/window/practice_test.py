#!/usr/bin/env python3
"""An hour of practice in a few minutes, in the real window and by keys alone: a hard bar is marked where it is heard, kept under a
name, slowed down, trained, played in a list, exported, and found again the next day. What sounds is recorded, and tells by its pitch
which instant of the song it is.

Usage: practice_test.py PROGRAM FOLDER-FOR-PICTURES [unittest's arguments]
"""

import json
import math
import struct
import subprocess
import sys
import time
import wave
from concurrent.futures import ThreadPoolExecutor

from desktop import SINK_RATE, frequency, loudness, wait_for
from window import RATE, SLOWED, ProgramTest, run_tests

SECONDS = 16
FIRST_HERTZ, HERTZ_A_SECOND = 400, 100
# As run_tests sets it.
DESKTOP = None


def write_rising_song(path):
    """A tone that rises steadily, so that its pitch is its place."""
    with wave.open(str(path), "wb") as song:
        song.setparams((1, 2, RATE, 0, "NONE", ""))
        times = (i / RATE for i in range(SECONDS * RATE))
        song.writeframes(b"".join(struct.pack("<h", int(12000 * math.sin(2 * math.pi * (FIRST_HERTZ * t + HERTZ_A_SECOND * t * t / 2))))
                                  for t in times))


def places(samples, window=0.05):
    """The song's seconds that are heard, one for each `window`; none where it is silent or the tone jumps."""
    count = int(window * SINK_RATE)
    for begin in range(0, len(samples) - count, count):
        part = samples[begin:begin + count]
        quarter = count // 4
        if loudness(part) > 0.05 and abs(frequency(part[:2 * quarter]) - frequency(part[2 * quarter:])) < 60:
            yield (frequency(part) - FIRST_HERTZ) / HERTZ_A_SECOND
        else:
            yield None


def speed_of(heard, window=0.05):
    """Of playing, 1 for the song's own: by the usual step from one place to the next."""
    steps = sorted(b - a for a, b in zip(heard, heard[1:]) if a is not None and b is not None)
    return steps[len(steps) // 2] / window if steps else 0


class PracticeTest(ProgramTest):
    def region(self):
        return self.window.value("Region start"), self.window.value("Region end")

    def heard(self, seconds, after=0.5):
        """The places, once what was played before has left the sound server's buffers."""
        time.sleep(after)
        return list(places(DESKTOP.record(seconds)))

    def assert_within(self, heard, *regions):
        """Nearly all of it lies in the regions, and each of them was heard."""
        if SLOWED:
            return
        known = [place for place in heard if place is not None]
        for start, end in regions:
            self.assertTrue(any(start + 0.1 < place < end - 0.1 for place in known), f"{start} to {end} in {known}")
        inside = [place for place in known if any(start - 0.1 < place < end + 0.1 for start, end in regions)]
        self.assertGreater(len(inside), 0.9 * len(known), f"{regions}: {known}")

    def wait_for_speed(self, wanted, seconds=60):
        wait_for(f"{wanted}", lambda: self.window.text("Speed in percent") == wanted, seconds)

    def save_loop(self, name):
        DESKTOP.key("ctrl+s")
        # Its name is edited in the loop's own place.
        wait_for("the new loop", lambda: any(self.window.is_focused(item) for item in self.window.all("list item", "Loop ")))
        DESKTOP.type(name)
        DESKTOP.key("Return")
        self.window.find("list item", name)

    def test_an_hour_by_keys(self):
        song = DESKTOP.folder / "étude.wav"
        write_rising_song(song)
        window, key = self.open(song), DESKTOP.key
        window.wait_until_loaded()

        # Marked where it is heard, while it plays on.
        if not window.is_on("Loop"):
            key("ctrl+l")
        key("space")
        with ThreadPoolExecutor(1) as ear:
            window.find("push button", "Pause")
            recording = ear.submit(self.heard, 4, 0)
            time.sleep(2)
            key("bracketleft")
            self.assertTrue(SLOWED or max(place or 0 for place in recording.result()) > 1)
        key("bracketright")
        verse = wait_for("a region", lambda: self.region() if self.region()[0] > 0 and self.region()[1] < SECONDS else None)
        self.assertGreater(verse[1], verse[0] + 0.5)
        heard = self.heard(2 * (verse[1] - verse[0]) + 0.5)
        self.assert_within(heard, verse)
        self.assertTrue(SLOWED or 0.9 < speed_of(heard) < 1.1, speed_of(heard))
        self.save_loop("verse")

        # The next bar, slower; both are found again by their keys.
        key("period", "ctrl+Left", "ctrl+Left")
        self.wait_for_speed("90%")
        chorus = self.region()
        self.assertAlmostEqual(chorus[0], verse[1], delta=0.002)
        self.save_loop("chorus")
        key("ctrl+1")
        self.wait_for_speed("100%")
        self.assertEqual(self.region(), verse)
        self.assert_within(self.heard(1), verse)
        key("ctrl+2")
        self.wait_for_speed("90%")
        heard = self.heard(2)
        self.assert_within(heard, chorus)
        self.assertTrue(SLOWED or 0.8 < speed_of(heard) < 0.98, speed_of(heard))

        # It grows faster by itself, and by hand it waits.
        key("ctrl+t")
        self.wait_for_speed("60%")
        for name, text in (("first speed in percent", "150"), ("goal in percent", "200"), ("step in percent", "50"),
                           ("passes at each speed", "2")):
            window.find("text", f"Trainer, {name}").queryComponent().grabFocus()
            key("ctrl+a")
            DESKTOP.type(text)
            key("Return")
        key("Escape", "ctrl+t")
        wait_for("the trainer's end", lambda: not window.is_on("Trainer"))
        with ThreadPoolExecutor(1) as ear:
            # Two passes at the most before it grows faster, of which the first may have begun long before.
            recording = ear.submit(self.heard, 2.5 + 2 * (chorus[1] - chorus[0]) / 1.5, 0)
            time.sleep(0.5)
            key("ctrl+t")
            heard = recording.result()
        self.wait_for_speed("200%")
        self.assert_within(heard, chorus)
        speeds = [speed_of(heard[begin:begin + 8]) for begin in range(0, len(heard) - 8, 4)]
        for speed in (1.5, 2):
            self.assertTrue(SLOWED or any(abs(each - speed) < 0.1 for each in speeds), f"{speed} in {speeds}")
        key("ctrl+Left")
        window.find("label", "Paused")
        key("ctrl+t")
        wait_for("the trainer again", lambda: not window.has("label", "Paused"))
        key("ctrl+t")

        # Both as a list, until it is left.
        key("ctrl+p")
        wait_for("the list", lambda: window.is_on("Play List"))
        loops = [line for line in window.all("list item") if line.name.startswith(("verse", "chorus"))]
        self.assertEqual(len(loops), 2)
        self.shot("practice-light")
        key("ctrl+p")
        wait_for("no list", lambda: not window.is_on("Play List"))

        # One step back and on.
        key("ctrl+alt+1")
        wait_for("the first loop", lambda: self.region() == verse)
        key("ctrl+2", "BackSpace")
        wait_for("the whole song", lambda: self.region() == (0, SECONDS))
        key("ctrl+z")
        wait_for("the region before", lambda: self.region() == verse)

        # As it is heard, into a file of exactly its length.
        key("ctrl+e")
        window.find("push button", "Choose Folder…")
        key("Return")
        window.wait_for_keyboard()
        (DESKTOP.folder / "out").mkdir()
        DESKTOP.type(str(DESKTOP.folder / "out"))
        key("Return")
        exported = wait_for("the export", lambda: next((DESKTOP.folder / "out").glob("*.wav"), None))
        stream, = json.loads(subprocess.run(["ffprobe", "-v", "error", "-of", "json", "-show_streams", exported], check=True,
                                            capture_output=True).stdout)["streams"]
        self.assertAlmostEqual(stream["duration_ts"], (verse[1] - verse[0]) * RATE, delta=1)
        self.assertEqual(window.close(), 0)

        # The next day.
        window = self.open(song)
        window.wait_until_loaded()
        window.find("list item", "chorus")
        key("ctrl+1")
        wait_for("the loop of yesterday", lambda: self.region() == verse)
        key("space")
        window.find("push button", "Pause")
        self.assert_within(self.heard(2), verse)
        self.assertEqual(window.close(), 0)


if __name__ == "__main__":
    sys.exit(run_tests())
