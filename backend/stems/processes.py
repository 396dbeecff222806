"""Children that end with whoever has started them, however that ends; and where the program's own tools are."""

import ctypes
import os
import shutil
import signal
import subprocess

# Of the kernel's prctl: which signal a process gets when the thread that started it has ended.
PR_SET_PDEATHSIG = 1
# Loaded here: between fork and exec there is no time for it.
_libc = ctypes.CDLL(None)
# From share/quillet/backend to lib/quillet, in a build as in an installation.
_TOOLS = os.path.join(os.path.dirname(os.path.realpath(os.fsencode(__file__))), *[b".."] * 4, b"lib", b"quillet")


def tool(name):
    """The program of that name beside the player, or the system's; None if there is none."""
    beside = os.path.join(_TOOLS, name.encode())
    if os.access(beside, os.X_OK):
        return beside
    found = shutil.which(name)
    return os.fsencode(found) if found else None


def start(command, **options):
    """A Popen, without standard input unless given one. To be called on the main thread: its end would end the child."""
    parent = os.getpid()

    def follow_parent():
        _libc.prctl(PR_SET_PDEATHSIG, signal.SIGKILL)
        if os.getppid() != parent:
            os._exit(1)

    return subprocess.Popen(command, preexec_fn=follow_parent, **{"stdin": subprocess.DEVNULL, **options})


def end(process):
    process.kill()
    process.wait()
