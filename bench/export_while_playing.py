#!/usr/bin/env python3
"""What an export costs whoever listens: how long the mix of six stems takes while one of them plays, and the silence that is heard
meanwhile, which should be none. The tests' sound server has no real-time schedule, so it may be late by itself.

Usage: export_while_playing.py PROGRAM [EXPORTS]    (8)
"""

import statistics
import sys
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parent.parent / "tests" / "window"))
from desktop import SINK_RATE, Desktop, loudness, wait_for  # noqa: E402
from window import Window, write_song, write_stems  # noqa: E402

SONG_SECONDS = 600
PIECE_SECONDS = 0.005
# Of a stem alone, which sounds with 0.1.
QUIET = 0.08


def quiet_milliseconds(samples):
    size = int(PIECE_SECONDS * SINK_RATE)
    pieces = [loudness(samples[at:at + size]) for at in range(0, len(samples) - size, size)]
    return 1000 * PIECE_SECONDS * sum(piece < QUIET for piece in pieces)


def export(desktop, window, folder):
    """Seconds, and milliseconds of silence."""
    folder.mkdir()
    for kind, name in (("menu item", "File"), ("menu item", "Export Stems…"), ("push button", "Mix…")):
        window.click(kind, name)
    window.wait_for_keyboard()
    desktop.type(str(folder))
    with ThreadPoolExecutor(1) as ear:
        heard = ear.submit(desktop.record, 8)
        time.sleep(1)
        begin = time.monotonic()
        desktop.key("Return")
        wait_for("the mix", lambda: list(folder.glob("*.wav")))
        seconds = time.monotonic() - begin
        silence = quiet_milliseconds(heard.result())
    for file in folder.iterdir():
        file.unlink()
    return seconds, silence


def main():
    desktop = Desktop()
    try:
        desktop.start_portal("light")
        song = desktop.folder / "song.wav"
        write_song(song, SONG_SECONDS)
        write_stems(desktop.folder, song, SONG_SECONDS)
        window = Window(desktop, sys.argv[1], song)
        window.wait_until_loaded()
        window.click("push button", "Separate Stems")
        window.find("check box", "Mute Vocals")
        desktop.key("2", "3", "4", "5", "6")
        desktop.key("space")
        window.find("push button", "Pause")
        outcomes = [export(desktop, window, desktop.folder / f"mix {turn}") for turn in range(int((sys.argv[2:] or [8])[0]))]
        print(f"an export takes {statistics.median(seconds for seconds, _ in outcomes):.1f} s; silence in "
              f"{sum(silence > 0 for _, silence in outcomes)} of {len(outcomes)}, {max(silence for _, silence in outcomes):.0f} ms at most")
        window.close()
    finally:
        desktop.close()


if __name__ == "__main__":
    main()
