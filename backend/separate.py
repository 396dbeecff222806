#!/usr/bin/env python3
"""Separates a song into six stems.

    separate.py --input-file SONG --model htdemucs_6s --output-dir DIR

It is run by the interpreter of an environment in which requirements.txt is installed. The stems become
DIR/htdemucs_6s/<song's name without its extension>/<key>.wav, all six or none. Standard error has the progress: JSON lines with a
"message", the last of which is "Done.", and lines such as "37%". Standard output has one JSON object with "success" and "stems" at the
end, and the exit status is 0; or one sentence that says what went wrong, and the exit status is 1 (143 and 130 after SIGTERM and
SIGINT).
"""

import argparse
import os
import sys

# The installation may not be writable, and is to be as it was when the program is removed.
sys.dont_write_bytecode = True


def main():
    parser = argparse.ArgumentParser(allow_abbrev=False, description="Separates a song into six stems.")
    parser.add_argument("--input-file", required=True, type=os.fsencode, metavar="SONG")
    parser.add_argument("--model", required=True, choices=["htdemucs_6s"])
    parser.add_argument("--output-dir", required=True, type=os.fsencode, metavar="DIR")
    # For the worker, which is this script once more: the folder that takes its files, and where its progress goes.
    parser.add_argument("--worker", type=os.fsencode, help=argparse.SUPPRESS)
    options = parser.parse_args()
    if options.worker is not None:
        from stems.worker import work
        return work(options.input_file, options.worker)
    from stems.supervisor import supervise
    return supervise(os.path.realpath(__file__), options.input_file, options.model, options.output_dir)


if __name__ == "__main__":
    sys.exit(main())
