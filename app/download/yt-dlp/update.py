"""Fetches the newest yt-dlp and makes of it what the program runs: a zip application with the program's own entry, checked and compiled.

Usage: update.py UV FOLDER, on the Python that is to run it. The application becomes FOLDER/VERSION/yt-dlp, in one step and only if it
starts; its version is printed on standard output. A failure is one sentence on standard error.
"""

import compileall
import os
import py_compile
import re
import subprocess
import sys
import tempfile
import zipfile
from pathlib import Path

LAUNCHER = Path(__file__).resolve().with_name("__main__.py")


class Failed(Exception):
    pass


def run(*command, **options):
    outcome = subprocess.run(command, capture_output=True, text=True, stdin=options.pop("stdin", subprocess.DEVNULL), **options)
    if outcome.returncode != 0:
        raise Failed(" ".join(outcome.stderr.split()) or f"{command[0]} failed without a word")
    return outcome.stdout


def install(uv, folder, requirement):
    """The newest release that the requirement allows, of which the index gives a hash that has to fit."""
    wanted = folder.parent / "wanted.txt"
    wanted.write_text(requirement + "\n")
    pinned = folder.parent / "pinned.txt"
    run(uv, "pip", "compile", "--quiet", "--no-deps", "--upgrade", "--generate-hashes", "--no-header", "--only-binary", ":all:", "--python",
        sys.executable, "--output-file", str(pinned), str(wanted))
    run(uv, "pip", "install", "--quiet", "--no-deps", "--require-hashes", "--only-binary", ":all:", "--python", sys.executable, "--target",
        str(folder), "-r", str(pinned))


def make_application(packages, target):
    (packages / "__main__.py").write_bytes(LAUNCHER.read_bytes())
    if not compileall.compile_dir(packages, quiet=2, legacy=True, invalidation_mode=py_compile.PycInvalidationMode.UNCHECKED_HASH):
        raise Failed("it does not compile")
    with zipfile.ZipFile(target, "w", zipfile.ZIP_DEFLATED) as application:
        for file in sorted(packages.rglob("*")):
            if file.is_file() and file.relative_to(packages).parts[0] not in ("bin", "share"):
                application.write(file, file.relative_to(packages))


def fetch(uv, folder):
    folder.mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory(dir=folder, prefix=".yt-dlp-") as name:
        packages, made = Path(name) / "packages", Path(name) / "made"
        made.mkdir()
        install(uv, packages, "yt-dlp")
        metadata = next(packages.glob("yt_dlp-*.dist-info/METADATA")).read_text()
        for part in re.findall(r"^Requires-Dist: (yt-dlp-ejs==[\w.]+)", metadata, re.MULTILINE)[:1]:
            install(uv, packages, part)
        version = re.search(r"^Version: ([\d.]+)$", metadata, re.MULTILINE).group(1)
        make_application(packages, made / "yt-dlp")
        run(sys.executable, str(made / "yt-dlp"), "--version", cwd="/")
        place = folder / version
        if not place.exists():
            os.rename(made, place)
    return version


def main():
    try:
        print(fetch(sys.argv[1], Path(sys.argv[2])))
    except (Failed, OSError, StopIteration, AttributeError, zipfile.BadZipFile) as reason:
        print(f"The newest yt-dlp could not be fetched: {reason}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
