#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Lets a real daemon capture every kind of traffic in the kernel, and compares what it books with what the programs
say that they moved and with what crossed the cables.

    attribute_traffic.py [--only TEXT] DAEMON GENERATOR

Takes root. Where it cannot run it says why and ends with 77, which ctest takes for "skipped".
"""

import argparse
import ipaddress
import sys
import tempfile
import time
import unittest
from collections import Counter
from pathlib import Path

from capturing_daemon import CapturingDaemon, skip_where_it_cannot_run
from kinds import KINDS
from network import Network
from trial import Trial

WIRE_TOLERANCE = 0.01
OURS = [ipaddress.ip_network(text) for text in ("10.66.0.0/16", "10.76.0.0/14", "127.77.0.0/16", "fd77::/16")]
KERNEL = ""
FOLDER_PREFIX = "nevtora-capture-"
INPUT, OUTPUT = 0, 1
NEVER = ("lost", "no room for an end", "no memory for a socket", "no room for a name", "not understood")
BESIDES = (
    "test_nothing_is_lost",
    "test_nothing_is_booked_to_strangers",
    "test_connections_add_up_to_their_applications",
)

options = None
trials = {}  # by kind's name
booked = {}  # by executable, as the daemon tells
losses = {}  # by name, of those that no kind should bring about
kept = {}  # as it has written in the end
connections = []


def setUpModule():
    folder = tempfile.TemporaryDirectory(prefix=FOLDER_PREFIX)
    unittest.addModuleCleanup(folder.cleanup)
    network = Network()
    unittest.addModuleCleanup(network.close)
    for kind in KINDS:
        if options.only in kind.name and not kind.lacks():
            trials[kind.name] = Trial(kind, network, Path(folder.name), options.generator)
    older = [trial for trial in trials.values() if trial.kind.is_older]
    for trial in older:
        trial.start()
    daemon = CapturingDaemon(options.daemon, Path(folder.name))
    unittest.addModuleCleanup(daemon.close)
    for trial in trials.values():
        trial.run()
    time.sleep(max([0, *(trial.booked_at - time.monotonic() for trial in trials.values())]))
    apart = {trial.paths[role] for trial in trials.values() for role in trial.kind.apart}

    def executable(path):
        """By the path that the test gave it; what is apart must be told from what the machine has there."""
        inside = path.removeprefix("(sandbox)")
        return inside if (path == inside) != (inside in apart) else f"wrongly {path}"

    booked.update((executable(path), application) for path, application in daemon.applications().items())
    losses.update((name, text) for name, text in daemon.status().items() if name in NEVER)
    daemon.stop()
    connections.extend(row._replace(path=executable(row.path)) for row in daemon.connections())
    kept.update((executable(path), application) for path, application in daemon.history().items())
    for path, application in kept.items():
        if path in booked:  # not of others that came meanwhile
            booked[path].payload = application.payload


class AttributedTraffic(unittest.TestCase):
    def check_kind(self, kind):
        if reason := kind.lacks():
            self.skipTest(reason)
        trial = trials[kind.name]
        if trial.failure:
            raise trial.failure
        self.check_payload(trial)
        self.check_wire(trial)
        if kind.directions:
            self.check_directions(trial)
        for role, most in kind.most_rows.items():
            self.assertLessEqual(sum(row.path == trial.paths[role] for row in connections), most)

    def check_payload(self, trial):
        for role, path in trial.paths.items():
            if role in trial.kind.deaf:
                continue
            with self.subTest(role=role):
                if role in trial.kind.silent:
                    self.assertEqual(self.payload_of(path), (0, 0))
                    continue
                told = trial.told[path]
                self.assertIn(path, booked, f"it moved {told}")
                for way, expected, counted in zip(("received", "sent"), told, self.payload_of(path)):
                    self.check_close(counted, expected, trial.kind.payload_tolerance, f"payload {way}")

    def payload_of(self, path):
        return booked[path].payload if path in booked else (0, 0)

    def check_wire(self, trial):
        for what, expected, paths, way in trial.wire_expectations():
            with self.subTest(wire=what):
                counted = sum(booked[path].wire[way] for path in paths if path in booked)
                self.check_close(counted, expected, WIRE_TOLERANCE, "wire bytes")

    def check_close(self, counted, expected, tolerance, what):
        self.assertLessEqual(
            abs(counted - expected), tolerance * expected, f"{what}: {counted} counted instead of {expected}"
        )

    def check_directions(self, trial):
        for role, path in trial.paths.items():
            known = {INPUT} if "server" in role or role == "handler" else {OUTPUT}
            seen = {row.direction for row in connections if row.path == path}
            if role not in trial.kind.silent:
                with self.subTest(role=role):
                    self.assertEqual(seen, known, "directions of its connections")

    def test_nothing_is_lost(self):
        self.assertEqual(losses, {})

    def test_connections_add_up_to_their_applications(self):
        rows = Counter(), Counter()
        for row in connections:
            for way, count in zip(rows, row.wire):
                way[row.path] += count
        for path in kept:
            with self.subTest(path=path):
                self.assertEqual(tuple(way[path] for way in rows), kept[path].wire)

    def test_nothing_is_booked_to_strangers(self):
        strangers = [
            row
            for row in connections
            if row.path != KERNEL
            and FOLDER_PREFIX not in row.path  # there may be another run of this
            and any(end in net for end in (row.local, row.remote) for net in OURS if end.version == net.version)
        ]
        self.assertEqual(strangers[:20], [])


for _kind in KINDS:
    setattr(AttributedTraffic, f"test {_kind.name}", lambda self, kind=_kind: self.check_kind(kind))


def load_tests(loader, *_):
    names = [f"test {kind.name}" for kind in KINDS if options.only in kind.name]
    return unittest.TestSuite(map(AttributedTraffic, [*names, *BESIDES]))


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--only", default="", help="kinds with this text in their names")
    parser.add_argument("daemon")
    parser.add_argument("generator")
    options = parser.parse_args()
    skip_where_it_cannot_run()
    unittest.main(argv=sys.argv[:1], verbosity=2)
