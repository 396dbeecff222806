#!/usr/bin/env python3
"""Threads without a right of their own to a real-time schedule get one from RTKit: a real program, a bus of its own, and a service
on it that stands in for RTKit.

Usage: realtime_kit_test.py PROBE
"""

import os
import queue
import resource
import subprocess
import sys
import threading
import unittest

from gi.repository import Gio, GLib

PROBE = sys.argv.pop(1)
# Only root's stand-in can really schedule.
MAY_GRANT = os.geteuid() == 0
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
REALTIME, NICE = ("MakeThreadRealtimeWithPID", 5), ("MakeThreadHighPriorityWithPID", -11)


class Service:
    """Does what it is asked for where it grants that and may itself; keeps every request and whether it was granted."""

    def __init__(self, address, grants):
        self.grants = grants
        self.requests = queue.Queue()
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        self.connection = Gio.DBusConnection.new_for_address_sync(address, flags, None, None)
        interface = Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces[0]
        self.connection.register_object("/org/freedesktop/RealtimeKit1", interface, self.called, self.asked, None)
        self.connection.call_sync("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
                                  GLib.Variant("(su)", (NAME, 0)), None, Gio.DBusCallFlags.NONE, -1, None)

    def called(self, _connection, _sender, _path, _interface, method, arguments, invocation):
        process, thread, level = arguments.unpack()
        granted = (method, level) in self.grants and os.path.isdir(f"/proc/{process}/task/{thread}")
        if granted and method == NICE[0] and MAY_GRANT:
            os.setpriority(os.PRIO_PROCESS, thread, level)
        elif granted and method == REALTIME[0]:
            granted = 0 < resource.prlimit(process, resource.RLIMIT_RTTIME)[1] <= LONGEST_RUN
            if granted and MAY_GRANT:
                os.sched_setscheduler(thread, os.SCHED_RR | os.SCHED_RESET_ON_FORK, os.sched_param(level))
        self.requests.put((process, thread, method, level, granted))
        if granted:
            invocation.return_value(None)
        else:
            invocation.return_dbus_error("org.freedesktop.DBus.Error.AccessDenied", "no")

    @staticmethod
    def asked(_connection, _sender, _path, _interface, name):
        return GLib.Variant("i", 20) if name == "MaxRealtimePriority" else GLib.Variant("x", LONGEST_RUN)


class Probe:
    """The program, without any right to raise its threads."""

    def __init__(self, address):
        drop = ["setpriv", "--bounding-set=-all", "--inh-caps=-all"] if MAY_GRANT else []
        self.process = subprocess.Popen(drop + [PROBE], env=dict(os.environ, DBUS_SYSTEM_BUS_ADDRESS=address),
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.threads = self.read()

    def read(self):
        """Priorities by thread."""
        return dict(self.process.stdout.readline().split() for _ in range(2))

    def priorities(self, command="now"):
        print(command, file=self.process.stdin, flush=True)
        return sorted(self.read().values())

    def end(self):
        _, errors = self.process.communicate()
        return self.process.returncode, errors


class RealtimeKitTest(unittest.TestCase):
    def setUp(self):
        bus = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address=1"], stdout=subprocess.PIPE,
                               stderr=subprocess.DEVNULL, text=True)
        self.addCleanup(lambda: (bus.terminate(), bus.communicate()))
        self.address = bus.stdout.readline().strip()

    def test_threads_get_what_is_granted_first_and_survive_a_long_run(self):
        for grants, asked, priority in [
            ([REALTIME, NICE], [REALTIME], "realtime"),
            ([NICE], [REALTIME, NICE], "raised"),
            ([], [REALTIME, NICE], "unchanged"),
        ]:
            with self.subTest(grants=grants):
                service = Service(self.address, grants)
                probe = Probe(self.address)
                told = [service.requests.get(timeout=20) for _ in range(2 * len(asked))]
                expected = [(probe.process.pid, int(thread), *each, each in grants) for thread in probe.threads for each in asked]
                self.assertEqual(sorted(told), sorted(expected))
                if MAY_GRANT or not grants:
                    self.assertEqual(probe.priorities(), [priority] * 2)
                if MAY_GRANT and REALTIME in grants:
                    probe.priorities("spin")
                    self.assertEqual(probe.priorities(), ["unchanged"] * 2)
                self.assertEqual(probe.end(), (0, ""))
                service.connection.close_sync(None)

    def test_neither_service_nor_bus_is_missed(self):
        for address in (self.address, "unix:path=/nonexistent/bus"):
            probe = Probe(address)
            self.assertEqual(probe.priorities(), ["unchanged"] * 2)
            self.assertEqual(probe.end(), (0, ""))


if __name__ == "__main__":
    # Whoever runs the tests may have raised them.
    os.setpriority(os.PRIO_PROCESS, 0, max(0, os.getpriority(os.PRIO_PROCESS, 0)))
    for limit in (resource.RLIMIT_RTPRIO, resource.RLIMIT_NICE):
        resource.setrlimit(limit, (0, 0))
    if not MAY_GRANT:
        print("skipped: what granted threads get (it takes root to grant it)")
    threading.Thread(target=GLib.MainLoop().run, daemon=True).start()
    unittest.main()
