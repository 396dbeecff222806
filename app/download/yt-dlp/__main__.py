"""Where the zip application `yt-dlp` beside the program begins. It runs yt-dlp with the arguments that it is given and adds what the
program needs around it and no argument can say:

- on standard error, lines that begin with "quillet-progress": how far the download is (PROGRESS below);
- what is unfinished lies in a folder of its own, so that no file of the user's is taken for a download or replaced. If it is cut
  short, the same address goes on from there the next time; of two at once, one waits for the other. A finished song gets a name that
  no other file has, unless it is the same file once more;
- the folder is taken letter by letter, whatever percent and dollar signs are in its name, and names are cut to what a file system
  can hold;
- options of the user's own for this program ("yt-dlp.conf" in its directory of settings), and no other configuration;
- an end of everything that has been started when the program ends, or the tool that has started this one;
- a sentence for every failure, on standard error.
"""

import contextlib
import ctypes
import fcntl
import filecmp
import hashlib
import itertools
import os
import shutil
import signal
import sys
import time
from pathlib import Path


def sentence(reason):
    """What an exception says, on one line."""
    if isinstance(reason, OSError) and reason.strerror:
        words = reason.strerror if reason.filename is None else f"{reason.strerror}: {os.fsdecode(reason.filename)}"
    else:
        words = f"{type(reason).__name__}: {reason}"
    return " ".join(words.split())


# For what nobody has foreseen, from here on: the interpreter's own words are no one's to read but ours.
sys.excepthook = lambda _, reason, __: print(f"ERROR: {sentence(reason)}", file=sys.stderr)

import yt_dlp
from yt_dlp.postprocessor.common import PostProcessor
from yt_dlp.utils import PostProcessingError

# "quillet-progress 4096 10240": bytes received and expected (0 if unknown); "quillet-progress converting".
PROGRESS = "quillet-progress"
PROGRESS_SECONDS = 0.2
# Names may have 255 bytes; this leaves room for ".f140.webm.part-Frag1000.part" and its like.
LONGEST_NAME_BYTES = 200
# Of the kernel's prctl: which signal a process gets when its parent has ended.
PR_SET_PDEATHSIG = 1
TITLE_AND_EXTENSION = "/%(title)s.%(ext)s"


def tell(what):
    try:
        print(PROGRESS, what, file=sys.stderr, flush=True)
    except OSError:
        pass  # nobody listens any more


class Placement(PostProcessor):
    """Moves a finished song to `folder`."""

    def __init__(self, folder):
        super().__init__()
        self._folder = folder

    def run(self, info):
        try:
            info["filepath"] = str(self._place(Path(info["filepath"])))
        except OSError as reason:
            raise PostProcessingError(sentence(reason)) from reason
        info["__finaldir"] = str(self._folder)
        return [], info

    def _place(self, finished):
        for number in itertools.count(1):
            name = finished.name if number == 1 else f"{finished.stem} ({number}){finished.suffix}"
            place = self._folder / name
            try:
                place.open("x").close()
            except FileExistsError:
                if not place.is_file() or not filecmp.cmp(finished, place, shallow=False):
                    continue
                finished.unlink()
                return place
            try:
                os.replace(finished, place)
            except OSError:
                place.unlink()
                raise
            return place


class Downloader(yt_dlp.YoutubeDL):
    final_folder = None

    def __init__(self, *arguments, **options):
        super().__init__(*arguments, **options)
        self._told = -PROGRESS_SECONDS
        self.add_progress_hook(self._tell_received)
        self.add_postprocessor_hook(self._tell_step)
        if self.final_folder is not None:
            self.add_post_processor(Placement(self.final_folder), when="post_process")

    def _tell_received(self, state):
        now = time.monotonic()
        if state["status"] == "downloading" and now - self._told >= PROGRESS_SECONDS:
            self._told = now
            expected = state.get("total_bytes") or state.get("total_bytes_estimate") or 0
            tell(f"{int(state.get('downloaded_bytes') or 0)} {int(expected)}")

    def _tell_step(self, state):
        if state["status"] == "started" and state["postprocessor"] == "ExtractAudio":
            tell("converting")

    @staticmethod
    def _outtmpl_expandpath(template):
        return template  # a "$" or "~" in the folder's name is part of its name

    def prepare_filename(self, *arguments, **options):
        path = super().prepare_filename(*arguments, **options)
        if not path:
            return path
        folder, name = os.path.split(path)
        stem, extension = os.path.splitext(name)
        stem = os.fsencode(stem)[:LONGEST_NAME_BYTES].decode(sys.getfilesystemencoding(), "ignore")
        return os.path.join(folder, stem + extension)


def settings_folder():
    """As the program finds it."""
    chosen = os.environ.get("XDG_CONFIG_HOME", "")
    return (Path(chosen) if os.path.isabs(chosen) else Path.home() / ".config") / "quillet"


def own_arguments(program_folder):
    # One song is asked for: of a page with several, the first.
    own = ["--encoding", "utf-8", "--no-warnings", "--playlist-items", "1"]
    options = settings_folder() / "yt-dlp.conf"
    if options.is_file():
        own += ["--config-locations", str(options)]
    javascript = program_folder / "deno"
    if javascript.exists():
        own += ["--js-runtimes", f"deno:{javascript}"]
    return own


def remove_if_empty(folders):
    """Each lies in the next: the first that is not empty keeps the others."""
    with contextlib.suppress(OSError):
        for folder in folders:
            folder.rmdir()


def claim(folder):
    """Makes the folder, and waits until no other download uses it. What is returned holds the claim until it is closed."""
    while True:
        folder.mkdir(parents=True, exist_ok=True)
        try:
            claimed = os.open(folder, os.O_RDONLY)
        except FileNotFoundError:
            continue  # whoever had it has just removed it
        with contextlib.suppress(OSError):  # not every file system can
            fcntl.flock(claimed, fcntl.LOCK_EX)
        try:
            if os.path.samestat(os.fstat(claimed), folder.stat()):
                return claimed
        except FileNotFoundError:
            pass  # whoever had it has removed it
        os.close(claimed)


def take_everything_along():
    """Has everything end when this is asked to, or when the tool that has started it ends in any way."""
    tool = os.getppid()
    # The program gives the tools a process group of their own, which that tool leads.
    is_group_ours = os.getpgrp() == tool

    def end(*_):
        if is_group_ours:
            os.killpg(0, signal.SIGKILL)
        os._exit(128 + signal.SIGTERM)

    def end_without_tool(*_):
        # The signal also comes when no more than a thread of the tool has ended.
        if os.getppid() != tool:
            end()

    signal.signal(signal.SIGTERM, end)
    signal.signal(signal.SIGUSR1, end_without_tool)
    with contextlib.suppress(OSError, AttributeError):  # not every kernel can
        ctypes.CDLL(None).prctl(PR_SET_PDEATHSIG, signal.SIGUSR1)
    end_without_tool()


def run(arguments):
    """yt-dlp's exit status."""
    try:
        # Given as a list, no configuration of the user's or the system's is read.
        yt_dlp.main(arguments)
    except SystemExit as end:
        return end.code or 0
    return 0


def main():
    if sys.getfilesystemencoding().lower() != "utf-8":
        os.execv(sys.executable, [sys.executable, "-X", "utf8", *sys.argv])
    take_everything_along()
    yt_dlp.YoutubeDL = Downloader
    own, arguments = own_arguments(Path(sys.argv[0]).resolve().parent), sys.argv[1:]
    place = arguments.index("-o") + 1 if "-o" in arguments[:-1] else None
    if place is None or not arguments[place].endswith(TITLE_AND_EXTENSION):
        return run(own + arguments)
    Downloader.final_folder = Path(arguments[place].removesuffix(TITLE_AND_EXTENSION) or "/")
    unfinished = Downloader.final_folder / f".quillet-{hashlib.sha256(arguments[-1].encode()).hexdigest()[:12]}"
    arguments[place] = str(unfinished).replace("%", "%%") + TITLE_AND_EXTENSION
    missing = [folder for folder in (Downloader.final_folder, *Downloader.final_folder.parents) if not os.path.exists(folder)]
    try:
        claimed = claim(unfinished)
    except OSError as reason:
        remove_if_empty(missing)
        sys.exit(f"ERROR: {reason.strerror}: {Downloader.final_folder}")
    status = None
    try:
        status = run(own + arguments)
    finally:
        if status == 0:
            shutil.rmtree(unfinished, ignore_errors=True)
        else:
            remove_if_empty([unfinished, *missing])
        os.close(claimed)
    return status


if __name__ == "__main__":
    sys.exit(main())
