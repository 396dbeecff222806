"""The model's file: fetched when it is first needed, into the environment, so that it is removed with it; its digest is checked every
time, since a file with a few bits turned loads without a word."""

import contextlib
import fcntl
import hashlib
import http.client
import os
import sys
import urllib.error
import urllib.request

from .report import Failure, amount

FILE = "5c90dfd2.safetensors"
ADDRESS = f"https://huggingface.co/adefossez/HTDemucs-6s/resolve/3c5ee475be622df764938de97e4281a7b07ffa58/{FILE}"
SIZE = 54_885_744
SHA256 = "d2a1745f0744721f6b8ca5bf469b67c651ea5ed1b52998cab033b2158609d411"
# Names a folder with a .safetensors file to use instead: for machines without a network.
FOLDER_VARIABLE = "QUILLET_STEM_MODEL"
TIMEOUT_SECONDS = 30
BLOCK_BYTES = 1 << 18


def model_file(report):
    folder = os.environ.get(FOLDER_VARIABLE)
    if folder:
        return _file_in(folder)
    return Weights(ADDRESS, SIZE, SHA256).file(os.path.join(sys.prefix, "models"), report)


def _file_in(folder):
    try:
        names = sorted(name for name in os.listdir(folder) if name.endswith(".safetensors"))
    except OSError as reason:
        raise Failure(f"The folder “{folder}”, which {FOLDER_VARIABLE} names, cannot be read ({reason.strerror}). Correct or unset "
                      "the variable, and start the program again.") from reason
    if not names:
        raise Failure(f"There is no .safetensors file in “{folder}”, which {FOLDER_VARIABLE} names. Put {FILE} there and try again.")
    return os.path.join(folder, FILE if FILE in names else names[0])


class Weights:
    def __init__(self, address, size, digest):
        self._address = address
        self._size = size
        self._digest = digest

    def file(self, folder, report):
        """The file in that folder, whole; it goes on where an earlier attempt has ended."""
        target = os.path.join(folder, self._address.rpartition("/")[2])
        try:
            os.makedirs(folder, exist_ok=True)
            with open(target + ".part", "ab") as part:
                with contextlib.suppress(OSError):  # not every file system can
                    # Another separation may be fetching it.
                    fcntl.flock(part, fcntl.LOCK_EX)
                if not self._is_whole(target):
                    self._fetch(part, report)
                    if not self._is_whole(part.name):
                        part.truncate(0)
                        raise Failure("The model that was fetched is not what it should be. Try again, over another network if need "
                                      "be.")
                    os.fsync(part.fileno())
                    os.rename(part.name, target)
        except OSError as reason:
            raise Failure(f"The model cannot be kept in “{folder}” ({reason.strerror}). Make room there, and try again.") from reason
        with contextlib.suppress(FileNotFoundError):
            os.unlink(target + ".part")
        return target

    def _is_whole(self, path):
        try:
            with open(path, "rb") as file:
                return os.fstat(file.fileno()).st_size == self._size and hashlib.file_digest(file, "sha256").hexdigest() == self._digest
        except FileNotFoundError:
            return False

    def _fetch(self, part, report):
        while (begin := part.tell()) < self._size:
            reason = self._fetch_more(part, begin, report)
            # As long as something comes, however little.
            if part.tell() <= begin and part.tell() < self._size and reason is not None:
                raise Failure(f"The model ({amount(self._size)}) could not be fetched ({reason}). See to the network, and try again; "
                              "it goes on from there.")

    def _fetch_more(self, part, begin, report):
        """What stood in the way of the rest, or None."""
        try:
            request = urllib.request.Request(self._address, headers={"Range": f"bytes={begin}-", "User-Agent": "Quillet"})
            with urllib.request.urlopen(request, timeout=TIMEOUT_SECONDS) as answer:
                if answer.status != http.client.PARTIAL_CONTENT:
                    part.truncate(0)
                    part.seek(0)
                for data in _blocks(answer):
                    _keep(part, data)
                    report.message(f"Fetching the model: {amount(part.tell())} of {amount(self._size)}")
                    if part.tell() >= self._size:
                        break
        except _Unwritable as unwritable:
            raise unwritable.reason from unwritable
        except (OSError, http.client.HTTPException) as reason:
            return _words(reason)
        return "the connection was closed"


class _Unwritable(Exception):
    def __init__(self, reason):
        super().__init__(reason)
        self.reason = reason


def _keep(part, data):
    # Errors of the network are OSErrors as well.
    try:
        part.write(data)
        part.flush()
    except OSError as reason:
        raise _Unwritable(reason) from reason


def _blocks(answer):
    while data := answer.read(BLOCK_BYTES):
        yield data


def _words(reason):
    reason = reason.reason if isinstance(reason, urllib.error.URLError) and not isinstance(reason, urllib.error.HTTPError) else reason
    words = getattr(reason, "strerror", None) or str(reason) or type(reason).__name__
    return " ".join(words.split()).rstrip(".")
