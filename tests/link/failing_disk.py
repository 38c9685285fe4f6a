#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Takes a real daemon's disk away and looks at what is counted all the same.

    netns unshare --mount failing_disk.py PROGRAM

PROGRAM is `nevtora-daemon`. Ends with 77, skipped, where the system lets us mount no disk of our own.
"""

import contextlib
import signal
import sqlite3
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

import counted_programs

DISK = 64 << 20  # bytes; two interpreters are on it, too
TOLD_WITHIN = 10  # seconds


class FailingDisk(counted_programs.CountedPrograms):
    logs = None  # a folder on another disk

    def setUp(self):
        super().setUp()
        self.log = Path(self.logs) / self.id()

    def fill(self):
        with open(self.folder / "filler", "wb", buffering=0) as filler:
            for size in (1 << 20, 1 << 12):
                try:
                    while True:
                        filler.write(bytes(size))
                except OSError:
                    pass

    def wait_for_log(self, text):
        deadline = time.monotonic() + TOLD_WITHIN
        while text not in self.log.read_text():
            self.assertLess(time.monotonic(), deadline, f"{text}: not in\n{self.log.read_text()}")
            time.sleep(0.05)

    def stop_and_check(self):
        """Answers what is on disk of the plain program, once that is found to be sound."""
        self.client.socket.close()
        self.daemon.end(signal.SIGKILL)
        with contextlib.closing(sqlite3.connect(self.folder / "history.sqlite")) as database:
            self.assertEqual(database.execute("PRAGMA integrity_check").fetchone(), ("ok",))
            by_path = dict(database.execute(
                "SELECT path, sum(sent) FROM (SELECT path, max(moment), sent FROM series "
                "LEFT JOIN applications ON id = application GROUP BY application, class) GROUP BY path"
            ))
        self.assertEqual(by_path.pop(None), sum(by_path.values()), "the sum of all is another one")
        return by_path.get(self.plain, 0)

    def test_a_full_disk_delays_the_history_and_costs_none_of_it(self):
        self.start_daemon()
        self.check_counted(self.plain)
        self.fill()
        self.wait_for_log("the history waits until it can be written")
        for _ in range(3):
            self.check_counted(self.plain)
        counted = self.sent(self.plain)
        (self.folder / "filler").unlink()
        self.wait_for_log("the history goes on; connections lost meanwhile: 0")
        self.assertGreaterEqual(self.stop_and_check(), counted)
        self.assertEqual(self.log.read_text().count("history waits"), 1, self.log.read_text())
        self.assertEqual(self.log.read_text().count("history goes on"), 1)


def main():
    counted_programs.CountedPrograms.daemon_program = sys.argv.pop(1)
    with tempfile.TemporaryDirectory(prefix="nevtora-disk-") as disk, tempfile.TemporaryDirectory() as FailingDisk.logs:
        if subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={DISK}", "tmpfs", disk]).returncode != 0:
            return 77
        tempfile.tempdir = disk
        try:
            return not unittest.main(verbosity=2, exit=False).result.wasSuccessful()
        finally:
            subprocess.run(["umount", disk], check=True)


if __name__ == "__main__":
    sys.exit(main())
