#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Downloads a file over a cable and looks when, and with how many bytes, the window shows it.

    own_settings download_from_outside.py WINDOW DAEMON

Both are programs; the daemon chooses its source by itself. The environment's PICTURE is where to save how the window
looks at the end. Takes root. Ends with 77, which ctest takes for "skipped", where it cannot run.
"""

import ctypes
import os
import shutil
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

from setting import ROOT, Window, accessible, desktop, run_cases

sys.path.append(str(ROOT / "tests/capture"))

import wire
from capturing_daemon import skip_where_it_cannot_run
from network import Network
from real_daemon import RealDaemon

FILE_BYTES = 50_000_000
FAR, PORT = "10.77.0.2", 8080
REFRESH = 5  # seconds between two refreshes of the window
POLL = 1  # seconds between two of the daemon's looks at the kernel's tables
PATIENCE = 1  # seconds for a screen reader to get at the rows on a busy machine
HEADERS = 0.05  # of a download, at most; those of full packets are 3.6%
CLONE_NEWNET = 0x40000000

FETCH = """
import sys, urllib.request
with urllib.request.urlopen(sys.argv[1]) as reply:
    size = 0
    while piece := reply.read(1 << 16):
        size += len(piece)
print(size)
"""


def enter(namespace):
    """Puts this process, and all that it starts from now on, into a network namespace."""
    with open(f"/proc/{namespace.holder.pid}/ns/net") as file:
        if ctypes.CDLL(None, use_errno=True).setns(file.fileno(), CLONE_NEWNET):
            raise OSError(ctypes.get_errno(), "setns")


def a_byte_count(megabytes):
    return float(megabytes) * 2**20


class Download(unittest.TestCase):
    window_program = daemon_program = None
    children = None  # the desktop's
    network = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="nevtora-download-")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name).resolve()

    def start(self, command, **options):
        process = self.children.start(command, **options)
        self.addCleanup(desktop.end, process)
        return process

    def start_daemon(self):
        """Answers its status."""
        options = "--database", self.folder / "history.sqlite"
        daemon = RealDaemon(self.daemon_program, self.folder / "log", *options, "--config", self.folder / "none.plist",
                            address=("127.0.0.1", wire.PORT))
        self.addCleanup(daemon.end)
        return subprocess.run([self.daemon_program, "--status", *options], check=True, stdout=subprocess.PIPE,
                              text=True).stdout

    def start_server(self):
        site = self.folder / "site"
        site.mkdir()
        with open(site / "file", "wb") as file:
            file.truncate(FILE_BYTES)
        server = [sys.executable, "-m", "http.server", str(PORT), "--bind", FAR, "--directory", site]
        self.start(self.network.far.inside(server), stderr=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
        listening = f"sport = :{PORT}"
        desktop.wait_for("The server", lambda: self.network.far.run("ss", "-Hltn", listening))

    def download(self):
        """By a program of its own; answers its executable and what it says that it got."""
        path = self.folder / "fetcher"
        shutil.copy(os.path.realpath(sys.executable), path)
        command = [path, "-S", "-c", FETCH, f"http://{FAR}:{PORT}/file"]
        environment = {"PYTHONHOME": sys.base_prefix}
        return str(path), int(subprocess.run(command, env=environment, check=True, stdout=subprocess.PIPE).stdout)

    def row_of(self, table, path):
        """By the columns' titles; None while it is not there."""
        titles = accessible.header(table)
        rows = [dict(zip(titles, cells)) for cells in accessible.attempt(lambda: accessible.rows(table)) or []]
        return next((row for row in rows if row["Path"] == path), None)

    def shows_all_of_it(self, table, path):
        row = self.row_of(table, path)
        return row if row and a_byte_count(row["Received, MB"]) >= FILE_BYTES else None

    def adds_up(self, table):
        """Whether the totals row is the sum of the others, which are rounded to 1 KB."""
        titles, rows = accessible.header(table), accessible.rows(table)
        for title in ("Received, MB", "Sent, MB"):
            totals, *others = (float(cells[titles.index(title)]) for cells in rows)
            if abs(totals - sum(others)) > 0.001 * len(rows):
                return False
        return totals > 0

    def test_the_next_refresh_shows_a_download(self):
        self.assertRegex(self.start_daemon(), r"\Asource: +bpf,", "of all sources it sees most")
        self.start_server()
        window = Window(self.start([self.window_program]))
        table = window.table
        path, got = self.download()
        ended = time.monotonic()
        self.assertEqual(got, FILE_BYTES)
        limit = POLL + REFRESH + PATIENCE
        row = desktop.first_result(lambda: self.shows_all_of_it(table, path), limit)
        self.assertTrue(row, f"not shown within {limit} s: {self.row_of(table, path)}")
        print(f"{row} {time.monotonic() - ended:.1f} s after its end")
        self.assertEqual(row["Name"], "fetcher")
        self.assertLessEqual(a_byte_count(row["Received, MB"]), FILE_BYTES * (1 + HEADERS))
        self.assertLess(a_byte_count(row["Sent, MB"]), FILE_BYTES * HEADERS)
        self.assertTrue(desktop.first_result(lambda: accessible.attempt(lambda: self.adds_up(table)), 2 * REFRESH),
                        "the totals row is not the sum of the others")
        if picture := os.environ.get("PICTURE"):
            desktop.save_picture(desktop.windows_of(window.process)[0], picture)


if __name__ == "__main__":
    skip_where_it_cannot_run()
    Download.network = Network()
    try:
        enter(Download.network.near)  # the desktop too: its bus is not seen from elsewhere
        run_cases(Download, "window_program", "daemon_program")
    finally:
        Download.network.close()
