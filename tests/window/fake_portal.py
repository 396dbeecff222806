#!/usr/bin/env python3
"""Stands in for the desktop's portal on the session bus: says which appearance the user prefers, and changes it when told.

Usage: fake_portal.py light|dark|none, then a line with one of them on standard input for every change. It prints "ready" when it can
be asked, and ends with its input.
"""

import sys

from gi.repository import Gio, GLib

INTERFACE = """
<node><interface name="org.freedesktop.portal.Settings">
  <method name="Read"><arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="v" direction="out"/></method>
  <signal name="SettingChanged"><arg type="s"/><arg type="s"/><arg type="v"/></signal>
</interface></node>
"""
PATH = "/org/freedesktop/portal/desktop"
SCHEMES = {"none": 0, "dark": 1, "light": 2}
GROUP, KEY = "org.freedesktop.appearance", "color-scheme"


def main():
    loop = GLib.MainLoop()
    state = {"scheme": sys.argv[1]}

    def value():
        return GLib.Variant("u", SCHEMES[state["scheme"]])

    def called(_connection, _sender, _path, _interface, _method, arguments, invocation):
        if arguments.unpack() == (GROUP, KEY):
            # The portal wraps its answer twice.
            invocation.return_value(GLib.Variant("(v)", (GLib.Variant("v", value()),)))
        else:
            invocation.return_dbus_error("org.freedesktop.portal.Error.NotFound", "no such setting")

    def acquired(connection, _name):
        interface = Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces[0]
        connection.register_object(PATH, interface, called, None, None)

        def told(_channel, _condition):
            line = sys.stdin.readline().strip()
            if line not in SCHEMES:
                loop.quit()
                return False
            state["scheme"] = line
            connection.emit_signal(None, PATH, "org.freedesktop.portal.Settings", "SettingChanged",
                                   GLib.Variant("(ssv)", (GROUP, KEY, value())))
            return True

        GLib.io_add_watch(GLib.IOChannel.unix_new(0), GLib.IO_IN | GLib.IO_HUP, told)

    Gio.bus_own_name(Gio.BusType.SESSION, "org.freedesktop.portal.Desktop", 0, acquired,
                     lambda *_: print("ready", flush=True), lambda *_: loop.quit())
    loop.run()


main()
