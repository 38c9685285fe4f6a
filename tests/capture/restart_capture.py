#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Ends and starts daemons that capture in the kernel while a connection lasts, and looks at what stays.

    restart_capture.py DAEMON

Takes root. Where it cannot run it says why and ends with 77, which ctest takes for "skipped".
"""

import json
import os
import shutil
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

from capturing_daemon import CapturingDaemon, skip_where_it_cannot_run
from network import Namespace, dying_with_us

WRITTEN_WITHIN = 2.5  # seconds: a poll and a write
BYTES = 100_000

# Sends to itself what each line asks for.
TALKER = """
import socket
with socket.create_server(("127.77.0.1", 0)) as listener:
    near = socket.create_connection(listener.getsockname())
    far = listener.accept()[0]
while line := input():
    near.sendall(bytes(int(line)))
    rest = int(line)
    while rest:
        rest -= len(far.recv(rest))
    print(flush=True)
"""


class CaptureThatEnds(unittest.TestCase):
    daemon_program = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="nevtora-restart-")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        namespace = Namespace()
        self.addCleanup(namespace.close)
        self.path = self.folder / "talker"  # an interpreter of our own
        shutil.copy(os.path.realpath(sys.executable), self.path)
        self.talker = subprocess.Popen(
            dying_with_us(namespace.inside([self.path, "-S", "-c", TALKER])),
            **dict(stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True),
            env=os.environ | {"PYTHONHOME": sys.base_prefix},
        )
        self.addCleanup(self.talker.communicate)
        self.addCleanup(self.talker.kill)

    def talk(self, count):
        self.talker.stdin.write(f"{count}\n")
        self.talker.stdin.flush()
        self.talker.stdout.readline()

    def start(self):
        daemon = CapturingDaemon(self.daemon_program, self.folder)
        self.addCleanup(daemon.close)
        self.assertTrue(daemon.kernel_programs())
        return daemon

    def check_nothing_is_left(self, programs):
        """The kernel lets go of them in its own time."""
        deadline = time.monotonic() + 10
        while True:
            shown = json.loads(subprocess.run(["bpftool", "-j", "prog"], check=True, capture_output=True).stdout)
            left = programs & {program["id"] for program in shown}
            if not left or time.monotonic() > deadline:
                self.assertFalse(left, "programs in the kernel after the daemon's end")
                return
            time.sleep(0.1)

    def test_each_daemon_counts_what_moves_in_its_time_and_leaves_nothing_behind(self):
        self.talk(BYTES)  # before the first
        for end in ("stop", "close", "stop"):  # told to end, killed, told to end
            daemon = self.start()
            programs = daemon.kernel_programs()
            self.talk(BYTES)
            time.sleep(WRITTEN_WITHIN if end == "close" else 0)
            getattr(daemon, end)()
            self.check_nothing_is_left(programs)
            self.talk(BYTES)  # when there is none
        self.assertEqual(daemon.history()[str(self.path)].payload, (3 * BYTES, 3 * BYTES))


if __name__ == "__main__":
    skip_where_it_cannot_run()
    CaptureThatEnds.daemon_program = sys.argv[1]
    unittest.main(argv=sys.argv[:1], verbosity=2)
