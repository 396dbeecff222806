"""Starts the worker and waits for it. It needs so little that it is there to say so when the worker dies, and to clean up."""

import contextlib
import json
import signal
import subprocess
import sys

from .output import OutputFolder
from .processes import end, start
from .report import ENDED_FOR_MEMORY, Failure, Report

# How a process ends that there is no memory for.
OUT_OF_MEMORY = (signal.SIGKILL, signal.SIGBUS, signal.SIGABRT)


class Stopped(Exception):
    """Asked to end."""


def _raise_when_stopped():
    def stop(number, _):
        _finish_undisturbed()
        raise Stopped(number)
    for number in (signal.SIGTERM, signal.SIGINT):
        signal.signal(number, stop)


def _finish_undisturbed():
    for number in (signal.SIGTERM, signal.SIGINT):
        signal.signal(number, signal.SIG_IGN)


def _why_it_ended(status, words):
    if words:
        return words
    if status < 0 and -status in OUT_OF_MEMORY:
        return ENDED_FOR_MEMORY
    how = f"signal {-status}" if status < 0 else f"status {status}"
    return f"The separation ended without saying why ({how}). Try again."


def _separate(script, song, model, output_folder):
    with OutputFolder(output_folder) as output:
        # -E: the user's own PYTHONPATH is for other programs.
        worker = start([sys.executable, "-E", "-X", "utf8", script, "--input-file", song, "--model", model, "--output-dir", output_folder,
                        "--worker", output.aside], stdout=subprocess.PIPE)
        try:
            words = worker.communicate()[0].decode("utf-8", "replace").strip()
        finally:
            end(worker)
        _finish_undisturbed()
        if worker.returncode != 0:
            raise Failure(_why_it_ended(worker.returncode, words))
        return output.publish(model, song)


def _say(text):
    with contextlib.suppress(OSError):  # nobody listens any more
        sys.stdout.buffer.write((text + "\n").encode("utf-8", "replace"))
        sys.stdout.buffer.flush()


def supervise(script, song, model, output_folder):
    """The exit status. Paths are bytes."""
    report = Report(2)
    _raise_when_stopped()
    try:
        stems = _separate(script, song, model, output_folder)
    except Stopped as stopped:
        return 128 + stopped.args[0]
    except Failure as failure:
        _say(str(failure))
        return 1
    except Exception as reason:  # noqa: BLE001 (the program shows what is said here, and a trace would be no sentence)
        _say(f"The separation could not be carried out ({type(reason).__name__}: {' '.join(str(reason).split())}). Try again.")
        return 1
    report.message("Done.")
    _say(json.dumps({"success": True, "stems": stems}))
    return 0
