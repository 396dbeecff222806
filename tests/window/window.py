"""The program's window as a person meets it, for tests of the real program."""

import hashlib
import math
import os
import struct
import subprocess
import sys
import threading
import time
import unittest
import wave
from pathlib import Path

from desktop import Desktop, wait_for

RATE = 44100
# The thread sanitizer makes the program many times slower: its sound has gaps, and it answers late.
SLOWED = "TSAN_OPTIONS" in os.environ
# The address sanitizer keeps what has been freed.
HOARDS = SLOWED or "ASAN_SYMBOLIZER_PATH" in os.environ
if SLOWED:
    print("skipped: gaps in the window's sound, and how soon it answers (the thread sanitizer makes the program many times slower)")


def write_song(path, seconds):
    """Three seconds each of 441, 882, 1323 and 1764 Hz, and so on."""
    with wave.open(str(path), "wb") as song:
        song.setnchannels(1)
        song.setsampwidth(2)
        song.setframerate(RATE)
        song.writeframes(b"".join(
            struct.pack("<h", int(16000 * math.sin(2 * math.pi * 441 * (1 + i // (3 * RATE)) * i / RATE)))
            for i in range(seconds * RATE)))


STEMS = {"vocals": 300, "drums": 500, "bass": 700, "guitar": 1100, "piano": 1300, "other": 1700}


def write_stems(folder, song, seconds):
    """Where the program of a user whose home that folder is looks for them: sines of 0.1, each of another frequency."""
    name = hashlib.sha256(bytes(song)).hexdigest()[:12]
    stems = folder / ".quillet/stems" / name / "htdemucs_6s" / song.stem
    stems.mkdir(parents=True, exist_ok=True)
    for key, frequency in STEMS.items():
        sine = f"0.1*sin(2*PI*{frequency}*t)"
        subprocess.run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", f"aevalsrc={sine}|{sine}:d={seconds}:s={RATE}", "-c:a",
                        "pcm_f32le", str(stems / f"{key}.wav")], check=True)


class Window:
    """The program's window, as the accessibility bus tells of it."""

    def __init__(self, desktop, program, *arguments):
        import pyatspi
        self.pyatspi = pyatspi
        self.desktop = desktop
        self.process = desktop.start(program, *map(str, arguments))
        self.application = wait_for("the program on the accessibility bus", self._find)
        wait_for("the window", self.id)

    def _find(self):
        for application in self.pyatspi.Registry.getDesktop(0):
            if application is not None and application.get_process_id() == self.process.pid and application.childCount > 0:
                return application
        return None

    def id(self):
        """The window's number on the screen, or None while it is not there. Its title begins with the song's."""
        found = self.desktop.run("xdotool", "search", "--onlyvisible", "--all", "--pid", str(self.process.pid), "--name", "Quillet$",
                                 check=False).stdout.split()
        return found[-1].decode() if found else None

    def _walk(self, node):
        yield node
        try:
            for child in node:
                if child is not None:
                    yield from self._walk(child)
        except Exception:  # what has just gone
            return

    def in_view(self):
        """Everything in view, with its role."""
        for node in self._walk(self.application):
            try:
                if node.getState().contains(self.pyatspi.STATE_SHOWING):
                    role = node.getRoleName()
                    # Newer versions of the bus and the toolkit call it that.
                    yield "push button" if role in ("button", "push button menu", "button menu") else role, node
            except Exception:  # what has just gone
                continue

    def all(self, role, name=None):
        """Everything in view of that role, whose name begins with `name`."""
        return [node for kind, node in self.in_view() if kind == role and (name is None or node.name.startswith(name))]

    def find(self, role, name=None, seconds=60):
        return wait_for(f"{role} “{name}”", lambda: next(iter(self.all(role, name)), None), seconds)

    def has(self, role, name=None):
        return bool(self.all(role, name))

    @staticmethod
    def text_of(node):
        text = node.queryText()
        return text.getText(0, text.characterCount)

    def text(self, name):
        return self.text_of(self.find("text", name))

    def is_checked(self, node):
        return node.getState().contains(self.pyatspi.STATE_CHECKED)

    def is_focused(self, node):
        return node.getState().contains(self.pyatspi.STATE_FOCUSED)

    def wait_for_keyboard(self):
        """Until a text is being edited: what is typed before is lost."""
        wait_for("a text with the keyboard", lambda: any(self.is_focused(node) for node in self.all("text")))

    def value(self, name):
        return self.find("slider", name).queryValue().currentValue

    def is_on(self, name):
        return self.is_checked(self.find("check box", name))

    def place(self, role, name=None):
        box = self.find(role, name).queryComponent().getExtents(self.pyatspi.DESKTOP_COORDS)
        return box.x + box.width // 2, box.y + box.height // 2

    def click(self, role, name=None):
        self.desktop.click(self.place(role, name))

    def wait_until_loaded(self):
        wait_for("the song", lambda: self.has("push button", "Play"))

    def at(self, seconds, duration):
        """The place on the waveform at which that time of the song is, whole track in view."""
        box = self.find("filler", "Waveform").queryComponent().getExtents(self.pyatspi.DESKTOP_COORDS)
        inset = 8
        x = box.x + inset + (box.width - 2 * inset) * seconds / duration
        return int(round(x)), box.y + box.height * 3 // 4

    def resize(self, width, height):
        self.desktop.run("xdotool", "windowsize", "--sync", self.id(), str(width), str(height))

    def close(self):
        if self.process.poll() is None:
            self.desktop.key("ctrl+q")
        return self.process.wait(60)


class Watchdog:
    """Asks the main thread for an answer all the time, and notes how long it took; and beside it how long a thread that has nothing
    to do takes to wake up, which is the machine's own doing.

    Only what no busy machine does fails a test; QUILLET_JUDGE_ANSWERS=1, on a quiet one, asks for the 50 ms that a user may wait."""

    EXACT = "QUILLET_JUDGE_ANSWERS" in os.environ

    def __init__(self, window):
        self.window = window
        self.slowest = 0.0
        self.machine = 0.0
        self._end = threading.Event()
        self._thread = threading.Thread(target=self._watch, daemon=True)

    def _watch(self):
        while not self._end.is_set():
            begin = time.monotonic()
            time.sleep(0.01)
            machine = time.monotonic() - begin - 0.01
            begin = time.monotonic()
            try:
                self.window.application.getState()
            except Exception:
                continue
            took = time.monotonic() - begin
            # What the machine held up is not the program's doing.
            self.machine = max(self.machine, machine)
            if machine < 0.01:
                self.slowest = max(self.slowest, took)

    @property
    def is_quick(self):
        return SLOWED or self.slowest < (0.05 + 2 * self.machine if self.EXACT else 1 + 20 * self.machine)

    def __str__(self):
        return f"slowest answer {1000 * self.slowest:.0f} ms (the machine's own delay {1000 * self.machine:.0f} ms)"

    def __enter__(self):
        self._thread.start()
        return self

    def __exit__(self, *_):
        self._end.set()
        self._thread.join()


class ProgramTest(unittest.TestCase):
    """Tests that open the program's window; nothing of it is left after them."""

    # As run_tests was told.
    desktop = None

    def setUp(self):
        self.window = None

    def tearDown(self):
        if self.window is not None and self.window.process.poll() is None:
            self.window.process.kill()
            self.window.process.wait()

    def open(self, *arguments):
        self.window = Window(self.desktop, sys.argv[1], *arguments)
        return self.window

    def shot(self, name):
        """Where its name ends with an appearance, that is what it shows."""
        time.sleep(0.4)
        picture = Path(sys.argv[2]) / f"{name}.png"

        def shows_it():
            self.desktop.shot(picture)
            return not name.endswith(("-dark", "-light")) or (self.desktop.brightness(picture) < 0.5) == name.endswith("-dark")

        wait_for(f"the appearance of {name}", shows_it)


def run_tests(begin=lambda desktop: None):
    """Runs the tests of the main program on a desktop of their own, which is its DESKTOP; `begin` is given it first. The exit status.

    Usage: PROGRAM FOLDER-FOR-PICTURES [unittest's arguments]"""
    Path(sys.argv[2]).mkdir(parents=True, exist_ok=True)
    desktop = Desktop()
    try:
        desktop.start_portal("light")
        # The accessibility bus answers from its second client on.
        subprocess.run(["/usr/bin/python3", "-c", "import pyatspi; pyatspi.Registry.getDesktop(0).childCount"], check=False,
                       env=desktop.environment)
        ProgramTest.desktop = sys.modules["__main__"].DESKTOP = desktop
        begin(desktop)
        outcome = unittest.main(argv=[sys.argv[0], *sys.argv[3:]], verbosity=2, exit=False).result
    finally:
        desktop.close()
    return 0 if outcome.wasSuccessful() else 1
