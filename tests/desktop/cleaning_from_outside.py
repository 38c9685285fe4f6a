#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""One user cleans a real daemon's year of history by the preferences, while another one's window shows it too.

    netns own_settings cleaning_from_outside.py WINDOW DAEMON

Both are programs. Ends with 77, which ctest takes for "skipped", where a desktop cannot be made.
"""

import tempfile
import unittest
from pathlib import Path

from setting import CHARTS, Window, accessible, desktop, run_cases

import wire
from client import Client

DIALOG = "Cleaning database..."
START_LIMIT = 90  # seconds; the demo writes a year of history first


class FrontEnd(Window):
    """A user's window. A user has one, so each is given a runtime folder of its own."""

    def __init__(self, children, program, folder):
        super().__init__(children.start(["env", f"XDG_RUNTIME_DIR={folder}", program]))

    def received(self):
        """Of all applications, in MB."""
        return float(accessible.rows(self.table, 1)[0][4])


class Cleaning(unittest.TestCase):
    window_program = daemon_program = None  # `nevtora-meter` and `nevtora-daemon`
    children = None  # the desktop's

    def setUp(self):
        self.folder = self.enterContext(tempfile.TemporaryDirectory(prefix="nevtora-cleaning-"))
        command = [self.daemon_program, "--demo", "--database", f"{self.folder}/history.sqlite"]
        self.addCleanup(desktop.end, self.children.start(command))
        self.client = self.enterContext(desktop.wait_for("A daemon", self.reach, START_LIMIT))

    def reach(self):
        try:
            return Client(("127.0.0.1", wire.PORT))
        except ConnectionRefusedError:
            return None

    def start_front_end(self, name):
        folder = Path(self.folder, name)
        folder.mkdir(mode=0o700)
        front_end = FrontEnd(self.children, self.window_program, folder)
        self.addCleanup(desktop.end, front_end.process)
        return front_end

    def counted(self):
        """Of all applications, in MB."""
        return self.client.ask(wire.TOTAL_STATISTIC_INFO)["totalReceivedBytes"] / 2**20

    def check_starts_from_zero(self, front_end, before):
        """Shows again what the daemon counts, little as it is; both go on meanwhile."""
        def look():
            least = self.counted()
            return least - 0.001 <= front_end.received() <= self.counted() + 0.001

        desktop.wait_for("The count", lambda: accessible.attempt(look))
        self.assertLess(front_end.received(), before / 1000)

    def test_everybody_s_charts_close_and_all_figures_start_from_zero(self):
        mine, theirs = self.start_front_end("mine"), self.start_front_end("theirs")
        before = self.counted()
        for front_end in (mine, theirs):
            self.assertAlmostEqual(front_end.received() / before, 1, places=3)
            front_end.open_charts()
        mine.press("Clean All Data Now", mine.open_preferences())
        for front_end in (mine, theirs):
            front_end.wait_for("dialog", DIALOG)
        for front_end in (mine, theirs):
            self.assertEqual(front_end.on_screen(CHARTS), [])
            front_end.wait_until_gone("dialog", DIALOG)
            self.check_starts_from_zero(front_end, before)
        self.client.wait_for_event(wire.CLEANING_ENDED)
        self.assertEqual([event for event, _ in self.client.events if event in (2, 3)], [2, 3])

        mine.press("OK", mine.wait_for("dialog", "Preferences"))
        first = theirs.received()
        desktop.wait_for("More traffic", lambda: theirs.received() > first)
        theirs.open_charts()


if __name__ == "__main__":
    run_cases(Cleaning, "window_program", "daemon_program")
