"""The steps of a separation. They take much memory and may be killed for it, so they run in a process of their own."""

import contextlib
import errno
import os
import signal

from . import KEYS, wav
from .report import NO_MEMORY, Failure, Report, amount
from .song import ResampledInput, ResampledOutput, Song
from .weights import model_file

BLOCK_FRAMES = 1 << 17
# Beyond the stems, for what else grows on that disk meanwhile.
SPARE_BYTES = 64 << 20
NO_ROOM = (errno.ENOSPC, errno.EDQUOT, errno.EFBIG)
OUT_OF_MEMORY_WORDS = ("allocate memory", "out of memory", "bad_alloc", "failed to map")
# Where the separation stands when the song is decoded, and when its segments are done; they are nearly all of the work.
DECODED, SEPARATED = 0.01, 0.98


def work(song, folder):
    """Makes the six files in that folder. The exit status; a failure is said on standard output."""
    answer, report = os.dup(1), Report(os.dup(2))
    # What libraries have to say is not for the user.
    nobody = os.open(os.devnull, os.O_WRONLY)
    for descriptor in (1, 2):
        os.dup2(nobody, descriptor)
    for number in (signal.SIGTERM, signal.SIGINT):
        signal.signal(number, signal.SIG_IGN)  # the supervisor ends this
    _step_back()
    try:
        _Separation(Song(song), folder, report).run()
        return 0
    except Exception as reason:  # noqa: BLE001 (all of them are said)
        os.write(answer, _sentence(reason).encode("utf-8", "replace"))
        return 1


def _step_back():
    """The player goes first: for the processor, and when memory runs out."""
    os.nice(10)
    with contextlib.suppress(OSError), open("/proc/self/oom_score_adj", "w") as score:
        score.write("1000")


def _sentence(reason):
    words = " ".join(str(reason).split())
    if isinstance(reason, Failure):
        return words
    if isinstance(reason, MemoryError) or any(hint in words for hint in OUT_OF_MEMORY_WORDS):
        return NO_MEMORY
    if isinstance(reason, ImportError):
        return f"The dependencies of the separation are not whole ({words}). Remove them in the settings, and try again."
    if isinstance(reason, OSError) and reason.errno in NO_ROOM:
        return f"There is no room left for the stems ({reason.strerror}). Make room where they are kept, and try again."
    if isinstance(reason, OSError):
        return f"The separation could not go on ({reason.strerror or words}). Try again."
    return f"The separation has failed ({type(reason).__name__}: {words}). Try again."


class _Separation:
    def __init__(self, song, folder, report):
        self._song = song
        self._folder = folder
        self._report = report

    def run(self):
        self._report.message("Opening the song…")
        self._check_room(len(KEYS))
        weights = model_file(self._report)
        # The song lies where "other" will be, which is made of it.
        song_file = wav.create(self._path("other"))
        self._report.message("Decoding the song…")
        self._song.decode(song_file)
        self._check_room(len(KEYS) - 1)
        self._report.fraction(DECODED)
        stems = self._separate(weights)
        self._report.message("Writing the stems…")
        self._leave_the_rest(song_file, stems)
        self._song.check_unchanged()
        self._report.fraction(1)

    def _path(self, key):
        return os.path.join(self._folder, key.encode() + b".wav")

    def _check_room(self, stems):
        if self._song.frames is None:
            return
        needed = stems * (wav.HEADER_BYTES + self._song.frames * wav.FRAME_BYTES) + SPARE_BYTES
        disk = os.statvfs(self._folder)
        available = disk.f_bavail * disk.f_frsize
        if available < needed:
            raise Failure(f"The stems take {amount(needed)}, and there are {amount(available)} where they are kept. Make room there, and "
                          "try again.")

    def _level(self):
        from .level import MODEL_RATE, Level, samples
        level = Level()
        with ResampledInput(self._path("other"), self._song.sample_rate, MODEL_RATE) as sound:
            while data := sound.read(BLOCK_FRAMES):
                level.add(samples(data))
            sound.check_complete()
        return level

    def _separate(self, weights):
        """The descriptors of the five stems that the model makes."""
        level = self._level()
        self._report.message("Loading the model…")
        # Only now: it takes seconds and much memory, and whatever is missing is to be said before.
        from . import model as networks
        model = networks.load(weights)
        outputs = {key: ResampledOutput(self._path(key), networks.MODEL_RATE, self._song.sample_rate) for key in KEYS if key != "other"}
        self._report.message("Separating…")

        def write(made, done):
            self._song.check_unchanged()
            for key, output in outputs.items():
                output.write(made[key])
            self._report.fraction(DECODED + (SEPARATED - DECODED) * done)

        with ResampledInput(self._path("other"), self._song.sample_rate, networks.MODEL_RATE) as sound:
            networks.separate(model, sound.read, level, write)
            sound.check_complete()
        for output in outputs.values():
            output.finish(self._song.frames)
        return [output.descriptor for output in outputs.values()]

    def _leave_the_rest(self, song_file, stems):
        """Makes "other" of the song: together the six are the song, including all that the model knows nothing of."""
        import numpy
        size = BLOCK_FRAMES * wav.FRAME_BYTES
        end = wav.HEADER_BYTES + self._song.frames * wav.FRAME_BYTES
        for place in range(wav.HEADER_BYTES, end, size):
            rest = numpy.frombuffer(os.pread(song_file, size, place), numpy.float32).astype(numpy.float64)
            for stem in stems:
                rest -= numpy.frombuffer(os.pread(stem, size, place), numpy.float32)
            wav.write(song_file, rest.astype(numpy.float32), place)
            self._report.fraction(SEPARATED + (1 - SEPARATED) * (place - wav.HEADER_BYTES) / end)
        for file in (song_file, *stems):
            os.fsync(file)
