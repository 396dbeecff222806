#!/usr/bin/env python3
"""What the window costs: from exec to the window on the screen and resident memory, beside a window of the toolkit with nothing in
it; processor time while it plays at half speed, beside the command line that plays the same; and how soon the main thread answers
while a handle of the region is dragged as a song plays.

Usage: window_cost.py PROGRAM EMPTY-WINDOW-PROGRAM SONG    (60 minutes of MP3)
Needs Xvfb and xev (Debian: xvfb, x11-utils) and the tests' desktop.
"""

import os
import re
import statistics
import subprocess
import sys
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parent.parent / "tests" / "window"))
from desktop import Desktop, wait_for  # noqa: E402
from window import Watchdog, Window, write_song  # noqa: E402

ROUNDS = 15
PLAY_SECONDS = 20


def seconds_to_window(desktop, command):
    """Until the screen's server maps the window; there is no window manager that would come in between."""
    watch = subprocess.Popen(["xev", "-root", "-event", "substructure"], env=desktop.environment, stdout=subprocess.PIPE, text=True)
    try:
        time.sleep(0.2)
        begin = time.monotonic()
        program = subprocess.Popen(command, env=desktop.environment)
        if not any(line.startswith("MapNotify") for line in watch.stdout):
            raise RuntimeError("the screen has told of no window")
        seconds = time.monotonic() - begin
        time.sleep(0.5)
        memory = megabytes(program.pid)
        program.kill()
        program.wait()
        return seconds, memory
    finally:
        watch.kill()
        watch.wait()


def megabytes(pid):
    return int(re.search(r"VmRSS:\s+(\d+)", Path(f"/proc/{pid}/status").read_text())[1]) / 1024


def processor_seconds(pid):
    fields = Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def share_of_a_core(pid):
    before, begin = processor_seconds(pid), time.monotonic()
    time.sleep(PLAY_SECONDS)
    return (processor_seconds(pid) - before) / (time.monotonic() - begin)


def main():
    program, empty, song = sys.argv[1:4]
    # A window manager would map windows of its own.
    desktop = Desktop(window_manager=False)
    try:
        times = {name: [] for name in ("empty", "quillet")}
        memories = {}
        for _ in range(ROUNDS):
            for name, command in (("empty", [empty]), ("quillet", [program])):
                seconds, memories[name] = seconds_to_window(desktop, command)
                times[name].append(seconds)
        medians = {name: 1000 * statistics.median(values) for name, values in times.items()}
        print(f"exec to window: empty {medians['empty']:.0f} ms, quillet {medians['quillet']:.0f} ms, "
              f"ratio {medians['quillet'] / medians['empty']:.2f}")
        print(f"resident after start: empty {memories['empty']:.1f} MB, quillet {memories['quillet']:.1f} MB")

        desktop.start_window_manager()
        time.sleep(1)
        window = desktop.start(program, song)
        wait_for("the window", lambda: desktop.run("xdotool", "search", "--onlyvisible", "--name", "Quillet$", check=False).stdout)
        time.sleep(8)
        for _ in range(10):
            desktop.key("ctrl+Left")
        desktop.key("space")
        time.sleep(3)
        with_window = share_of_a_core(window.pid)
        print(f"resident while a song plays: {megabytes(window.pid):.1f} MB")
        window.kill()
        player = desktop.start(program, "play", song, "--speed", "50")
        time.sleep(3)
        alone = share_of_a_core(player.pid)
        player.kill()
        print(f"playing at 50 %: {100 * with_window:.1f} % of a core with the window, {100 * alone:.1f} % without, "
              f"{100 * (with_window - alone):.1f} % beyond")
        drag_a_handle(desktop, program)
    finally:
        desktop.close()


def drag_a_handle(desktop, program):
    """To and fro across the window, a move every 8 ms, for ten seconds."""
    song = desktop.folder / "drag.wav"
    write_song(song, 12)
    subprocess.run(["/usr/bin/python3", "-c", "import pyatspi; pyatspi.Registry.getDesktop(0).childCount"], check=False,
                   env=desktop.environment)
    window = Window(desktop, program, song)
    window.wait_until_loaded()
    desktop.key("space")
    left, right = window.at(0, 12), window.at(6, 12)
    places = [left[0] + (right[0] - left[0]) * step // 100 for step in [*range(100), *range(100, 0, -1)]]
    moves = [word for x in places for word in ("mousemove", str(x), str(left[1]), "sleep", "0.008")]
    desktop.run("xdotool", "mousemove", *map(str, left), "mousedown", "1")
    with Watchdog(window) as watchdog:
        for _ in range(4):
            desktop.run("xdotool", *moves)
    desktop.run("xdotool", "mouseup", "1")
    print(f"a handle dragged while playing: slowest answer {1000 * watchdog.slowest:.0f} ms "
          f"(the machine's own delay {1000 * watchdog.machine:.0f} ms)")
    window.close()


main()
