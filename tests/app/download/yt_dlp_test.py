#!/usr/bin/env python3
"""The real uv, yt-dlp and ffmpeg with the program's arguments against a web server on loopback: what becomes of titles, of folders and
of files that are there already, and what is left after an end before its time.

Usage: yt_dlp_test.py FOLDER-OF-THE-TOOLS [unittest's arguments]. Exit status 77: the tools cannot run here.
"""

import signal
import subprocess
import sys
import tempfile
import time
import unittest
import urllib.parse
import zipfile
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "support"))
from fetched_tools import ends, environment_or_skip
from song_server import SongServer, make_songs

TOOLS = Path(sys.argv[1]).resolve()
ENTRY = Path(__file__).resolve().parents[3] / "app/download/yt-dlp/__main__.py"
UPDATE = ENTRY.with_name("update.py")
LONGEST_NAME_BYTES = 255


def command(folder, address):
    return [TOOLS / "uv", "run", "--python", "3.12", TOOLS / "yt-dlp", "-x", "--no-playlist", "--audio-format", "m4a",
            "--ffmpeg-location", TOOLS / "ffmpeg", "--print", "after_move:filepath", "-o", f"{folder}/%(title)s.%(ext)s", address]


def codec(file):
    return subprocess.run(["ffprobe", "-v", "error", "-show_entries", "stream=codec_name", "-of", "csv=p=0", file],
                          capture_output=True, text=True).stdout.strip()


class FetchTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.keeper = tempfile.TemporaryDirectory(prefix="quillet-fetch-")
        cls.home = Path(cls.keeper.name)
        cls.server = SongServer(make_songs(cls.home))
        cls.environment = dict(ENVIRONMENT, HOME=str(cls.home), LC_ALL="C")
        cls.environment.pop("XDG_CONFIG_HOME", None)

    @classmethod
    def tearDownClass(cls):
        cls.server.close()
        cls.keeper.cleanup()

    def setUp(self):
        # Every letter of this name is one that a template or a shell would take for something else.
        self.folder = self.home / self.id() / "100% $HOME %(id)s ~ 'é\""
        self.folder.mkdir(parents=True)

    def fetch(self, path, folder=None, limit=None):
        """No file may grow larger than `limit` bytes."""
        limited = ["prlimit", f"--fsize={limit}"] if limit else []
        return subprocess.run([*limited, *command(folder or self.folder, self.server.address(path))], env=self.environment, cwd="/",
                              capture_output=True)

    def fetched(self, path):
        """The name of the file, which is in the folder and nowhere else, and an M4A."""
        outcome = self.fetch(path)
        self.assertEqual(outcome.returncode, 0, outcome.stderr.decode())
        file = Path(outcome.stdout.decode().strip("\n"))
        self.assertEqual(file.parent, self.folder)
        self.assertEqual(codec(file), "aac")
        return file.name

    def names(self):
        return sorted(file.name for file in self.folder.iterdir())

    def test_every_title_ends_as_one_safe_file(self):
        for title in ('AC/DC "Live" \'at\' \\ 50%', "line\nbreak and bell\x07\x1b[31m", "🎸" * 300, "/" * 300, "-o evil", "%(id)s $HOME ~"):
            with self.subTest(title):
                before = self.names()
                name = self.fetched("/titled/" + urllib.parse.quote(title, safe=""))
                self.assertEqual(self.names(), sorted([*before, name]))
                self.assertLessEqual(len(name.encode()), LONGEST_NAME_BYTES)
                self.assertTrue(name.endswith(".m4a"))
                self.assertTrue(name.isprintable())

    def test_of_several_songs_it_is_the_first(self):
        name = self.fetched("/album")
        self.assertEqual(self.names(), [name])

    def test_files_that_are_there_are_left_alone(self):
        for name in ("song.mp3", "song.m4a"):
            (self.folder / name).write_text("the user's own")
        self.assertEqual(self.fetched("/song.mp3"), "song (2).m4a")
        self.assertEqual(self.fetched("/song.wav"), "song (3).m4a")
        # The same once more is the same file.
        kept = (self.folder / "song (2).m4a").stat()
        self.assertEqual(self.fetched("/song.mp3"), "song (2).m4a")
        self.assertEqual((self.folder / "song (2).m4a").stat(), kept)
        self.assertEqual(self.names(), ["song (2).m4a", "song (3).m4a", "song.m4a", "song.mp3"])
        self.assertEqual({(self.folder / name).read_text() for name in ("song.m4a", "song.mp3")}, {"the user's own"})

    def test_the_same_address_twice_at_once_is_one_song(self):
        both = [subprocess.Popen(command(self.folder, self.server.address("/slow/song.mp3")), env=self.environment, cwd="/",
                                 stdout=subprocess.PIPE, stderr=subprocess.DEVNULL) for _ in range(2)]
        for process in both:
            self.assertEqual(process.communicate()[0].decode().strip(), str(self.folder / "song.m4a"))
        self.assertEqual(self.names(), ["song.m4a"])

    def test_failures_are_said_and_leave_nothing_in_view(self):
        for path, word in (("/nothing", "404"), ("/page", "Unsupported URL"), ("/broken/song.mp3", "24")):
            self.assert_fails(self.fetch(path), word)
        self.assertTrue(all(name.startswith(".") for name in self.names()))
        self.assert_fails(self.fetch("/nothing", self.folder / "new" / "newer"), "404")
        self.assertFalse((self.folder / "new").exists())
        self.assert_fails(self.fetch("/song.mp3", "/proc/nowhere"), "ERROR: No such file or directory: /proc/nowhere\n")

    def test_what_nobody_has_foreseen_is_one_sentence_too(self):
        # A song that disappears before it gets its place, a disk without room, an application that is not whole.
        options = self.home / ".config/quillet/yt-dlp.conf"
        options.parent.mkdir(parents=True, exist_ok=True)
        options.write_text("--exec post_process:rm")
        self.assert_fails(self.fetch("/song.mp3"), "ERROR: Postprocessing: No such file or directory")
        options.unlink()
        self.assert_fails(self.fetch("/song.mp3", limit=10000), "File too large")
        self.assertTrue(all(name.startswith(".") for name in self.names()))
        with zipfile.ZipFile(self.home / "half", "w") as half:
            half.write(ENTRY, "__main__.py")
        outcome = subprocess.run([TOOLS / "uv", "run", "--python", "3.12", self.home / "half"], env=self.environment, cwd="/",
                                 capture_output=True)
        self.assert_fails(outcome, "ERROR: ModuleNotFoundError: No module named 'yt_dlp'\n")

    def assert_fails(self, outcome, words):
        self.assertEqual((outcome.returncode, outcome.stdout), (1, b""))
        errors = outcome.stderr.decode()
        self.assertIn(words, errors)
        self.assertNotIn("Traceback", errors)

    def test_options_of_the_users_own_for_this_program_are_read(self):
        for folder, option in ((".config/yt-dlp", "--print title"), (".config/quillet", "--user-agent practising")):
            (self.home / folder).mkdir(parents=True)
            (self.home / folder / ("config" if "yt-dlp" in folder else "yt-dlp.conf")).write_text(option)
        self.assertEqual(self.fetched("/song.mp3"), "song.m4a")
        self.assertEqual(self.server.agents[-1], "practising")

    def test_everything_ends_with_the_tool_and_the_next_time_goes_on_from_there(self):
        def received():
            return sum(file.stat().st_size for file in self.folder.rglob("*.part"))

        for end in (signal.SIGTERM, signal.SIGKILL):
            before = received()
            process = subprocess.Popen(command(self.folder, self.server.address("/slow/song.mp3")), env=self.environment, cwd="/",
                                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True)
            limit = time.monotonic() + 120
            while received() <= before:
                self.assertLess(time.monotonic(), limit, "nothing came")
                time.sleep(0.05)
            process.send_signal(end)
            process.wait(60)
            self.assertTrue(ends(process.pid), "something of it still runs")
            self.assertTrue(all(name.startswith(".") for name in self.names()), "it has gone on")
        self.server.places.clear()
        self.assertEqual(self.fetched("/slow/song.mp3"), "song.m4a")
        self.assertGreater(max(self.server.places), 0)
        # Byte for byte what it is in one go.
        self.assertEqual(self.fetched("/song.mp3"), "song.m4a")
        self.assertEqual(self.names(), ["song.m4a"])

    def test_the_newest_release_is_fetched_whole_or_not_at_all(self):
        updates = self.home / "updates"

        def update(**environment):
            return subprocess.run([TOOLS / "uv", "run", "--no-project", "--python", "3.12", UPDATE, TOOLS / "uv", updates],
                                  env={**self.environment, **environment}, cwd="/", capture_output=True, text=True)

        failed = update(UV_OFFLINE="1", UV_CACHE_DIR=str(self.home / "empty"))
        self.assertEqual(failed.returncode, 1)
        self.assertRegex(failed.stderr, "^The newest yt-dlp could not be fetched: .*\n$")
        self.assertEqual(list(updates.iterdir()), [])
        outcome = update()
        if outcome.returncode != 0 and "could not be fetched" in outcome.stderr:
            self.skipTest(f"no registry: {outcome.stderr.strip()}")
        version = outcome.stdout.strip()
        self.assertEqual([place.name for place in updates.iterdir()], [version])
        with zipfile.ZipFile(updates / version / "yt-dlp") as application:
            self.assertEqual(application.read("__main__.py"), ENTRY.read_bytes())
        told = subprocess.run([TOOLS / "uv", "run", "--python", "3.12", updates / version / "yt-dlp", "--version"], env=self.environment,
                              cwd="/", capture_output=True, text=True)
        self.assertEqual(told.stdout.strip(), version)


if __name__ == "__main__":
    ENVIRONMENT = environment_or_skip(TOOLS)
    unittest.main(argv=[sys.argv[0], *sys.argv[2:]], verbosity=2)
