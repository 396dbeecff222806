#!/usr/bin/env python3
"""Writes a small model for stem separation: small_stem_model.py BUILD-TREE FILE. Exit status 77: that cannot be done here."""

import sys
from pathlib import Path

from separation_environment import SMALL_SIZE, enter_or_skip, write_model

if __name__ == "__main__":
    enter_or_skip(Path(sys.argv[1]).resolve())
    write_model(sys.argv[2], SMALL_SIZE)
