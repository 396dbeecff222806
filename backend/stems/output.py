"""The folder that takes the stems. One separation at a time has it; what it makes lies aside until all of it is whole."""

import contextlib
import fcntl
import os
import shutil
import tempfile

from . import KEYS
from .report import Failure, shown

ASIDE = b".separating-"


def song_name(path):
    """The last component of a path (bytes) without its extension, as the program finds it: ".mp3" has none."""
    name = os.path.basename(path)
    dot = name.rfind(b".")
    stem = name[:dot] if dot > 0 else name
    # "..mp3" would otherwise name the folder itself.
    return name if stem in (b".", b"..") else stem


def _sync(folder):
    descriptor = os.open(folder, os.O_RDONLY)
    try:
        os.fsync(descriptor)
    finally:
        os.close(descriptor)


class OutputFolder:
    """Use it in a with statement: while it is entered the folder is claimed, and `aside` is an empty folder in it. What is there is as
    it was afterwards, but for what has been published."""

    def __init__(self, path):
        self._path = os.path.abspath(path)
        self._claim = None
        self._made = []
        self.aside = None

    def __enter__(self):
        try:
            self._make(self._path)
            self._claim = os.open(self._path, os.O_RDONLY | os.O_DIRECTORY)
            self._lock()
            self._sweep()
            self.aside = tempfile.mkdtemp(prefix=ASIDE, dir=self._path)
        except OSError as reason:
            self.__exit__()
            raise Failure(f"The stems cannot be written to {shown(self._path)} ({reason.strerror}). Choose another folder for them, or "
                          "make this one writable.") from reason
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        if self.aside is not None:
            shutil.rmtree(self.aside, ignore_errors=True)
        with contextlib.suppress(OSError):  # it is not empty: there are stems in it
            for folder in self._made:
                os.rmdir(folder)
        if self._claim is not None:
            os.close(self._claim)

    def publish(self, model, song):
        """Gives the six files of `aside` their place. Returns what is where (key to path)."""
        try:
            return self._publish(model, song)
        except OSError as reason:
            raise Failure(f"The stems cannot be put into {shown(self._path)} ({reason.strerror}). See whether that folder is still there "
                          "and writable, and try again.") from reason

    def _publish(self, model, song):
        parent = os.path.join(self._path, model.encode())
        target = os.path.join(parent, song_name(song))
        whole = os.path.join(self.aside, b"whole")
        os.mkdir(whole)
        for key in KEYS:
            name = key.encode() + b".wav"
            os.rename(os.path.join(self.aside, name), os.path.join(whole, name))
        _sync(whole)
        self._make(parent)
        old = os.path.join(self.aside, b"old")
        with contextlib.suppress(FileNotFoundError):
            os.rename(target, old)
        try:
            os.rename(whole, target)
        except OSError:
            with contextlib.suppress(FileNotFoundError):
                os.rename(old, target)
            raise
        _sync(parent)
        # JSON is Unicode, and a path need not be. What cannot be said in it becomes a replacement character: the program finds these
        # files by the folder, the song's name and the keys as well, all of which it knows to the byte.
        return {key: os.path.join(target, key.encode() + b".wav").decode("utf-8", "replace") for key in KEYS}

    def _make(self, folder):
        """With its parents; remembers what was not there, the innermost first."""
        missing = []
        while not os.path.lexists(folder):
            missing.append(folder)
            folder = os.path.dirname(folder)
        for folder in reversed(missing):
            with contextlib.suppress(FileExistsError):
                os.mkdir(folder)
                self._made.insert(0, folder)

    def _lock(self):
        try:
            fcntl.flock(self._claim, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except BlockingIOError as reason:
            raise Failure("This song is being separated already, by another window or program; wait until it is done there.") from reason
        except OSError:
            pass  # not every file system can

    def _sweep(self):
        """What a separation that was killed has left."""
        for name in os.listdir(self._path):
            if name.startswith(ASIDE):
                shutil.rmtree(os.path.join(self._path, name), ignore_errors=True)
