#!/usr/bin/env python3
"""Threads without a right of their own to a real-time schedule get one from RTKit: a real program, a bus of its own, and a service
that stands in for RTKit.

Usage: realtime_kit_test.py PROBE
"""

import os
import resource
import subprocess
import sys
import unittest
from pathlib import Path

PROBE = sys.argv.pop(1)
HERE = Path(__file__).parent
PRIORITY, NICE = "5", "-11"
# Only root's stand-in can really schedule.
MAY_GRANT = os.geteuid() == 0


class Probe:
    """The program, without any right to raise its threads, on the bus of `environment`."""

    def __init__(self, environment):
        drop = ["setpriv", "--bounding-set=-all", "--inh-caps=-all"] if os.geteuid() == 0 else []

        def take_limits():
            # Whoever runs the tests may have raised them.
            os.setpriority(os.PRIO_PROCESS, 0, max(0, os.getpriority(os.PRIO_PROCESS, 0)))
            for limit in (resource.RLIMIT_RTPRIO, resource.RLIMIT_NICE):
                resource.setrlimit(limit, (0, 0))

        self.process = subprocess.Popen(drop + [PROBE], env=environment, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        stderr=subprocess.PIPE, text=True, preexec_fn=take_limits)
        self.threads = self.read()

    def read(self):
        """Priorities by thread."""
        return dict(self.process.stdout.readline().split() for _ in range(2))

    def priorities(self, command="now"):
        print(command, file=self.process.stdin, flush=True)
        return sorted(self.read().values())

    def close(self):
        _, errors = self.process.communicate()
        return self.process.returncode, errors


class RealtimeKitTest(unittest.TestCase):
    def setUp(self):
        bus = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address=1"], stdout=subprocess.PIPE,
                               stderr=subprocess.DEVNULL, text=True)
        self.addCleanup(lambda: (bus.terminate(), bus.communicate()))
        self.environment = dict(os.environ, DBUS_SYSTEM_BUS_ADDRESS=bus.stdout.readline().strip())

    def start_service(self, grants):
        service = subprocess.Popen(["/usr/bin/python3", str(HERE / "fake_realtime_kit.py"), grants], env=self.environment,
                                   stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.addCleanup(service.communicate)
        self.assertEqual(service.stdout.readline().strip(), "ready")
        return service

    def expect_requests(self, service, probe, lines):
        process = str(probe.process.pid)
        told = sorted(service.stdout.readline().split() for _ in range(len(lines) * 2))
        expected = sorted([kind, process, thread, level, answer] for thread in probe.threads for kind, level, answer in lines)
        self.assertEqual(told, expected)

    def expect_quiet_end(self, probe):
        self.assertEqual(probe.close(), (0, ""))

    def test_granted_threads_run_in_real_time_and_survive_a_long_run(self):
        service = self.start_service("all")
        probe = Probe(self.environment)
        self.assertEqual(len(probe.threads), 2)
        self.expect_requests(service, probe, [("realtime", PRIORITY, "granted")])
        if MAY_GRANT:
            self.assertEqual(probe.priorities(), ["realtime"] * 2)
            probe.priorities("spin")
            self.assertEqual(probe.priorities(), ["unchanged"] * 2)
        self.expect_quiet_end(probe)

    def test_refused_threads_are_raised_where_that_is_granted(self):
        service = self.start_service("nice")
        probe = Probe(self.environment)
        self.expect_requests(service, probe, [("realtime", PRIORITY, "refused"), ("nice", NICE, "granted")])
        if MAY_GRANT:
            self.assertEqual(probe.priorities(), ["raised"] * 2)
        self.expect_quiet_end(probe)

    def test_refusals_change_nothing(self):
        service = self.start_service("nothing")
        probe = Probe(self.environment)
        self.expect_requests(service, probe, [("realtime", PRIORITY, "refused"), ("nice", NICE, "refused")])
        self.assertEqual(probe.priorities(), ["unchanged"] * 2)
        self.expect_quiet_end(probe)

    def test_neither_service_nor_bus_is_missed(self):
        for address in (self.environment["DBUS_SYSTEM_BUS_ADDRESS"], "unix:path=/nonexistent/bus"):
            probe = Probe(dict(self.environment, DBUS_SYSTEM_BUS_ADDRESS=address))
            self.assertEqual(probe.priorities(), ["unchanged"] * 2)
            self.expect_quiet_end(probe)


if __name__ == "__main__":
    if not MAY_GRANT:
        print("skipped: what granted threads get (it takes root to grant it)")
    unittest.main()
