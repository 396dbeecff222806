"""What the program is told: states in words, percents, and failures in one sentence."""

import json
import os


ENDED_FOR_MEMORY = "The separation was ended by the system, probably for lack of memory. Close other programs and try again."
NO_MEMORY = "There is not enough memory for the separation. Close other programs and try again."


class Failure(Exception):
    """One sentence for the user: what happened, and what to do."""


def shown(path):
    """A path (bytes) for people. What is not UTF-8 becomes a replacement character."""
    return "“" + path.decode("utf-8", "replace") + "”"


def amount(size):
    """A number of bytes for people."""
    return f"{size / 1e9:.1f} GB" if size >= 1e9 else f"{max(1, round(size / 1e6))} MB"


class Report:
    """Lines for the program, each in one write, so that none is read in two halves."""

    def __init__(self, descriptor):
        self._descriptor = descriptor
        self._percent = -1

    def _line(self, text):
        try:
            os.write(self._descriptor, (text + "\n").encode())
        except OSError:
            pass  # nobody listens any more

    def message(self, words):
        self._line(json.dumps({"message": words}))

    def fraction(self, done):
        """Of the whole separation; said when it is another whole percent, and never less than before."""
        percent = int(100 * done)
        if percent > self._percent:
            self._percent = percent
            self._line(f"{percent}%")
