"""Where the zip application `yt-dlp` beside the program begins. It runs yt-dlp with the arguments that it is given and adds what the
program needs around it and no argument can say:

- on standard error, lines that begin with "quillet-progress": how far the download is (PROGRESS below);
- what is unfinished lies in a folder of its own, so that no file of the user's is taken for a download or replaced. If it is cut
  short, the same address goes on from there the next time; of two at once, one waits for the other. A finished song gets a name that
  no other file has, unless it is the same file once more;
- the folder is taken letter by letter, whatever percent and dollar signs are in its name, and names are cut to what a file system
  can hold;
- options of the user's own for this program ("yt-dlp.conf" in its directory of settings), and no other configuration;
- an end of everything that has been started when the program ends.
"""

import contextlib
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

import yt_dlp
from yt_dlp.postprocessor.common import PostProcessor

# "quillet-progress 4096 10240": bytes received and expected (0 if unknown); "quillet-progress converting".
PROGRESS = "quillet-progress"
PROGRESS_SECONDS = 0.2
# Names may have 255 bytes; this leaves room for ".f140.webm.part-Frag1000.part" and its like.
LONGEST_NAME_BYTES = 200
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
        finished = Path(info["filepath"])
        for number in itertools.count(1):
            name = finished.name if number == 1 else f"{finished.stem} ({number}){finished.suffix}"
            place = self._folder / name
            try:
                place.open("x").close()
            except FileExistsError:
                if not place.is_file() or not filecmp.cmp(finished, place, shallow=False):
                    continue
                finished.unlink()
            else:
                os.replace(finished, place)
            break
        info["filepath"] = str(place)
        info["__finaldir"] = str(self._folder)
        return [], info


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


def claim(folder):
    """Makes the folder, and waits until no other download uses it. What is returned holds the claim until it is closed."""
    while True:
        folder.mkdir(parents=True, exist_ok=True)
        claimed = os.open(folder, os.O_RDONLY)
        with contextlib.suppress(OSError):  # not every file system can
            fcntl.flock(claimed, fcntl.LOCK_EX)
        try:
            if os.path.samestat(os.fstat(claimed), folder.stat()):
                return claimed
        except FileNotFoundError:
            pass  # whoever had it has removed it
        os.close(claimed)


def end_with_everything(*_):
    # The program gives the tools a process group of their own, which the tool that has started this one leads.
    if os.getpgrp() == os.getppid():
        os.killpg(0, signal.SIGKILL)
    os._exit(128 + signal.SIGTERM)


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
    signal.signal(signal.SIGTERM, end_with_everything)
    yt_dlp.YoutubeDL = Downloader
    own, arguments = own_arguments(Path(sys.argv[0]).resolve().parent), sys.argv[1:]
    place = arguments.index("-o") + 1 if "-o" in arguments[:-1] else None
    if place is None or not arguments[place].endswith(TITLE_AND_EXTENSION):
        return run(own + arguments)
    Downloader.final_folder = Path(arguments[place].removesuffix(TITLE_AND_EXTENSION) or "/")
    unfinished = Downloader.final_folder / f".quillet-{hashlib.sha256(arguments[-1].encode()).hexdigest()[:12]}"
    arguments[place] = str(unfinished).replace("%", "%%") + TITLE_AND_EXTENSION
    try:
        claimed = claim(unfinished)
    except OSError as reason:
        sys.exit(f"ERROR: {reason.strerror}: {Downloader.final_folder}")
    status = run(own + arguments)
    if status == 0:
        shutil.rmtree(unfinished, ignore_errors=True)
    elif unfinished.is_dir() and not any(unfinished.iterdir()):
        unfinished.rmdir()
    os.close(claimed)
    return status


if __name__ == "__main__":
    sys.exit(main())
