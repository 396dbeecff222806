#!/usr/bin/env python3
"""Songs from the web in the real program: its window, the real uv, yt-dlp and ffmpeg, and a web server on loopback.

Usage: download_test.py PROGRAM FOLDER-FOR-PICTURES [unittest's arguments]. Exit status 77: the tools cannot run here.
"""

import os
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))
from desktop import frequency, loudness, wait_for
from fetched_tools import ends, environment_or_skip, processes
from song_server import SongServer, make_songs
from window import ProgramTest, run_tests

# As run_tests sets it.
DESKTOP = None
SONGS = {}


class DownloadTest(ProgramTest):
    def setUp(self):
        super().setUp()
        self.server = SongServer(SONGS)
        self.downloads = DESKTOP.folder / "Downloads"

    def tearDown(self):
        super().tearDown()
        self.server.close()

    def open(self, *arguments):
        super().open(*arguments).find("push button", "Open File...")
        return self.window

    def expect(self, what, condition):
        wait_for(what, condition)

    def ask_for(self, path):
        DESKTOP.key("ctrl+shift+o")
        self.window.find("text", "Web address")
        self.window.wait_for_keyboard()
        DESKTOP.type(self.server.address(path))
        self.expect("the button", self.can_submit)
        DESKTOP.key("Return")

    def expect_download(self):
        self.expect("the download", lambda: any("received" in node.name for node in self.window.all("label")))

    def can_submit(self):
        return self.window.find("push button", "Download & Open").getState().contains(self.window.pyatspi.STATE_ENABLED)

    def own_session(self):
        """The process group of what the program has started."""
        return next((group for pid, (parent, group) in processes().items() if parent == self.window.process.pid and group == pid), None)

    def test_the_window_is_used_while_a_download_runs(self):
        mine = DESKTOP.folder / "mine.mp3"
        mine.write_bytes(SONGS["mp3"])
        window = self.open(mine)
        window.wait_until_loaded()
        # However long the hand takes, the song is not there before it has left the sheet.
        self.server.go_on.clear()
        self.ask_for("/slow/Slow.mp3")
        self.expect("the percentage", lambda: any(" % of " in node.name for node in window.all("label")))
        self.shot("downloading")
        window.click("label", "mine.mp3")
        DESKTOP.key("space")
        window.find("push button", "Pause")
        self.expect("its sound", lambda: loudness(DESKTOP.record(0.5)) > 0.05)
        # Cancel closes the sheet; what plays is not interrupted by the song that comes.
        window.click("push button", "Cancel")
        self.expect("the notice", lambda: window.has("label", "The download goes on"))
        self.server.go_on.set()
        self.expect("the song", lambda: window.has("label", "“Slow.m4a” has been downloaded."))
        self.shot("downloaded")
        self.assertTrue(window.has("label", "mine.mp3"))
        # Not the toolbar's button whose name begins so too.
        notice = window.find("label", "“Slow.m4a”").parent
        box = next(node for node in notice if node.name == "Open").queryComponent().getExtents(window.pyatspi.DESKTOP_COORDS)
        DESKTOP.click((box.x + box.width // 2, box.y + box.height // 2))
        self.expect("Slow.m4a", lambda: window.has("label", "Slow.m4a") and window.has("push button", "Play"))
        self.assertTrue((self.downloads / "Slow.m4a").is_file())
        DESKTOP.key("space")
        window.find("push button", "Pause")
        self.expect("its tone", lambda: abs(frequency(DESKTOP.record(1)) - 441) < 2)
        self.assertEqual(window.close(), 0)

    def test_downloads_are_stopped_discarded_and_swept(self):
        forgotten = self.downloads / ".quillet-000000000000"
        forgotten.mkdir(parents=True)
        os.utime(forgotten, (0, 0))
        window = self.open()
        self.expect("the sweep", lambda: not forgotten.exists())
        self.ask_for("/endless/Endless.mp3")
        self.expect_download()
        DESKTOP.key("Escape")
        self.expect("the notice", lambda: window.has("label", "The download goes on"))
        group = self.own_session()
        window.click("push button", "Stop")
        self.assertTrue(ends(group), "something of it still runs")
        self.shot("stopped")
        self.assertTrue(any(self.downloads.glob(".quillet-*")))
        window.click("push button", "Discard")
        self.expect("no remains", lambda: not any(self.downloads.glob(".quillet-*")))
        self.assertFalse(window.has("label", "The download was stopped."))
        self.assertEqual(window.close(), 0)

    def test_nothing_writes_on_when_the_program_ends(self):
        for end in (lambda: self.window.close(), lambda: self.window.process.terminate(), lambda: self.window.process.kill()):
            self.open()
            self.ask_for("/endless/Endless.mp3")
            self.expect_download()
            group = self.own_session()
            self.assertIsNotNone(group)
            end()
            self.window.process.wait(60)
            self.assertTrue(ends(group), "something of it still runs")


def begin(desktop):
    desktop.environment.update({name: ENVIRONMENT[name] for name in ("PATH", "UV_CACHE_DIR", "UV_PYTHON_INSTALL_DIR")})
    SONGS.update(make_songs(desktop.folder))


if __name__ == "__main__":
    ENVIRONMENT = environment_or_skip(Path(sys.argv[1]).resolve().parent)
    sys.exit(run_tests(begin))
