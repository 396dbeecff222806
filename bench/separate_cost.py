#!/usr/bin/env python3
"""What separating a song costs beside the network's own forward passes in the same process: time, processor time and peak memory.

Usage: separate_cost.py BUILD-TREE real|small|tiny SECONDS...    (the network's size, with random weights; the songs' lengths)
What surrounds the network is the same at every size: the smallest tells soonest whether an hour takes more memory than minutes.
"""

import json
import os
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "tests" / "support"))
from separation_environment import REAL_SIZE, SMALL_SIZE, enter_or_skip, write_model  # noqa: E402

TINY_SIZE = {**SMALL_SIZE, "segment": REAL_SIZE["segment"]}
# The worker as it is, but that the network is timed where the worker loads it, and the process at its end.
WORKER = """
import json, os, resource, sys, time

def clocks():
    return time.monotonic(), time.process_time()

begin = time.monotonic()
backend, song, folder, result = sys.argv[1:]
sys.path.insert(0, backend)
sys.dont_write_bytecode = True
from stems import model, worker
forward, load = [0, 0], model.load

def timed(path):
    network, begun = load(path), []
    def stop(*_):
        for place, (now, then) in enumerate(zip(clocks(), begun.pop())):
            forward[place] += now - then
    network.register_forward_pre_hook(lambda *_: begun.append(clocks()))
    network.register_forward_hook(stop)
    return network

model.load = timed
status = worker.work(os.fsencode(song), os.fsencode(folder))
own, children = (resource.getrusage(who) for who in (resource.RUSAGE_SELF, resource.RUSAGE_CHILDREN))
with open(result, "w") as file:
    json.dump({"time": time.monotonic() - begin, "processor": sum((own.ru_utime, own.ru_stime, children.ru_utime, children.ru_stime)),
               "forward": forward, "memory": own.ru_maxrss}, file)
sys.exit(status)
"""


def main():
    build = Path(sys.argv[1]).resolve()
    enter_or_skip(build)
    size = {"real": REAL_SIZE, "small": SMALL_SIZE, "tiny": TINY_SIZE}[sys.argv[2]]
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        (folder / "model").mkdir()
        write_model(folder / "model/random.safetensors", size)
        for seconds in map(int, sys.argv[3:]):
            song = folder / "song.flac"
            subprocess.run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i",
                            f"aevalsrc='0.3*sin(440*2*PI*t)+0.1*random(0)|0.3*sin(330*2*PI*t)+0.1*random(1)':s=44100:d={seconds}", song],
                           check=True)
            stems = folder / str(seconds)
            stems.mkdir()
            subprocess.run([sys.executable, "-E", "-X", "utf8", "-c", WORKER, build / "share/quillet/backend", song, stems,
                            folder / "result"], env=dict(os.environ, QUILLET_STEM_MODEL=str(folder / "model")), check=True,
                           stderr=subprocess.DEVNULL)
            shutil.rmtree(stems)
            found = json.loads((folder / "result").read_text())
            time_alone, processor_alone = found["forward"]
            print(f"{seconds} s of sound: {found['time']:.1f} s, the network alone {time_alone:.1f} s, ratio "
                  f"{found['time'] / time_alone:.3f}; {found['processor']:.1f} s of processor time, the network alone "
                  f"{processor_alone:.1f} s, ratio {found['processor'] / processor_alone:.3f}; peak memory {found['memory'] / 1024:.0f} MB",
                  flush=True)


if __name__ == "__main__":
    main()
