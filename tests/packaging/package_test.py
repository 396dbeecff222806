"""What packaging/ says of the program, and the Debian package that CPack makes of a build tree, as the systems' own tools see them.

Usage: package_test.py BUILD-TREE VERSION Files|Package [unittest's arguments]. Exit status 77: there is no package without the tools that
tools/fetch-tools gets.
"""

import configparser
import os
import re
import struct
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
PACKAGING = ROOT / "packaging"
BUILD, VERSION = Path(sys.argv.pop(1)).resolve(), sys.argv.pop(1)
ID = "org.quillet.Quillet"
TOOLS = ("uv", "deno", "yt-dlp", "fetched-tools.json")
MISSING = [tool for tool in TOOLS if not (BUILD / "lib/quillet" / tool).exists()]


def output(*command, **options):
    result = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, **options)
    if result.returncode != 0:
        raise AssertionError(f"{' '.join(map(str, command))}: exit status {result.returncode}\n{result.stdout}")
    return result.stdout


def help_of(*command):
    return output(BUILD / "bin/quillet", *command, "--help")


def desktop_types():
    entry = configparser.ConfigParser(interpolation=None)
    entry.optionxform = str
    entry.read(PACKAGING / f"{ID}.desktop")
    return entry["Desktop Entry"]["MimeType"].strip(";").split(";")


class Files(unittest.TestCase):
    def test_desktop_and_software_centre_take_their_entries(self):
        self.assertEqual(output("desktop-file-validate", PACKAGING / f"{ID}.desktop"), "")
        output("appstreamcli", "validate", "--no-net", PACKAGING / f"{ID}.metainfo.xml")
        self.assertIn(f'setDesktopFileName(QStringLiteral("{ID}"))', (ROOT / "app/core/entry/QuilletApp.cpp").read_text())

    def test_the_desktop_entry_has_the_types_that_the_program_opens(self):
        source = re.search(r"supportedAudioTypes\{(.*?)\}", (ROOT / "app/core/SupportedAudio.h").read_text(), re.S)[1]
        ends = set(re.findall(r'"(\w+)"', source))
        of_end, of_type = {}, {}
        for line in Path("/usr/share/mime/globs2").read_text().splitlines():
            if match := re.fullmatch(r"\d+:([^:]+):\*\.(\w+)", line):
                of_end.setdefault(match[2], set()).add(match[1])
                of_type.setdefault(match[1], set()).add(match[2])
        listed = desktop_types()
        for end in ends & of_end.keys():
            types = {name for name in of_end[end] if name.startswith("audio/")} or of_end[end]
            self.assertLessEqual(types, set(listed), f"files named *.{end}")
        for name in listed:
            self.assertTrue(name not in of_type or of_type[name] & ends, f"{name} is none of the program's types")

    def test_the_screenshots_are_as_large_as_announced(self):
        images = ElementTree.parse(PACKAGING / f"{ID}.metainfo.xml").findall("screenshots/screenshot/image")
        self.assertEqual(len(images), 2)
        for image in images:
            picture = (PACKAGING / "screenshots" / image.text.rpartition("/")[2]).read_bytes()
            size = struct.unpack(">II", picture[16:24])
            self.assertEqual(size, (int(image.get("width")), int(image.get("height"))))
            self.assertTrue(size[0] <= 1000 and size[1] <= 700, size)

    def test_the_newest_release_is_this_version(self):
        metainfo = ElementTree.parse(PACKAGING / f"{ID}.metainfo.xml")
        self.assertEqual(metainfo.find("releases/release").get("version"), VERSION)
        self.assertEqual(output("dpkg-parsechangelog", "-l", PACKAGING / "changelog", "-S", "Version").strip(), VERSION)

    def test_manual_and_completions_know_the_whole_command_line(self):
        files = {path: path.read_text().replace("\\-", "-") for path in (PACKAGING / "quillet.1", *(PACKAGING / "completions").iterdir())}
        commands = re.findall(r"^  (\w+) {3,}", help_of().partition("Subcommands:")[2], re.M)
        self.assertIn("render", commands)
        for command in commands:
            options = set(re.findall(r"--([\w-]+)", help_of(command)))
            self.assertIn("help", options)
            for path, text in files.items():
                dashes = "-l " if path.suffix == ".fish" else "--"
                for word in (command, *(dashes + option for option in options)):
                    self.assertRegex(text, rf"{word}\b", f"{path.name}, {command}")

    def test_bash_completes_what_makes_sense_at_the_place(self):
        for words, wanted, unwanted in [
            (["re"], "render", "--from"), (["render", "--s"], "--stems", "--json"), (["render", "a.wav", "-"], "--output", "--png"),
            (["info", "-"], "--json", "--from"), (["-"], "--version", "--json"), (["play", "CMake"], "CMakeLists.txt", "render"),
            (["separate", "-o", "''"], "docs", "README.md"), (["separate", "-"], "--output", "--speed"), (["play", "--stems", "g"], "guitar=", "vocals="),
        ]:
            script = (f"compopt() {{ :; }}; source packaging/completions/quillet.bash; COMP_WORDS=(quillet {' '.join(words)}); "
                      f"COMP_CWORD={len(words)}; _quillet; printf '%s\\n' \"${{COMPREPLY[@]}}\"")
            found = output("bash", "--norc", "-c", script, cwd=ROOT).split()
            self.assertIn(wanted, found, words)
            self.assertNotIn(unwanted, found, words)


class Package(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(dir=BUILD)
        cls.addClassCleanup(folder.cleanup)
        # A strict umask must not show in the package.
        output("cpack", "--config", BUILD / "CPackConfig.cmake", "-B", folder.name, umask=0o077)
        (cls.package,) = Path(folder.name).glob("*.deb")
        cls.files = Path(folder.name, "files")
        output("dpkg-deb", "--extract", cls.package, cls.files)

    def test_the_distribution_finds_nothing_wrong(self):
        output("lintian", "--allow-root", "--fail-on", "error,warning", self.package)

    def test_a_purge_leaves_nothing(self):
        self.assertEqual([path.name for path in self.files.iterdir()], ["usr"])
        control = Path(self.files.parent, "control")
        output("dpkg-deb", "--control", self.package, control)
        self.assertEqual({path.name for path in control.iterdir()}, {"control", "md5sums"})

    def test_what_is_installed_runs_with_what_it_depends_on(self):
        program = self.files / "usr/bin/quillet"
        self.assertIn(VERSION, output(program, "--version"))
        self.assertIn("ffmpeg", depends := output("dpkg-deb", "--field", self.package, "Depends"))
        for library in ("libavformat", "libqt6svg6", "libqt6widgets6", "librubberband2", "libcubeb"):
            self.assertIn(library, depends)
        folder = self.files / "usr/lib/quillet"
        for tool in ("uv", "deno"):
            self.assertIn(tool, output(folder / tool, "--version"))
        for tool in ("ffmpeg", "ffprobe"):
            self.assertEqual(os.path.normpath(folder / os.readlink(folder / tool)), str(self.files / "usr/bin" / tool))


if __name__ == "__main__":
    if "Package" in sys.argv and MISSING:
        print(f"skipped: there is no {', '.join(MISSING)} beside the program (tools/fetch-tools puts it there)")
        sys.exit(77)
    unittest.main()
