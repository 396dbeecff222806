"""A song's sound: how long it is, decoding it, and other sample rates, by the player's own word and by ffmpeg."""

import json
import os
import stat
import subprocess

from . import wav
from .processes import start, tool
from .report import Failure, shown

# soxr at this precision is exact to -148 dB there and back, and stays aligned.
RESAMPLER = "resampler=soxr:precision=28"


def _required(name):
    found = tool(name)
    if found is None:
        raise Failure(f"The tool {name} is missing. Install it (Debian's package ffmpeg), and try again.")
    return found


def _answer(command):
    """(status, standard output, standard error)"""
    process = start(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    output, errors = process.communicate()
    return process.returncode, output, errors.decode("utf-8", "replace").strip()


class Song:
    """`frames` is what the player says; None where there is no player, and the decoding counts."""

    def __init__(self, path):
        self.path = os.path.abspath(path)
        self._identity = self._look()
        self.frames, self.sample_rate, self.channels = self._examine()

    def _look(self):
        try:
            found = os.stat(self.path)
            if not stat.S_ISREG(found.st_mode):
                raise Failure(f"{shown(self.path)} is not a file. Open a song, and separate that.")
            with open(self.path, "rb"):
                return found.st_dev, found.st_ino, found.st_size, found.st_mtime_ns
        except OSError as reason:
            raise Failure(f"The song {shown(self.path)} cannot be read ({reason.strerror}). Open it again, and try again.") from reason

    def check_unchanged(self):
        if self._look() != self._identity:
            raise Failure(f"The song {shown(self.path)} has changed while it was being separated. Try again.")

    def _examine(self):
        player = tool("quillet")
        if player is not None:
            status, output, errors = _answer([player, b"info", b"--json", self.path])
            if status != 0:
                raise Failure(errors.removeprefix("quillet: ") or f"The song {shown(self.path)} cannot be opened.")
            facts = json.loads(output)
            return facts["frames"], facts["sampleRate"], facts["channels"]
        _, output, _ = _answer([_required("ffprobe"), "-v", "error", "-select_streams", "a:0", "-show_entries",
                                "stream=sample_rate,channels", "-of", "json", b"file:" + self.path])
        streams = json.loads(output or b"{}").get("streams")
        if not streams:
            raise Failure(f"There is no sound in {shown(self.path)}. Open another song.")
        return None, int(streams[0]["sample_rate"]), int(streams[0]["channels"])

    def _mixes(self):
        """The filters that make stereo of it, to be tried in turn, as the player does it: mono is doubled, more channels are mixed so that
        they cannot clip, and those that are no usual arrangement all alike."""
        if self.channels <= 2:
            return ["anull" if self.channels == 2 else "pan=stereo|c0=c0|c1=c0"]
        # Without the second filter it is not the first that mixes.
        usual = f"aresample={self.sample_rate}:rematrix_maxval=1,aformat=channel_layouts=stereo"
        alike = "+".join(f"{1 / self.channels}*c{channel}" for channel in range(self.channels))
        # Whole numbers would be rounded up beyond full scale.
        return [usual, f"aformat=sample_fmts=flt,pan=stereo|c0={alike}|c1={alike}"]

    def decode(self, descriptor):
        """Writes the song where the descriptor stands: 32-bit floats, stereo, at its own rate and as long as the player has it. What
        can be decoded of a damaged song is what the player plays of it."""
        for mix in self._mixes():
            process = start([_required("ffmpeg"), "-nostdin", "-v", "quiet", "-i", b"file:" + self.path, "-map", "0:a:0", "-af",
                             f"{mix},aresample={self.sample_rate}:{RESAMPLER}", "-f", "f32le", "pipe:1"],
                            stdout=descriptor, stderr=subprocess.DEVNULL)
            status = process.wait()
            decoded = wav.frames_in(descriptor)
            if decoded > 0:
                break
        if status != 0:
            wav.check_room(descriptor)
        if decoded == 0:
            raise Failure(f"The sound of {shown(self.path)} cannot be decoded. See whether it plays, or try another copy of it.")
        self.frames = self.frames or decoded
        wav.finish(descriptor, self.sample_rate, self.frames)


def _resampling(from_rate, to_rate):
    return [_required("ffmpeg"), "-nostdin", "-v", "quiet", "-f", "f32le", "-ar", str(from_rate), "-ac", "2", "-i", "pipe:0", "-af",
            f"aresample={to_rate}:{RESAMPLER}", "-f", "f32le", "pipe:1"]


class ResampledInput:
    """Reads the sound of a WAV file of ours at another rate."""

    def __init__(self, path, rate, wanted_rate):
        self._process = None
        self._source = open(path, "rb")
        # A child reads from where the descriptor stands.
        self._source.seek(wav.HEADER_BYTES)
        if rate != wanted_rate:
            self._process = start(_resampling(rate, wanted_rate), stdin=self._source, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._source.close()
        if self._process is not None:
            self._process.stdout.close()
            self._process.kill()
            self._process.wait()

    def read(self, frames):
        """Bytes of so many frames; fewer only at the end."""
        stream = self._source if self._process is None else self._process.stdout
        return stream.read(frames * wav.FRAME_BYTES)

    def check_complete(self):
        """To be asked at the end: whether that was all, or the resampling has failed."""
        if self._process is not None and self._process.wait() != 0:
            raise Failure("The song could not be resampled (ffmpeg has failed). Try again.")


class ResampledOutput:
    """Writes sound to a WAV file of ours, which has another rate."""

    def __init__(self, path, rate, file_rate):
        self._rate = file_rate
        self.descriptor = wav.create(path)
        self._place = wav.HEADER_BYTES
        self._process = None
        if rate != file_rate:
            self._process = start(_resampling(rate, file_rate), stdin=subprocess.PIPE, stdout=self.descriptor, stderr=subprocess.DEVNULL)

    def write(self, data):
        if self._process is None:
            wav.write(self.descriptor, data, self._place)
            self._place += len(data)
            return
        try:
            self._process.stdin.write(data)
        except BrokenPipeError:
            self._fail()

    def finish(self, frames):
        if self._process is not None:
            try:
                self._process.stdin.close()
            except BrokenPipeError:
                pass  # its status says so too
            if self._process.wait() != 0:
                self._fail()
        wav.finish(self.descriptor, self._rate, frames)

    def _fail(self):
        wav.check_room(self.descriptor)
        raise Failure("A stem could not be resampled (ffmpeg has failed). Try again.")
