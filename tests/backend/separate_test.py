#!/usr/bin/env python3
"""The stem separation's backend in the environment that the program builds for it, with a small model: what it makes, and what it says
and leaves when it cannot.

Usage: separate_test.py BUILD-TREE [unittest's arguments]. Exit status 77: that environment cannot be had here.
"""

import hashlib
import json
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
import unittest
import unittest.mock
from concurrent.futures import ThreadPoolExecutor
from http.server import BaseHTTPRequestHandler, HTTPServer
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))
from fetched_tools import ends
from separation_environment import SMALL_SIZE, SOURCES, enter_or_skip, write_model

BUILD = Path(sys.argv[1]).resolve()
SCRIPT = BUILD / "share/quillet/backend/separate.py"
SOURCE_SCRIPT = Path(__file__).resolve().parents[2] / "backend/separate.py"
KEYS = ["vocals", "drums", "bass", "guitar", "piano", "other"]
enter_or_skip(BUILD)

import numpy
import torch
from demucs.apply import apply_model
from demucs.hf import load_safetensors_model
from safetensors import safe_open
from safetensors.torch import save_file

sys.path.insert(0, str(SCRIPT.parent))
from stems import model, wav
from stems.level import Level, samples
from stems.output import song_name
from stems.report import Failure, Report
from stems.song import Song
from stems.weights import FILE, FOLDER_VARIABLE, Weights, model_file


def decoded(path, channels):
    raw = subprocess.run(["ffmpeg", "-v", "error", "-i", b"file:" + os.fsencode(path), "-ac", str(channels), "-f", "f32le", "-"],
                         capture_output=True, check=True).stdout
    return numpy.frombuffer(raw, numpy.float32).reshape(-1, channels)


def rate_of(path):
    return int(subprocess.run(["ffprobe", "-v", "error", "-show_entries", "stream=sample_rate", "-of", "csv=p=0", path],
                              capture_output=True, check=True).stdout)


def children(pid):
    """In the order in which they were started."""
    return [int(child) for child in Path(f"/proc/{pid}/task/{pid}/children").read_text().split()]


class Rig(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.keeper = tempfile.TemporaryDirectory(prefix="quillet-separate-")
        cls.home = Path(cls.keeper.name)
        (cls.home / "model").mkdir()
        cls.model_path = cls.home / "model/small.safetensors"
        write_model(cls.model_path, SMALL_SIZE)
        cls.environment = dict(os.environ, QUILLET_STEM_MODEL=str(cls.home / "model"))

    @classmethod
    def tearDownClass(cls):
        cls.keeper.cleanup()

    def setUp(self):
        self.folder = self.home / self.id() / "stems"
        self.folder.mkdir(parents=True)

    def make_song(self, name="song.wav", rate=44100, channels=2, seconds=10):
        path = os.path.join(os.fsencode(self.folder.parent), os.fsencode(name))
        sound = "|".join(f"0.3*sin({300 + 77 * channel}*2*PI*t)*sin(t)+0.1*random({channel})" for channel in range(channels))
        subprocess.run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", f"aevalsrc='{sound}':s={rate}:d={seconds}", b"file:" + path],
                       check=True)
        return path

    def start(self, song, folder=None, prefix=(), script=SCRIPT, **environment):
        return subprocess.Popen([*prefix, sys.executable, script, "--input-file", song, "--model", "htdemucs_6s", "--output-dir",
                                 folder or self.folder], env=self.environment | environment, stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE, start_new_session=True)

    def run_to_end(self, *arguments, **options):
        process = self.start(*arguments, **options)
        output, progress = process.communicate()
        self.assertTrue(ends(process.pid, seconds=60), "something runs on")
        return process.returncode, output.decode(), progress.decode()

    def check_progress(self, progress):
        """The last message, and how far it came."""
        messages = [json.loads(line)["message"] for line in progress.splitlines() if line.startswith("{")]
        percents = [int(re.fullmatch(r"(\d+)%", line)[1]) for line in progress.splitlines() if not line.startswith("{")]
        self.assertEqual(percents, sorted({*percents} & {*range(101)}))
        return messages[-1] if messages else "", percents[-1] if percents else 0

    def assert_fails(self, outcome, *words):
        status, output, progress = outcome
        self.assertEqual(status, 1)
        self.assertRegex(output, r"\A[A-Z“][^\n{]*\.\n\Z")
        for word in words:
            self.assertIn(word, output)
        self.assertNotEqual(self.check_progress(progress)[0], "Done.")


class SeparationTest(Rig):
    def test_six_stems_are_the_song(self):
        # What the user has for other programs; OMP_DISPLAY_ENV makes a library talk.
        (self.home / "torch.py").write_text("raise ImportError('not this one')\n")
        # The last has no player beside it to ask for the length.
        for name, rate, channels, script in (("song.flac", 44100, 2, SCRIPT), (b"\xe9 50%.live.wav", 48000, 1, SCRIPT),
                                             ("other.wav", 22050, 2, SOURCE_SCRIPT)):
            with self.subTest(name):
                song = self.make_song(name, rate, channels)
                place = os.path.join(os.fsencode(self.folder), b"htdemucs_6s", os.path.splitext(os.path.basename(song))[0])
                os.makedirs(place)
                Path(os.fsdecode(place), "old.wav").write_text("of an earlier version")
                status, output, progress = self.run_to_end(song, script=script, PYTHONPATH=str(self.home), OMP_DISPLAY_ENV="TRUE")
                self.assertEqual(status, 0, output)
                self.assertEqual(self.check_progress(progress), ("Done.", 100))
                result = json.loads(output)
                self.assertTrue(result["success"])
                self.assertEqual(sorted(os.listdir(place)), sorted(key.encode() + b".wav" for key in KEYS))
                files = [os.path.join(place, key.encode() + b".wav") for key in KEYS]
                self.assertEqual(result["stems"], {key: file.decode("utf-8", "replace") for key, file in zip(KEYS, files)})
                self.assertEqual({rate_of(file) for file in files}, {rate})
                stems = [decoded(file, 2) for file in files]
                expected = numpy.broadcast_to(decoded(song, channels), (rate * 10, 2))
                self.assertLess(numpy.abs(sum(stems) - expected).max(), 1e-6)
                # A stem that came an odd way back to the song's rate would still leave the right rest.
                self.assertGreater(min(numpy.abs(stem).max() for stem in stems), 1e-4)
        self.assertEqual(os.listdir(self.folder), ["htdemucs_6s"])
        self.assertEqual([song_name(name) for name in (b"/a/b.c.mp3", b"/a/.mp3", b"/..mp3")], [b"b.c", b".mp3", b"..mp3"])

    def test_stems_are_to_the_bit_what_the_package_makes(self):
        network = load_safetensors_model(self.model_path).eval()
        length = int(network.segment * network.samplerate)
        stride = length * 3 // 4
        torch.set_num_threads(len(os.sched_getaffinity(0)))
        for frames in (1, 1000, length, 2 * stride + 500, 2 * stride + length // 2 + 1):
            with self.subTest(frames):
                song = torch.rand(frames, 2, generator=torch.manual_seed(frames)) - 0.3
                level = Level()
                for block in torch.split(song, 100_000):
                    level.add(block.numpy())
                middle = song.to(torch.float64).mean(1)
                deviation = middle.std().item() if frames > 1 else 0
                self.assertAlmostEqual(level.mean, middle.mean().item(), 12)
                self.assertAlmostEqual(level.deviation, deviation + 1e-8, 12)
                data = memoryview(song.numpy()).cast("B")
                place, made = 0, {source: b"" for source in KEYS}

                def read(wanted):
                    nonlocal place
                    place += wanted * 8
                    return data[place - wanted * 8:place]

                def write(stretches, _):
                    for source, stretch in stretches.items():
                        made[source] += stretch
                model.separate(model.load(self.model_path), read, level, write)
                mean, deviation = torch.tensor(level.mean, dtype=torch.float32), torch.tensor(level.deviation, dtype=torch.float32)
                mix = ((song.T.contiguous() - mean) / deviation)[None]
                expected = apply_model(network, mix, shifts=0, split=True, overlap=0.25)[0] * deviation + mean
                for source, sound in zip(network.sources, expected):
                    self.assertEqual(made[source], sound.T.contiguous().numpy().tobytes(), source)

    def test_more_channels_do_not_clip(self):
        # Nine channels are no arrangement that ffmpeg could mix.
        for channels in (3, 6, 9):
            with self.subTest(channels):
                path = os.path.join(os.fsencode(self.folder), b"%d.wav" % channels)
                subprocess.run(["ffmpeg", "-v", "error", "-f", "f32le", "-ar", "44100", "-ac", str(channels), "-i", "pipe:", b"file:" + path],
                               input=numpy.ones((44100, channels), numpy.float32).tobytes(), check=True)
                file = wav.create(path + b".decoded")
                self.addCleanup(os.close, file)
                Song(path).decode(file)
                sound = numpy.frombuffer(os.pread(file, 44100 * wav.FRAME_BYTES, wav.HEADER_BYTES), numpy.float32)
                self.assertEqual(len(sound), 2 * 44100)
                self.assertLess(numpy.abs(sound - 1).max(), 1e-3)

    def test_what_is_no_number_is_silence(self):
        sound = numpy.array([[numpy.nan, 0.5], [numpy.inf, -numpy.inf]], numpy.float32)
        self.assertEqual(samples(sound.tobytes()).tolist(), [[0, 0.5], [0, 0]])

    def test_files_beyond_4_gib_are_rf64(self):
        path = self.folder / "long.wav"
        frames = 192_000 * 3600
        file = wav.create(path)
        wav.finish(file, 192_000, frames)
        os.close(file)
        self.assertEqual(path.stat().st_size, wav.HEADER_BYTES + frames * wav.FRAME_BYTES)
        facts = subprocess.run(["ffprobe", "-v", "error", "-show_entries", "stream=duration_ts,codec_name", "-of", "csv=p=0", path],
                               capture_output=True, text=True).stdout
        self.assertEqual(facts.strip(), f"pcm_f32le,{frames}")


class FailureTest(Rig):
    def test_each_failure_is_a_sentence_and_leaves_nothing(self):
        song = self.make_song(seconds=1)
        text = self.folder.parent / "text.mp3"
        text.write_text("Buy milk.\n")
        (self.folder.parent / "empty.mp3").touch()
        silent = self.make_song("silent.wav", seconds=0)
        broken, empty, foreign, structured, fewer = (self.home / name for name in ("broken", "empty", "foreign", "structured", "fewer"))
        for folder in (broken, empty, foreign, structured, fewer):
            folder.mkdir()
        (broken / "half.safetensors").write_bytes(self.model_path.read_bytes()[:-1000])
        # Two that would have the loader call something else.
        (foreign / "a.safetensors").write_bytes(self.model_path.read_bytes().replace(b"demucs.htdemucs.HTDemucs", b"builtins.print".ljust(24)))
        with safe_open(self.model_path, framework="pt") as file:
            save_file({name: file.get_tensor(name) for name in file.keys()}, structured / "a.safetensors",
                      {**file.metadata(), "structure": '{"_type": "builtins.print"}'})
        write_model(fewer / "a.safetensors", SMALL_SIZE, SOURCES[:4])
        damaged = Path(shutil.copytree(SOURCE_SCRIPT.parent, self.home / "damaged"))
        (damaged / "demucs.py").touch()
        (self.folder / "mine.txt").write_text("the user's own")
        for arguments, options, words in (
                (("/nowhere/a.mp3",), {}, ["/nowhere/a.mp3", "No such file"]),
                ((self.folder,), {}, ["not a file"]),
                ((text,), {}, ["text.mp3"]),
                ((self.folder.parent / "empty.mp3",), {}, ["empty.mp3"]),
                ((text,), {"script": SOURCE_SCRIPT}, ["no sound in"]),
                ((silent,), {"script": SOURCE_SCRIPT}, ["silent.wav", "cannot be decoded"]),
                ((song, text), {}, ["text.mp3", "Not a directory"]),
                ((song, "/proc/nowhere"), {}, ["/proc/nowhere"]),
                ((song,), {"QUILLET_STEM_MODEL": "/nowhere"}, ["QUILLET_STEM_MODEL", "No such file"]),
                ((song,), {"QUILLET_STEM_MODEL": str(empty)}, ["no .safetensors file"]),
                ((song,), {"QUILLET_STEM_MODEL": str(broken)}, ["half.safetensors", "cannot be loaded"]),
                ((song,), {"QUILLET_STEM_MODEL": str(foreign)}, ["foreign", "another kind"]),
                ((song,), {"QUILLET_STEM_MODEL": str(structured)}, ["structured", "another kind"]),
                ((song,), {"QUILLET_STEM_MODEL": str(fewer)}, ["does not make the six stems"]),
                ((song,), {"QUILLET_STEM_MODEL": "", "https_proxy": "http://127.0.0.1:9"}, ["could not be fetched", "refused"]),
                ((song,), {"script": damaged / "separate.py"}, ["not whole"]),
                ((song,), {"prefix": ["prlimit", "--fsize=200000"]}, ["no room"]),
                ((song,), {"prefix": ["prlimit", "--as=1200000000"]}, ["memory"]),
        ):
            with self.subTest(words):
                self.assert_fails(self.run_to_end(*arguments, **options), *words)
                self.assertEqual(os.listdir(self.folder), ["mine.txt"])
        new = self.folder / "new" / "newer"
        self.assert_fails(self.run_to_end("/nowhere/a.mp3", new))
        self.assertEqual(os.listdir(self.folder), ["mine.txt"])

    def test_a_disk_that_is_full_while_it_decodes_is_named(self):
        song = Song(self.make_song(seconds=1))
        full = os.open("/dev/full", os.O_RDWR)
        self.addCleanup(os.close, full)
        with self.assertRaisesRegex(OSError, "No space"):
            song.decode(full)

    def test_nobody_need_listen(self):
        read, write = os.pipe()
        self.addCleanup(os.close, write)
        os.close(read)
        Report(write).message("Separating…")

    def on_a_disk_of(self, size):
        """What to put before a command for its stems to lie on a disk of their own."""
        if subprocess.run(["unshare", "--mount", "true"], capture_output=True).returncode != 0:
            self.skipTest("mounting is not allowed here")
        return ["unshare", "--mount", "sh", "-c", f'mount -t tmpfs -o size={size} none "{self.folder}" && exec "$@"', "sh"]

    def test_a_small_disk_is_refused_before_the_work(self):
        song, prefix = self.make_song(seconds=5), self.on_a_disk_of("50m")
        self.assert_fails(self.run_to_end(song, prefix=prefix), "78 MB", "52 MB")
        # Where there is no player to say how long it is, the song is decoded before, into the place of the sixth.
        self.assert_fails(self.run_to_end(song, prefix=prefix, script=SOURCE_SCRIPT), "76 MB", "51 MB")

    def until_it_separates(self, song, **options):
        process = self.start(song, **options)
        for clean in (process.wait, process.kill, process.stdout.close, process.stderr.close):
            self.addCleanup(clean)
        for line in process.stderr:
            if b"Separating" in line:
                return process
        self.fail(process.stdout.read())

    def test_a_disk_that_others_fill_meanwhile_is_named(self):
        process = self.until_it_separates(self.make_song(seconds=60), prefix=self.on_a_disk_of("200m"))
        seen = f"/proc/{process.pid}/root{self.folder}"
        # The separation takes of the same room meanwhile: until nothing is left for either.
        with open(f"{seen}/mine", "wb", buffering=0) as mine, self.assertRaisesRegex(OSError, "No space"):
            while True:
                mine.write(bytes(1 << 20))
        folder = os.open(seen, os.O_RDONLY)
        self.addCleanup(os.close, folder)
        output, rest = (part.decode() for part in process.communicate())
        self.assert_fails((process.returncode, output, rest), "no room", "No space")
        self.assertEqual(os.listdir(folder), ["mine"])

    def test_an_end_before_its_time_leaves_nothing(self):
        song = self.make_song(rate=48000, seconds=120)
        for number, status, who in ((signal.SIGTERM, 143, "supervisor"), (signal.SIGINT, 130, "group"), (signal.SIGKILL, 1, "worker"),
                                    (signal.SIGKILL, -9, "supervisor")):
            with self.subTest(number=number, who=who):
                process = self.until_it_separates(song)
                # Another one has to stay away, and to leave what is being made alone.
                self.assert_fails(self.run_to_end(song), "already")
                self.assertEqual(len(list(self.folder.glob(".separating-*/*.wav"))), 6)
                worker, = children(process.pid)
                os.kill({"supervisor": process.pid, "group": -process.pid, "worker": worker}[who], number)
                output = process.stdout.read().decode()
                self.assertEqual(process.wait(), status)
                self.assertEqual("lack of memory" in output, who == "worker", output)
                self.assertTrue(ends(process.pid, seconds=60), "something runs on")
                if status == -9:
                    # Its header is the last that is written.
                    unfinished, = self.folder.glob(".separating-*/vocals.wav")
                    self.assertNotEqual(unfinished.read_bytes()[:4], b"RIFF", "the worker has gone on")
                    self.assert_fails(self.run_to_end("/nowhere/a.mp3"))
                self.assertEqual(os.listdir(self.folder), [])

    def test_a_resampler_that_dies_is_named(self):
        # Five write stems; the last that is started reads the song.
        for place, words in ((0, "A stem could not"), (5, "The song could not")):
            with self.subTest(words):
                process = self.until_it_separates(self.make_song(rate=48000, seconds=60))
                worker, = children(process.pid)
                end = time.monotonic() + 60
                while len(children(worker)) < 6 and time.monotonic() < end:
                    time.sleep(0.01)
                os.kill(children(worker)[place], signal.SIGKILL)
                output, rest = (part.decode() for part in process.communicate())
                self.assert_fails((process.returncode, output, rest), words)
                self.assertEqual(os.listdir(self.folder), [])

    def test_a_song_that_changes_meanwhile_is_not_separated(self):
        song = self.make_song(seconds=60)
        process = self.until_it_separates(song)
        os.utime(song, (1, 1))
        output, rest = (part.decode() for part in process.communicate())
        self.assert_fails((process.returncode, output, rest), "has changed")
        self.assertEqual(os.listdir(self.folder), [])


class FetchTest(unittest.TestCase):
    # Its last byte is one that the tests can make a wrong one of.
    CONTENT = os.urandom(2_999_999) + b"!"

    def setUp(self):
        test = self
        # For each request: how many bytes come, and whether the place that is asked for is heeded.
        self.manners = []
        self.places = []

        class Handler(BaseHTTPRequestHandler):
            def do_GET(self):
                place = int(self.headers["Range"].removeprefix("bytes=").removesuffix("-"))
                test.places.append(place)
                count, heeds = test.manners.pop(0) if test.manners else (None, True)
                self.send_response(206 if heeds else 200)
                content = test.CONTENT[place if heeds else 0:]
                self.send_header("Content-Length", str(len(content)))
                self.end_headers()
                self.wfile.write(content[:count])

            def log_message(self, *_):
                pass

        server = HTTPServer(("127.0.0.1", 0), Handler)
        threading.Thread(target=server.serve_forever, daemon=True).start()
        self.addCleanup(server.server_close)
        self.addCleanup(server.shutdown)
        self.address = f"http://127.0.0.1:{server.server_address[1]}/a.safetensors"
        keeper = tempfile.TemporaryDirectory()
        self.addCleanup(keeper.cleanup)
        self.folder = Path(keeper.name) / "models"
        self.file = self.folder / "a.safetensors"

    def fetch(self, content=CONTENT):
        with open(os.devnull, "w") as nobody:
            return Weights(self.address, len(content), hashlib.sha256(content).hexdigest()).file(str(self.folder), Report(nobody.fileno()))

    def test_what_is_cut_off_goes_on_from_there(self):
        self.manners = [(1_000_000, True), (0, True)]
        with self.assertRaisesRegex(Failure, "connection"):
            self.fetch()
        self.assertFalse(self.file.exists())
        self.manners = [(500_000, True), (2_000_000, False)]
        self.assertEqual(self.fetch(), str(self.file))
        # At 1.5 MB the whole came once more instead of the rest, and was cut off as well.
        self.assertEqual(self.places, [0, 1_000_000, 1_000_000, 1_500_000, 2_000_000])
        self.assertEqual(self.file.read_bytes(), self.CONTENT)
        self.fetch()
        self.assertEqual(len(self.places), 5)
        self.assertEqual(os.listdir(self.folder), ["a.safetensors"])

    def test_two_that_need_it_fetch_it_once(self):
        with ThreadPoolExecutor(2) as both:
            self.assertEqual(list(both.map(lambda _: self.fetch(), range(2))), 2 * [str(self.file)])
        self.assertEqual(self.places, [0])
        self.assertEqual(self.file.read_bytes(), self.CONTENT)

    def test_a_folder_with_several_models(self):
        self.folder.mkdir()
        for name in ("a.safetensors", FILE, "z.safetensors"):
            (self.folder / name).touch()
        with unittest.mock.patch.dict(os.environ, {FOLDER_VARIABLE: str(self.folder)}):
            self.assertEqual(model_file(None), str(self.folder / FILE))

    def test_what_is_not_the_model_is_never_used(self):
        with self.assertRaisesRegex(Failure, "not what it should be"):
            self.fetch(self.CONTENT[:-1] + b"?")
        self.assertFalse(self.file.exists())
        self.assertEqual(Path(f"{self.file}.part").stat().st_size, 0)
        self.file.write_bytes(self.CONTENT[:-1] + b"?")
        self.fetch()
        self.assertEqual(self.file.read_bytes(), self.CONTENT)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[2:]], verbosity=2)
