"""The real tools that fetch songs, for tests: whether they can run on this machine, and with which environment."""

import os
import subprocess
import sys
import time
from pathlib import Path

# What ctest takes for "skipped".
SKIPPED = 77


def environment_or_skip(tools):
    """The environment in which the tools in that folder run; where they cannot, the end of the program, with the reason said.

    They run on a Python 3.12 that uv finds, or fetches where there is a network."""
    missing = [name for name in ("uv", "yt-dlp", "ffmpeg") if not (tools / name).exists()]
    if missing:
        print(f"skipped: there is no {', '.join(missing)} beside the program (tools/fetch-tools puts it there)")
        sys.exit(SKIPPED)
    home = Path.home()
    # What uv keeps stays where it is for tests with a home of their own.
    variables = dict(os.environ, UV_CACHE_DIR=os.environ.get("UV_CACHE_DIR", str(home / ".cache/uv")),
                     UV_PYTHON_INSTALL_DIR=os.environ.get("UV_PYTHON_INSTALL_DIR", str(home / ".local/share/uv/python")))
    # pyenv's interpreters are on no search path before one is chosen.
    pyenv = Path(os.environ.get("PYENV_ROOT", home / ".pyenv"))
    with_pyenv = dict(variables, PATH=os.pathsep.join([*map(str, pyenv.glob("versions/3.12*/bin")), os.environ["PATH"]]))
    for candidate in (variables, with_pyenv):
        if subprocess.run([tools / "uv", "python", "find", "3.12"], env=candidate, capture_output=True).returncode == 0:
            return candidate
    attempt = subprocess.run([tools / "uv", "run", "--python", "3.12", tools / "yt-dlp", "--version"], env=variables, cwd="/",
                             capture_output=True, text=True)
    if attempt.returncode == 0:
        return variables
    reason = (attempt.stderr.strip().splitlines() or ["no reason given"])[0]
    print(f"skipped: there is no Python 3.12 for yt-dlp, and uv could not fetch one ({reason})")
    sys.exit(SKIPPED)


def processes():
    """The parent and the process group of every process that runs, by its number."""
    found = {}
    for file in Path("/proc").glob("[0-9]*/stat"):
        try:
            state, parent, group = file.read_text().rpartition(")")[2].split()[:3]
        except OSError:
            continue  # it has just ended
        if state != "Z":
            found[int(file.parent.name)] = int(parent), int(group)
    return found


def ends(group, seconds=5):
    """Whether every process of the group has ended before so many seconds are over."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        if not any(group == its_group for _, its_group in processes().values()):
            return True
        time.sleep(0.05)
    return False
