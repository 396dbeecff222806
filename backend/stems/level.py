"""What a song is normalised by, found without keeping the song."""

import numpy

# Frames per second that the network knows.
MODEL_RATE = 44100


class Level:
    """The mean and the standard deviation of a song's middle, from its blocks."""

    def __init__(self):
        self._count = 0
        self.mean = 0.0
        self._squares = 0.0

    def add(self, block):
        """Shape (frames, 2)."""
        middle = block.mean(axis=1, dtype=numpy.float64)
        count = self._count + len(middle)
        apart = middle.mean() - self.mean
        self._squares += numpy.square(middle - middle.mean()).sum() + apart**2 * self._count * len(middle) / count
        self.mean += apart * len(middle) / count
        self._count = count

    @property
    def frames(self):
        return self._count

    @property
    def deviation(self):
        return float(numpy.sqrt(self._squares / max(1, self._count - 1))) + 1e-8


def samples(data):
    """Shape (frames, 2), of bytes. What is no number is silence."""
    return numpy.nan_to_num(numpy.frombuffer(data, numpy.float32).reshape(-1, 2), nan=0, posinf=0, neginf=0)
