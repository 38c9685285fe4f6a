# SPDX-License-Identifier: GPL-3.0-or-later
"""What each of these tests begins with: the way to the modules, and the window of one process.

Import it first. Ends the test with 77, which ctest takes for "skipped", where the modules' own needs are missing.
"""

import subprocess
import sys
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "scripts"), str(ROOT / "tests/link")]

try:
    import accessible
    import desktop
except ImportError as missing:
    print(f"skipped: {missing}")
    sys.exit(77)

CHARTS = "Realtime|Graphic"  # what the titles of their windows hold


class Window:
    """The main window of a process that was just started, and what else the process shows."""

    def __init__(self, process):
        self.process = process
        self.element = self.wait_for("frame", "Nevtora Meter")
        self.table = accessible.tables(self.element)[0]

    def showing(self, role, name=None):
        """Such elements; none while the program is busy."""

        def look():
            mine = [each for each in accessible.programs("nevtora-meter") if each.get_process_id() == self.process.pid]
            found = [each for program in mine for each in accessible.find_all(program, [role], name)]
            return [each for each in found if accessible.is_showing(each)]

        return accessible.attempt(look)

    def wait_for(self, role, name):
        return desktop.wait_for(name, lambda: self.showing(role, name))[0]

    def wait_until_gone(self, role, name, seconds=15):
        desktop.wait_for(f"No {name}", lambda: self.showing(role, name) == [], seconds)

    def press(self, name, element=None):
        accessible.press(accessible.find(element or self.element, "push button", name))

    def on_screen(self, name):
        """The ids of its windows whose titles hold it, a regular expression."""
        search = ["xdotool", "search", "--all", "--onlyvisible", "--pid", str(self.process.pid), "--name", name]
        return subprocess.run(search, capture_output=True, text=True).stdout.split()

    def open_charts(self):
        self.table.addRowSelection(2)
        self.press("Live Chart")
        self.press("TCP")
        desktop.wait_for("Charts", lambda: len(self.on_screen(CHARTS)) == 2)

    def open_preferences(self):
        self.press("Preferences")
        return self.wait_for("dialog", "Preferences")


def run_cases(case, *programs):
    """Runs the tests of a class on a desktop of their own; the command's first arguments are its `programs`."""

    def main():
        for name in programs:
            setattr(case, name, sys.argv.pop(1))
        with desktop.desktop() as case.children:
            accessible.check_available()
            unittest.main(verbosity=2)

    desktop.run_or_skip(main)
