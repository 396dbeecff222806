"""The network, and a song's way through it: overlapping segments, added up as they come, so that a long song takes no more memory than a
short one. The sums are to the bit those of demucs.apply.apply_model with shifts=0 and overlap=0.25, which keeps everything."""

import json
import os

import torch
from demucs.hf import load_safetensors_model
from safetensors import SafetensorError, safe_open

from . import KEYS
from .level import MODEL_RATE, samples
from .report import Failure

CHANNELS = 2
OVERLAP = 0.25
CLASS = "demucs.htdemucs.HTDemucs"


def load(path):
    torch.set_num_threads(len(os.sched_getaffinity(0)))
    try:
        _check_class(path)
        model = load_safetensors_model(path)
    except (SafetensorError, KeyError, ValueError, TypeError) as reason:
        words = " ".join(str(reason).split())
        raise Failure(f"The model “{path}” cannot be loaded ({words}). Remove that file, and try again.") from reason
    if sorted(model.sources) != sorted(KEYS) or model.samplerate != MODEL_RATE or model.audio_channels != CHANNELS:
        raise Failure(f"The model “{path}” does not make the six stems. Remove that file, and try again.")
    return model.eval().to("cuda" if torch.cuda.is_available() else "cpu")


def _check_class(path):
    # The loader would call whatever the file names.
    with safe_open(path, framework="pt") as file:
        metadata = file.metadata() or {}
    if metadata.get("klass") != CLASS or "structure" in metadata or json.loads(metadata["args"]):
        raise ValueError("it is of another kind")


class _Window:
    """The song's normalised sound around where the separation is."""

    def __init__(self, read, level):
        self._read = read
        self._mean, self._deviation = (torch.tensor(value, dtype=torch.float32) for value in (level.mean, level.deviation))
        self._begin = 0
        self._held = torch.zeros(CHANNELS, 0)

    def get(self, begin, length):
        """Frames [begin, begin + length), with silence outside the song. `begin` never steps back: what is before it goes."""
        missing = begin + length - self._begin - self._held.shape[1]
        if missing > 0:
            sound = torch.from_numpy(samples(self._read(missing)).T)
            self._held = torch.cat([self._held, (sound - self._mean) / self._deviation], dim=1)
        stale = max(0, begin - self._begin)
        self._held = self._held[:, stale:].clone()
        self._begin += stale
        end = min(begin + length, self._begin + self._held.shape[1])
        found = self._held[:, max(begin, 0) - self._begin:end - self._begin]
        return torch.nn.functional.pad(found, (max(0, -begin), begin + length - max(end, 0)))


def separate(model, read, level, write):
    """Reads the song at MODEL_RATE by `read(frames)`, which gives bytes, and for each further stretch calls `write(sound, done)`:
    the bytes of each source, interleaved, and the part of the song that is done. `level` is that of the whole song."""
    device = next(model.parameters()).device
    length = int(MODEL_RATE * model.segment)
    stride = int((1 - OVERLAP) * length)
    weight = torch.cat([torch.arange(1, length // 2 + 1), torch.arange(length - length // 2, 0, -1)])
    weight = weight / weight.max()
    window = _Window(read, level)
    sound = torch.zeros(len(model.sources), CHANNELS, length)
    weights = torch.zeros(length)
    for begin in range(0, level.frames, stride):
        count = min(length, level.frames - begin)
        # The song's last segments are filled up with what was before them.
        before = (length - count) // 2
        with torch.no_grad():
            made = model(window.get(begin - before, length)[None].to(device))[0].to("cpu")
        sound[..., :count] += weight[:count] * made[..., before:before + count]
        weights[:count] += weight[:count]
        ready = min(stride, level.frames - begin)
        _give(model, sound[..., :ready] / weights[:ready], level, (begin + ready) / level.frames, write)
        sound = torch.cat([sound[..., stride:], torch.zeros(len(model.sources), CHANNELS, stride)], dim=-1)
        weights = torch.cat([weights[stride:], torch.zeros(stride)])


def _give(model, sound, level, done, write):
    sound = sound * torch.tensor(level.deviation, dtype=torch.float32) + torch.tensor(level.mean, dtype=torch.float32)
    stretches = sound.transpose(1, 2).contiguous().numpy()
    write({source: stretches[place].tobytes() for place, source in enumerate(model.sources)}, done)
