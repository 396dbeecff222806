#!/usr/bin/env python3
"""Stands in for the desktop on the session bus. As the portal it says which appearance the user prefers, and changes it when told; it
keeps the machine awake, or when told so leaves that to the screen saver's service, which it is as well. It has no panel for files until
it is told what is chosen in it.

Usage: fake_portal.py light|dark|none FILE, then a line with one of them, or with "refuse" or "grant", or with "choose ADDRESS..." ("choose"
alone: the panel is left; "choose never": it does not answer; "choose later": the panel stays open), on standard input for every change.
It prints "ready" when it can be asked, and ends with its input. FILE says what keeps the machine awake, a line each; FILE.panel what
the last panel was asked for.
"""

import json
import sys
from pathlib import Path

from gi.repository import Gio, GLib

SETTINGS = """
<node><interface name="org.freedesktop.portal.Settings">
  <method name="Read"><arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="v" direction="out"/></method>
  <signal name="SettingChanged"><arg type="s"/><arg type="s"/><arg type="v"/></signal>
</interface></node>
"""
INHIBIT = """
<node><interface name="org.freedesktop.portal.Inhibit">
  <method name="Inhibit">
    <arg type="s" direction="in"/><arg type="u" direction="in"/><arg type="a{sv}" direction="in"/><arg type="o" direction="out"/>
  </method>
</interface></node>
"""
FILE_CHOOSER = """
<node><interface name="org.freedesktop.portal.FileChooser">
  <method name="OpenFile">
    <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="a{sv}" direction="in"/><arg type="o" direction="out"/>
  </method>
</interface></node>
"""
REQUEST = """<node><interface name="org.freedesktop.portal.Request"><method name="Close"/></interface></node>"""
SCREEN_SAVER = """
<node><interface name="org.freedesktop.ScreenSaver">
  <method name="Inhibit"><arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="u" direction="out"/></method>
  <method name="UnInhibit"><arg type="u" direction="in"/></method>
</interface></node>
"""
PATH = "/org/freedesktop/portal/desktop"
SCHEMES = {"none": 0, "dark": 1, "light": 2}
GROUP, KEY = "org.freedesktop.appearance", "color-scheme"


class Portal:
    def __init__(self, scheme, awake_file):
        self.scheme = scheme
        self.awake_file = Path(awake_file)
        self.awake = {}
        self.grants = True
        self.chosen = None
        self.count = 0
        self.write_awake()

    def write_awake(self):
        self.awake_file.write_text("".join(f"{line}\n" for line in self.awake.values()))

    def keep_awake(self, connection, asker, key, line):
        self.awake[key] = line
        self.write_awake()
        Gio.bus_watch_name_on_connection(connection, asker, Gio.BusNameWatcherFlags.NONE, None, lambda *_: self.let_sleep(key))

    def let_sleep(self, key):
        self.awake.pop(key, None)
        self.write_awake()

    def value(self):
        return GLib.Variant("u", SCHEMES[self.scheme])

    def called(self, connection, sender, path, _interface, method, arguments, invocation):
        arguments = arguments.unpack()
        if method == "Read" and arguments == (GROUP, KEY):
            # The portal wraps its answer twice.
            invocation.return_value(GLib.Variant("(v)", (GLib.Variant("v", self.value()),)))
        elif method == "Inhibit" and path == PATH and self.grants:
            self.count += 1
            handle = f"{PATH}/request/{self.count}"
            self.register(connection, handle, REQUEST)
            self.keep_awake(connection, sender, handle, f"portal {arguments[1]}")
            invocation.return_value(GLib.Variant("(o)", (handle,)))
        elif method == "Inhibit" and path != PATH:
            self.count += 1
            self.keep_awake(connection, sender, self.count, "screen saver")
            invocation.return_value(GLib.Variant("(u)", (self.count,)))
        elif method == "OpenFile" and self.chosen is not None:
            self.open_panel(connection, sender, arguments, invocation)
        elif method in ("Close", "UnInhibit"):
            self.let_sleep(path if method == "Close" else arguments[0])
            invocation.return_value(None)
        else:
            invocation.return_dbus_error("org.freedesktop.portal.Error.NotFound", "no such thing")

    def open_panel(self, connection, sender, arguments, invocation):
        self.awake_file.with_suffix(".panel").write_text(json.dumps(arguments))
        handle = f"{PATH}/request/{sender[1:].replace('.', '_')}/{arguments[2]['handle_token']}"
        if self.chosen == "never":
            return
        invocation.return_value(GLib.Variant("(o)", (handle,)))
        if self.chosen == "later":
            return
        results = {"uris": GLib.Variant("as", self.chosen.split())} if self.chosen else {}
        connection.emit_signal(sender, handle, "org.freedesktop.portal.Request", "Response",
                               GLib.Variant("(ua{sv})", (0 if self.chosen else 1, results)))

    def register(self, connection, path, description):
        connection.register_object(path, Gio.DBusNodeInfo.new_for_xml(description).interfaces[0], self.called, None, None)

    def acquired(self, connection, _name):
        for description in (SETTINGS, INHIBIT, FILE_CHOOSER):
            self.register(connection, PATH, description)
        self.register(connection, "/org/freedesktop/ScreenSaver", SCREEN_SAVER)
        GLib.io_add_watch(GLib.IOChannel.unix_new(0), GLib.IO_IN | GLib.IO_HUP, self.told, connection)

    def told(self, _channel, _condition, connection):
        line = sys.stdin.readline().strip()
        if line in ("grant", "refuse"):
            self.grants = line == "grant"
        elif line.partition(" ")[0] == "choose":
            self.chosen = line.partition(" ")[2]
        elif line in SCHEMES:
            self.scheme = line
            connection.emit_signal(None, PATH, "org.freedesktop.portal.Settings", "SettingChanged",
                                   GLib.Variant("(ssv)", (GROUP, KEY, self.value())))
        else:
            LOOP.quit()
            return False
        return True


LOOP = GLib.MainLoop()
PORTAL = Portal(*sys.argv[1:])
Gio.bus_own_name(Gio.BusType.SESSION, "org.freedesktop.ScreenSaver", 0, None, None, None)
Gio.bus_own_name(Gio.BusType.SESSION, "org.freedesktop.portal.Desktop", 0, PORTAL.acquired,
                 lambda *_: print("ready", flush=True), lambda *_: LOOP.quit())
LOOP.run()
