"""Proves that tools/check-layers bites: each bad include in a small tree is found, and nothing else."""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

CHECKER = Path(__file__).resolve().parent.parent.parent / "tools" / "check-layers"

# What is good is proved by the program itself, which passes.
GOOD = [("platform/audio/AudioGraph.h", '"platform/media/AudioFile.h"')]

BAD = [
    ("platform/base/Require.h", '"platform/schedule/Scheduler.h"', "points upwards"),
    ("platform/media/AudioFile.h", '"AppCore/FileSettings.h"', "points upwards"),
    ("AppCore/SettingsStore.cpp", '"app/core/AppState.h"', "points upwards"),
    ("app/playback/AudioEngine.cpp", '"app/core/AppState.h"', "points upwards"),
    ("app/core/AppState.cpp", '"app/ui/MainWindow.h"', "points upwards"),
    ("app/core/AppState.cpp", '"app/core/entry/QuilletApp.h"', "points upwards"),
    ("app/ui/EQView.cpp", '"app/playback/AudioEngine.h"', "know the engine"),
    ("app/ui/MainWindow.cpp", '"app/cli/CommandLine.h"', "points upwards"),
    ("app/ui/MainWindow.cpp", '"tests/support/TemporaryFolder.h"', "nothing from tests/"),
    ("app/ui/MainWindow.cpp", '"AppState.h"', "path from the root"),
    ("app/ui/MainWindow.cpp", '"platform/schedule/QtScheduler.h"', "concrete platform classes"),
    ("platform/audio/AudioGraph.h", '"platform/media/FfmpegAudioFile.h"', "concrete platform classes"),
    ("platform/schedule/Scheduler.h", "<QTimer>", "no Qt here"),
    ("AppCore/SettingsStore.h", "<QtCore/QString>", "no Qt here"),
    ("app/playback/AudioEngine.h", "<qglobal.h>", "no Qt here"),
    ("platform/audio/AudioGraph.h", "<libavutil/frame.h>", "belongs in platform/media"),
    ("platform/media/AudioFile.cpp", "<rubberband/RubberBandStretcher.h>", "belongs in platform/audio"),
    ("app/core/AppState.cpp", "<cubeb/cubeb.h>", "belongs in platform/audio"),
    ("AppCore/SettingsStore.cpp", "<sqlite3.h>", "belongs in platform/defaults"),
    ("app/ui/MainWindow.cpp", "<CLI/CLI.hpp>", "belongs in app/cli"),
    ("app/ui/MainWindow.cpp", "<gtest/gtest.h>", "belongs in the tests"),
    ("app/elsewhere/Thing.cpp", "<vector>", "no layer"),
]


def checked(includes):
    """Runs the checker on a tree of files with these includes; returns its exit status and output."""
    with tempfile.TemporaryDirectory() as folder:
        for path, included in includes:
            file = Path(folder) / path
            file.parent.mkdir(parents=True, exist_ok=True)
            with file.open("a", encoding="utf-8") as text:
                text.write(f"// a comment\n#include {included}\n")
        result = subprocess.run([sys.executable, CHECKER, folder], capture_output=True, text=True, check=False)
        return result.returncode, result.stdout


class CheckLayersTest(unittest.TestCase):
    def test_each_bad_include_is_found(self):
        for path, included, reason in BAD:
            with self.subTest(path=path, included=included):
                status, output = checked(GOOD + [(path, included)])
                self.assertEqual(status, 1)
                self.assertEqual(len(output.splitlines()), 1, output)
                self.assertIn(path, output)
                self.assertIn(reason, output)

    def test_folders_of_one_layer_make_no_circle(self):
        status, output = checked(GOOD + [("platform/media/AudioFile.cpp", '"platform/audio/AudioGraph.h"')])
        self.assertEqual(status, 1)
        self.assertEqual(output, "folders include each other in a circle: platform/audio -> platform/media -> platform/audio\n")

    def test_a_tree_without_sources_does_not_pass(self):
        self.assertEqual(checked([])[0], 1)


if __name__ == "__main__":
    unittest.main()
