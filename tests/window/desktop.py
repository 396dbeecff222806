"""A desktop of its own for tests of the real window: a virtual screen with a window manager, a session bus with accessibility and
a portal, and a sound server whose sound can be recorded. Everything ends with the object; nothing of the user's is touched.
"""

import array
import os
import shutil
import signal
import subprocess
import tempfile
import time
from pathlib import Path

HERE = Path(__file__).parent
SINK_RATE = 44100


def wait_for(what, condition, seconds=60):
    """Waits until `condition()` is truthy and returns that; fails loudly otherwise."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        result = condition()
        if result:
            return result
        time.sleep(0.05)
    raise AssertionError(f"waited {seconds} s in vain for {what}")


class Desktop:
    def __init__(self, width=1280, height=1000, window_manager=True):
        self.folder = Path(tempfile.mkdtemp(prefix="quillet-desktop-"))
        self.processes = []
        run = self.folder / "run"
        (run / "pulse").mkdir(parents=True)
        run.chmod(0o700)
        self.environment = dict(os.environ)
        for name in ("WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "QT_SCALE_FACTOR", "AT_SPI_BUS_ADDRESS"):
            self.environment.pop(name, None)
        self.environment.update(
            XDG_RUNTIME_DIR=str(run), PULSE_RUNTIME_PATH=str(run / "pulse"), PULSE_SERVER=f"unix:{run}/native",
            PULSE_COOKIE=str(run / "cookie"), XDG_CONFIG_HOME=str(self.folder / "config"), XDG_CACHE_HOME=str(self.folder / "cache"),
            XDG_DATA_HOME=str(self.folder / "data"), HOME=str(self.folder), QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1",
            QT_ACCESSIBILITY="1", LC_ALL="C.UTF-8")
        (run / "cookie").write_bytes(b"q" * 256)
        self.start_screen(width, height)
        self._start_bus()
        if window_manager:
            self.start_window_manager()
        self.sound_server = self.start(
            "pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no", "--high-priority=no", "--realtime=no",
            "-L", f"module-null-sink sink_name=test rate={SINK_RATE} format=float32le norewinds=1",
            "-L", f"module-native-protocol-unix auth-anonymous=1 socket={run}/native")
        wait_for("the sound server", lambda: self.run("pactl", "info", check=False).returncode == 0)
        os.environ.update(self.environment)

    # ---- Processes ----

    def start(self, *command, **options):
        log = open(self.folder / f"{Path(command[0]).name}.log", "ab")
        process = subprocess.Popen(command, env=self.environment, stdout=options.pop("stdout", log), stderr=log,
                                   start_new_session=True, **options)
        self.processes.append(process)
        return process

    def run(self, *command, check=True):
        return subprocess.run(command, env=self.environment, check=check, capture_output=True, timeout=60)

    def start_screen(self, width, height):
        """What starts from now on shows itself there."""
        # The server chooses a free number and tells it.
        read, write = os.pipe()
        screen = self.start("Xvfb", "-displayfd", str(write), "-screen", "0", f"{width}x{height}x24", "-nolisten", "tcp", "-noreset", pass_fds=(write,))
        os.close(write)
        with os.fdopen(read) as told:
            self.environment["DISPLAY"] = ":" + told.readline().strip()
        return screen

    def start_window_manager(self):
        """On the screen that what starts shows itself on."""
        # A window that shows itself while it starts may stay hidden for good.
        started = self.folder / "window-manager-started"
        started.unlink(missing_ok=True)
        self.start("openbox", "--startup", f"touch {started}")
        wait_for("the window manager", started.exists)

    def _start_bus(self):
        bus = self.start("dbus-daemon", "--session", "--nofork", "--print-address=1", stdout=subprocess.PIPE)
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = bus.stdout.readline().decode().strip()

    def start_portal(self, appearance):
        self.awake_file = self.folder / "awake"
        self.portal = self.start("/usr/bin/python3", str(HERE / "fake_portal.py"), appearance, str(self.awake_file), stdin=subprocess.PIPE,
                                 stdout=subprocess.PIPE)
        assert self.portal.stdout.readline().strip() == b"ready"

    def tell_portal(self, line):
        self.portal.stdin.write(f"{line}\n".encode())
        self.portal.stdin.flush()

    def set_appearance(self, appearance):
        self.tell_portal(appearance)

    def close(self):
        for process in reversed(self.processes):
            try:
                os.killpg(process.pid, signal.SIGTERM)
                process.wait(5)
            except (ProcessLookupError, subprocess.TimeoutExpired):
                try:
                    os.killpg(process.pid, signal.SIGKILL)
                except ProcessLookupError:
                    pass
        shutil.rmtree(self.folder, ignore_errors=True)

    # ---- Hands, eyes and ears ----

    def key(self, *keys, delay=30):
        self.run("xdotool", "key", "--delay", str(delay), *keys)

    def type(self, text):
        self.run("xdotool", "type", "--delay", "20", "--", text)

    def click(self, place):
        self.run("xdotool", "mousemove", str(place[0]), str(place[1]), "click", "1")

    def drag(self, start, end):
        middle = ((start[0] + end[0]) // 2, (start[1] + end[1]) // 2)
        self.run("xdotool", "mousemove", *map(str, start), "mousedown", "1", "mousemove", *map(str, middle), "mousemove",
                 *map(str, end), "sleep", "0.05", "mouseup", "1")

    def shot(self, path):
        self.run("import", "-window", "root", str(path))

    def brightness(self, path):
        """Of the middle of a picture, 0 to 1."""
        return float(self.run("convert", str(path), "-gravity", "center", "-crop", "400x400+0+100", "-colorspace", "Gray", "-format",
                              "%[fx:mean]", "info:").stdout)

    def record(self, seconds):
        """What the sink plays in the next `seconds`: the left channel, as floats."""
        frames = int(seconds * SINK_RATE)
        recorder = subprocess.Popen(["parec", "-d", "test.monitor", "--format=float32le", f"--rate={SINK_RATE}", "--channels=2",
                                     "--latency-msec=10", "--raw"], env=self.environment, stdout=subprocess.PIPE)
        try:
            data = recorder.stdout.read(frames * 8)
        finally:
            recorder.kill()
            recorder.wait()
        samples = array.array("f")
        samples.frombytes(data)
        return samples[0::2]


def loudness(samples):
    """The largest magnitude."""
    return max((abs(sample) for sample in samples), default=0.0)


def frequency(samples):
    """Of a steady tone, by the usual distance of its rising zero crossings: holes that a busy machine tears do not count."""
    crossings = [i - samples[i] / (samples[i] - samples[i - 1]) for i in range(1, len(samples)) if samples[i - 1] < 0 <= samples[i]]
    distances = sorted(b - a for a, b in zip(crossings, crossings[1:]))
    usual = distances[len(distances) // 4:-len(distances) // 4]
    return SINK_RATE * len(usual) / sum(usual) if usual else 0.0
