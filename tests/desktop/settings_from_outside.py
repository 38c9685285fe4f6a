#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Uses the preferences as a person does and looks at what a real daemon counts then.

    netns own_settings settings_from_outside.py WINDOW DAEMON

Both are programs. Ends with 77, which ctest takes for "skipped", where a desktop cannot be made.
"""

import os
import plistlib
import sys
import time
import unittest
from contextlib import contextmanager
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "scripts"), str(ROOT / "tests/link")]

try:
    import accessible
    import desktop
except ImportError as missing:
    print(f"skipped: {missing}")
    sys.exit(77)

import counted_programs

SYSTEM_FILE = Path("/Library/Preferences/com.qv.Nevtora Meter.plist")
ALL_BUT_LISTED = "Record all applications except those on this list"
AUTOSTART = "Start Nevtora Meter when you log in"


class Sheet:
    """The preferences of a window, opened by its button."""

    def __init__(self, process):
        self.process = process
        window = self._wait_for("frame", "Nevtora Meter")
        accessible.press(accessible.find(window, "push button", "Preferences"))
        self.element = self._wait_for("dialog", "Preferences")
        self.table = accessible.tables(self.element)[0]

    def _wait_for(self, role, name):
        def look():
            programs = [program for program in accessible.programs("nevtora-meter")
                        if program.get_process_id() == self.process.pid]
            found = [element for program in programs for element in accessible.find_all(program, [role], name)
                     if accessible.is_showing(element)]
            return found[0] if found else None

        return desktop.wait_for(name, lambda: accessible.attempt(look))

    def control(self, role, name):
        return accessible.find(self.element, role, name)

    def paths(self):
        return [cells[-1] for cells in accessible.rows(self.table)]

    def choose_to_add(self, letters):
        """The item of the menu that begins with these; screen readers do not see the menu."""
        desktop.click(*accessible.middle(self.control("push button", "Add")))
        time.sleep(0.5)
        desktop.press(*letters, "Return")

    def add(self, letters):
        before = len(self.paths())
        self.choose_to_add(letters)
        desktop.wait_for("A row", lambda: len(self.paths()) > before)

    def look_through_the_file_dialog(self):
        """As a screen reader does, while the dialog fills."""
        self.choose_to_add("oth")
        dialog = self._wait_for("dialog", "Add Application")
        end = time.monotonic() + 3
        while time.monotonic() < end:
            accessible.attempt(lambda: [element.name for element in accessible.elements(dialog)])
            tables = accessible.find_all(dialog, ["list", "table", "tree"])
            accessible.attempt(lambda: [child.name for table in tables for child in table])
        desktop.press("Escape")

    def end(self):
        """Answers when."""
        accessible.press(self.control("push button", "OK"))
        return time.monotonic()


class Settings(counted_programs.CountedPrograms):
    window_program = None  # `nevtora-meter`
    children = None  # the desktop's

    @contextmanager
    def sheet(self):
        window = self.children.start([self.window_program])
        yield Sheet(window)
        desktop.end(window)

    def test_the_daemon_obeys_the_sheet_and_both_remember(self):
        self.start_daemon()
        self.check_counted(self.plain)
        self.check_counted(self.bundled)
        with self.sheet() as sheet:
            accessible.press(sheet.control("radio button", ALL_BUT_LISTED))
            sheet.look_through_the_file_dialog()
            sheet.add("pl")
            self.assertEqual(sheet.paths(), [self.plain])
            accessible.press(sheet.control("check box", AUTOSTART))
            self.changed_at = sheet.end()
            still = self.check_only_one_counted(self.bundled, self.plain)
        self.assertEqual(plistlib.loads(SYSTEM_FILE.read_bytes()),
                         {"AllowDenyAppsMode": 2, "AllowDenyApps": [self.plain]})
        self.assertEqual(plistlib.loads(Path(os.environ["HOME"], ".Nevtora Meter.conf.plist").read_bytes()),
                         {"IsAutostarted": False})

        self.restart_daemon()
        self.check_counted(self.bundled)
        self.assertEqual(self.sent(self.plain), still)
        with self.sheet() as sheet:
            self.assertTrue(accessible.is_checked(sheet.control("radio button", ALL_BUT_LISTED)))
            self.assertFalse(accessible.is_checked(sheet.control("check box", AUTOSTART)))
            self.assertEqual(sheet.paths(), [self.plain])
            sheet.table.addRowSelection(0)
            accessible.press(sheet.control("push button", "Remove"))
            accessible.press(sheet.control("check box", AUTOSTART))
            self.changed_at = sheet.end()
            self.check_counted(self.plain)
        entry = Path(os.environ["XDG_CONFIG_HOME"], "autostart/nevtora-meter.desktop").read_text()
        self.assertIn(f'\nExec="{self.window_program}"\n', entry)


def main():
    Settings.window_program, Settings.daemon_program = sys.argv.pop(1), sys.argv.pop(1)
    with desktop.desktop() as Settings.children:
        accessible.check_available()
        unittest.main(verbosity=2)


if __name__ == "__main__":
    desktop.run_or_skip(main)
