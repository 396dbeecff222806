#!/usr/bin/env python3
"""What fetching a song costs beside yt-dlp alone: seconds from the start of uv to its end, for a six-second MP3 from loopback.

Usage: fetch_song.py FOLDER-OF-THE-TOOLS
"""

import statistics
import subprocess
import sys
import tempfile
import time
import zipfile
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "tests" / "support"))
from fetched_tools import environment_or_skip  # noqa: E402
from song_server import SongServer, make_songs  # noqa: E402

ROUNDS = 7


def make_plain(ours, target):
    """The same yt-dlp as PyPI has it: sources only, with an entry that does nothing else."""
    with zipfile.ZipFile(ours) as source, zipfile.ZipFile(target, "w", zipfile.ZIP_DEFLATED) as plain:
        plain.writestr("__main__.py", "import yt_dlp\nyt_dlp.main()\n")
        for member in source.infolist():
            if not member.filename.endswith(".pyc") and member.filename != "__main__.py":
                plain.writestr(member.filename, source.read(member))


def seconds(tools, application, server, path, folder, environment):
    begin = time.monotonic()
    subprocess.run([tools / "uv", "run", "--python", "3.12", application, "-x", "--no-playlist", "--audio-format", "m4a",
                    "--ffmpeg-location", tools / "ffmpeg", "--print", "after_move:filepath", "-o", f"{folder}/%(title)s.%(ext)s",
                    server.address(path)], env=environment, cwd="/", capture_output=True, check=True)
    return time.monotonic() - begin


def main():
    tools = Path(sys.argv[1]).resolve()
    environment = environment_or_skip(tools)
    with tempfile.TemporaryDirectory() as name:
        place = Path(name)
        server = SongServer(make_songs(place))
        make_plain(tools / "yt-dlp", place / "plain")
        for kind, path in (("file", "/song{}.mp3"), ("page with a song", "/titled/Song {}")):
            times = {"alone": [], "ours": []}
            for round_number in range(ROUNDS):
                for who, application in (("alone", place / "plain"), ("ours", tools / "yt-dlp")):
                    folder = place / who / kind
                    times[who].append(seconds(tools, application, server, path.format(round_number).replace(" ", "%20"), folder,
                                              environment))
            alone, ours = (statistics.median(times[who]) for who in ("alone", "ours"))
            print(f"{kind}: yt-dlp alone {alone:.2f} s, ours {ours:.2f} s, ratio {ours / alone:.2f}")
        server.close()


if __name__ == "__main__":
    main()
