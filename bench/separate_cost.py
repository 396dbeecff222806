#!/usr/bin/env python3
"""What separating a song costs beside the network alone: processor seconds per second of sound, and peak memory.

Usage: separate_cost.py BUILD-TREE real|small|tiny SECONDS...    (the network's size, with random weights; the songs' lengths)
What surrounds the network is the same at every size: the smallest tells soonest whether an hour takes more memory than minutes.
"""

import os
import resource
import subprocess
import sys
import tempfile
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "tests" / "support"))
from separation_environment import REAL_SIZE, SMALL_SIZE, enter_or_skip, write_model  # noqa: E402

OVERLAP = 0.25
FORWARDS = 5
TINY_SIZE = {**SMALL_SIZE, "segment": REAL_SIZE["segment"]}
FORWARD = """
import sys, time, torch
from demucs.hf import load_safetensors_model
model = load_safetensors_model(sys.argv[1]).eval()
sound = torch.rand(1, 2, int(model.segment * model.samplerate)) - 0.5
with torch.no_grad():
    model(sound)
    begin = time.process_time()
    for _ in range(int(sys.argv[2])):
        model(sound)
print((time.process_time() - begin) / int(sys.argv[2]))
"""


def main():
    build = Path(sys.argv[1]).resolve()
    enter_or_skip(build)
    size = {"real": REAL_SIZE, "small": SMALL_SIZE, "tiny": TINY_SIZE}[sys.argv[2]]
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        (folder / "model").mkdir()
        write_model(folder / "model/random.safetensors", size)
        forward = float(subprocess.run([sys.executable, "-c", FORWARD, folder / "model/random.safetensors", str(FORWARDS)], check=True,
                                       capture_output=True).stdout)
        for seconds in map(int, sys.argv[3:]):
            song = folder / "song.flac"
            subprocess.run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i",
                            f"aevalsrc='0.3*sin(440*2*PI*t)+0.1*random(0)|0.3*sin(330*2*PI*t)+0.1*random(1)':s=44100:d={seconds}", song],
                           check=True)
            before, begin = resource.getrusage(resource.RUSAGE_CHILDREN), time.monotonic()
            subprocess.run([sys.executable, build / "share/quillet/backend/separate.py", "--input-file", song, "--model", "htdemucs_6s",
                            "--output-dir", folder / "stems"], env=dict(os.environ, QUILLET_STEM_MODEL=str(folder / "model")), check=True,
                           capture_output=True)
            wall, after = time.monotonic() - begin, resource.getrusage(resource.RUSAGE_CHILDREN)
            used = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
            alone = forward * -(-seconds // float(size["segment"] * (1 - OVERLAP)))
            # Of the largest child there has been: give the lengths in ascending order.
            print(f"{seconds} s of sound: {wall:.0f} s, {used:.0f} s of processor time ({used / seconds:.2f} per second), the network alone "
                  f"{alone:.0f} s, ratio {used / alone:.2f}, peak memory {after.ru_maxrss / 1024:.0f} MB", flush=True)


if __name__ == "__main__":
    main()
