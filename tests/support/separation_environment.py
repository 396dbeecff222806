"""The environment of the stem separation, built as the program builds it, and a small model of the same kind; for tests and
measurements. Importing this does not need that environment."""

import hashlib
import json
import os
import shutil
import subprocess
import sys
from fractions import Fraction
from pathlib import Path

from fetched_tools import SKIPPED, environment_or_skip

SOURCES = ["drums", "bass", "other", "vocals", "guitar", "piano"]
REAL_SIZE = {"channels": 48, "t_layers": 5, "t_heads": 8, "segment": Fraction(39, 5)}
SMALL_SIZE = {"channels": 8, "t_layers": 1, "t_heads": 2, "t_hidden_scale": 1.0, "segment": Fraction(2)}


def enter_or_skip(build):
    """Runs the program that calls this once more in the environment of that build tree, which is built at the first call; where that
    is impossible, the end of the program, with the reason said."""
    requirements = build / "share/quillet/backend/requirements.txt"
    folder = build / "separation-environment" / hashlib.sha256(requirements.read_bytes()).hexdigest()[:12]
    if Path(sys.prefix) == folder:
        return
    ready = folder / ".ready"
    if not ready.exists():
        _install(build / "lib/quillet", folder, requirements)
        ready.touch()
    sys.stdout.flush()
    os.execv(folder / "bin/python3", [folder / "bin/python3", *sys.argv])


def _install(tools, folder, requirements):
    variables = environment_or_skip(tools)
    # Those of earlier requirements are large.
    shutil.rmtree(folder.parent, ignore_errors=True)
    folder.parent.mkdir()
    override = folder.with_suffix(".override")
    create = [tools / "uv", "venv", "--python", "3.12", "--clear", folder]
    install = [tools / "uv", "pip", "install", "-r", requirements, "--python", folder]
    outcome = subprocess.run(create, env=variables, capture_output=True, text=True)
    if outcome.returncode == 0:
        outcome = subprocess.run(install, env=variables, capture_output=True, text=True)
    if outcome.returncode != 0:
        # Where only PyPI can be reached: its torch, the same but for CUDA.
        override.write_text("torch==2.12.1\n")
        outcome = subprocess.run(install, env=dict(variables, UV_OVERRIDE=str(override)), capture_output=True, text=True)
    if outcome.returncode != 0:
        reason = " ".join(outcome.stderr.split())[:200]
        print(f"skipped: the environment of the stem separation could not be built ({reason})")
        sys.exit(SKIPPED)


def write_model(path, size, sources=SOURCES):
    """One that makes these stems, with random weights (always the same)."""
    import torch
    from demucs.htdemucs import HTDemucs
    from safetensors.torch import save_file
    torch.manual_seed(1)
    arguments = {"sources": sources, "depth": 4, "dconv_mode": 3, "bottom_channels": 0, **size}
    model = HTDemucs(**arguments)
    segment = size["segment"]
    described = {**arguments, "segment": {"_type": "fraction", "numerator": segment.numerator, "denominator": segment.denominator}}
    save_file({name: tensor.contiguous() for name, tensor in model.state_dict().items()}, path,
              {"klass": "demucs.htdemucs.HTDemucs", "args": "[]", "kwargs": json.dumps(described)})
