#!/usr/bin/env python3
"""Stands in for RTKit on the system bus. It does what it is asked for where it may itself, and prints every request.

Usage: fake_realtime_kit.py all|nice|nothing: what it grants. It prints "ready" when it can be asked, then lines
"realtime|nice PROCESS THREAD LEVEL granted|refused", and ends with its input.
"""

import os
import sys

from gi.repository import Gio, GLib

NAME = "org.freedesktop.RealtimeKit1"
INTERFACE = f"""
<node><interface name="{NAME}">
  <method name="MakeThreadRealtimeWithPID"><arg type="t" direction="in"/><arg type="t" direction="in"/><arg type="u" direction="in"/></method>
  <method name="MakeThreadHighPriorityWithPID"><arg type="t" direction="in"/><arg type="t" direction="in"/><arg type="i" direction="in"/></method>
  <property name="MaxRealtimePriority" type="i" access="read"/>
  <property name="RTTimeUSecMax" type="x" access="read"/>
</interface></node>
"""
LONGEST_RUN = 200_000
GRANTED = {"all": ("realtime", "nice"), "nice": ("nice",), "nothing": ()}[sys.argv[1]]


def is_limited(process):
    with open(f"/proc/{process}/limits", encoding="ascii") as limits:
        hard = next(line.split()[-2] for line in limits if line.startswith("Max realtime timeout"))
    return hard != "unlimited" and int(hard) <= LONGEST_RUN


def grant(kind, process, thread, level):
    if kind not in GRANTED or not os.path.isdir(f"/proc/{process}/task/{thread}"):
        return False
    try:
        if kind == "nice":
            os.setpriority(os.PRIO_PROCESS, thread, level)
        elif is_limited(process):
            os.sched_setscheduler(thread, os.SCHED_RR | os.SCHED_RESET_ON_FORK, os.sched_param(level))
        else:
            return False
    except PermissionError:
        pass  # Not as root: the requests are seen all the same.
    return True


def called(_connection, _sender, _path, _interface, method, arguments, invocation):
    kind = "realtime" if method == "MakeThreadRealtimeWithPID" else "nice"
    process, thread, level = arguments.unpack()
    granted = grant(kind, process, thread, level)
    print(kind, process, thread, level, "granted" if granted else "refused", flush=True)
    if granted:
        invocation.return_value(None)
    else:
        invocation.return_dbus_error("org.freedesktop.DBus.Error.AccessDenied", "no")


def asked(_connection, _sender, _path, _interface, name):
    return GLib.Variant("i", 20) if name == "MaxRealtimePriority" else GLib.Variant("x", LONGEST_RUN)


def acquired(connection, _name):
    interface = Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces[0]
    connection.register_object("/org/freedesktop/RealtimeKit1", interface, called, asked, None)


loop = GLib.MainLoop()
GLib.io_add_watch(GLib.IOChannel.unix_new(0), GLib.IO_HUP, lambda *_: loop.quit())
Gio.bus_own_name(Gio.BusType.SYSTEM, NAME, 0, acquired, lambda *_: print("ready", flush=True), lambda *_: loop.quit())
loop.run()
