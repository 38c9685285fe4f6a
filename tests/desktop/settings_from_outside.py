#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Uses the preferences as a person does and looks at what a real daemon counts then.

    netns own_settings settings_from_outside.py WINDOW DAEMON

Both are programs. Ends with 77, which ctest takes for "skipped", where a desktop cannot be made.
"""

import os
import plistlib
import time
from contextlib import contextmanager
from pathlib import Path

from setting import Window, accessible, desktop, run_cases

import counted_programs

SYSTEM_FILE = Path("/Library/Preferences/com.qv.Nevtora Meter.plist")
ALL_BUT_LISTED = "Record all applications except those on this list"
AUTOSTART = "Start Nevtora Meter when you log in"


class Sheet(Window):
    """The preferences of a window, opened by its button."""

    def __init__(self, process):
        super().__init__(process)
        self.element = self.open_preferences()
        self.table = accessible.tables(self.element)[0]

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
        dialog = self.wait_for("dialog", "Add Application")
        end = time.monotonic() + 3
        while time.monotonic() < end:
            accessible.attempt(lambda: [element.name for element in accessible.elements(dialog)])
            tables = accessible.find_all(dialog, ["list", "table", "tree"])
            accessible.attempt(lambda: [child.name for table in tables for child in table])
        desktop.press("Escape")

    def end(self):
        """Answers when."""
        self.press("OK")
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
            sheet.press("Remove")
            accessible.press(sheet.control("check box", AUTOSTART))
            self.changed_at = sheet.end()
            self.check_counted(self.plain)
        entry = Path(os.environ["XDG_CONFIG_HOME"], "autostart/nevtora-meter.desktop").read_text()
        self.assertIn(f'\nExec="{self.window_program}"\n', entry)


if __name__ == "__main__":
    run_cases(Settings, "window_program", "daemon_program")
