"""A web server on loopback that serves songs, and everything that can go wrong with one."""

import html
import subprocess
import threading
import time
import urllib.parse
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

TYPES = {"mp3": "audio/mpeg", "wav": "audio/wav", "m4a": "audio/mp4"}
SLOW_SECONDS = 4


def make_songs(folder, seconds=6):
    """One tone of 441 Hz in each format, in that folder."""
    songs = {}
    for extension in TYPES:
        file = folder / f"song.{extension}"
        subprocess.run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", f"sine=frequency=441:sample_rate=44100:duration={seconds}",
                        str(file)], check=True)
        songs[extension] = file.read_bytes()
    return songs


class SongServer:
    """/song.mp3, .wav, .m4a and any other name with such an ending: the song. Below /slow/, in pieces over SLOW_SECONDS, and from
    any place on that is asked for, its second half byte by byte while go_on is not set; below /endless/, without an end; below
    /broken/, half of it. /moved/X leads to /X. /page: a page without a song. /titled/T: a page with the title T and a song. /album: a
    page with two songs. Everything else is not found."""

    def __init__(self, songs):
        server = self
        self.songs = songs
        # Who has asked, and for which place to begin at.
        self.agents = []
        self.places = []
        self.go_on = threading.Event()
        self.go_on.set()

        class Handler(BaseHTTPRequestHandler):
            def do_HEAD(self):
                server.answer(self, with_body=False)

            def do_GET(self):
                server.answer(self, with_body=True)

            def log_message(self, *_):
                pass

        self._server = ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self._server.daemon_threads = True
        threading.Thread(target=self._server.serve_forever, daemon=True).start()

    def address(self, path):
        return f"http://127.0.0.1:{self._server.server_address[1]}{path}"

    def close(self):
        self._server.shutdown()
        self._server.server_close()

    def answer(self, request, with_body):
        path = urllib.parse.unquote(urllib.parse.urlsplit(request.path).path)
        place = int(request.headers.get("Range", "bytes=0-").removeprefix("bytes=").partition("-")[0])
        self.agents.append(request.headers["User-Agent"])
        self.places.append(place)
        _, first, *rest = path.split("/", 2)
        song = self.songs.get(path.rpartition(".")[2])
        if first == "moved":
            self._send(request, 302, {"Location": self.address("/" + rest[0])}, b"", with_body)
        elif first == "page":
            self._send(request, 200, {"Content-Type": "text/html"}, b"<html><title>Words</title><p>No song here.", with_body)
        elif first == "titled":
            page = f"<html><title>{html.escape(rest[0])}</title><audio src='/song.mp3'></audio>"
            self._send(request, 200, {"Content-Type": "text/html; charset=utf-8"}, page.encode(), with_body)
        elif first == "album":
            page = b"<html><title>Album</title><audio src='/One.mp3'></audio><audio src='/Two.wav'></audio>"
            self._send(request, 200, {"Content-Type": "text/html"}, page, with_body)
        elif song is None:
            self._send(request, 404, {}, b"", with_body)
        elif first == "slow" and place > 0:
            headers = {"Content-Range": f"bytes {place}-{len(song) - 1}/{len(song)}"}
            self._send(request, 206, headers, song[place:], with_body, first)
        else:
            headers = {"Content-Type": TYPES[path.rpartition(".")[2]], "Accept-Ranges": "bytes"}
            self._send(request, 200, headers, song, with_body, first)

    def _send(self, request, status, headers, body, with_body, manner=""):
        request.send_response(status)
        for name, value in headers.items():
            request.send_header(name, value)
        if manner != "endless":
            request.send_header("Content-Length", str(len(body)))
        request.end_headers()
        if not with_body:
            return
        try:
            if manner == "broken":
                request.wfile.write(body[:len(body) // 2])
                request.connection.shutdown(2)
            elif manner in ("slow", "endless"):
                piece = max(1, len(body) // 20)
                place = 0
                while place < len(body):
                    held = place >= len(body) // 2 and not self.go_on.is_set()
                    size = 1 if held else piece
                    request.wfile.write(body[place:place + size])
                    place += size
                    time.sleep(SLOW_SECONDS / 20)
                while manner == "endless":
                    request.wfile.write(body[:1000])
                    time.sleep(0.1)
            else:
                request.wfile.write(body)
        except OSError:
            pass  # who asked has gone
