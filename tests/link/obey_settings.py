#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Changes the settings file of a real daemon and holds it to docs/settings.md.

    netns obey_settings.py PROGRAM

PROGRAM is `nevtora-daemon`.
"""

import plistlib
import sys
import time
import unittest

import counted_programs
import wire

ALL, ONLY_LISTED, ALL_BUT_LISTED = 0, 1, 2


class ObeysSettings(counted_programs.CountedPrograms):
    def setUp(self):
        super().setUp()
        self.settings = self.folder / "settings.plist"
        self.options = ["--config", self.settings]

    def write_settings(self, mode, *paths):
        self.settings.write_bytes(plistlib.dumps({"AllowDenyAppsMode": mode, "AllowDenyApps": list(map(str, paths))}))

    def change_settings(self, mode, *paths, times=1):
        self.write_settings(mode, *paths)
        for _ in range(times):
            self.client.send_event(wire.CONFIGURATION_CHANGED)
        self.changed_at = time.monotonic()

    def test_what_the_file_says_is_recorded_and_nothing_else(self):
        link = self.folder / "link"
        link.symlink_to(self.plain)
        self.write_settings(ALL_BUT_LISTED, self.folder / "Bundled.app")
        self.start_daemon()
        self.check_counted(self.plain)
        self.check_counted(self.plain)  # the first poll is where counting begins
        self.assertIsNone(self.sent(self.bundled))

        self.change_settings(ALL)
        self.check_counted(self.bundled)

        self.change_settings(ALL_BUT_LISTED, link, times=1000)
        counted = self.check_only_one_counted(self.bundled, self.plain)
        closed = self.connections(self.plain)
        self.assertEqual([row["sendedBytes"] for row in closed], [counted])

        self.change_settings(ONLY_LISTED, link)
        still = self.check_only_one_counted(self.plain, self.bundled)

        self.restart_daemon()
        self.check_counted(self.plain)
        self.assertEqual(self.sent(self.bundled), still)
        rows = self.connections(self.plain)
        self.assertEqual(rows[0], closed[0])
        self.assertGreater(rows[1]["startTime"], rows[0]["endTime"])
        self.assertEqual(self.log.read_text().count("records all applications but 1,"), 2, self.log.read_text())


if __name__ == "__main__":
    counted_programs.CountedPrograms.daemon_program = sys.argv.pop(1)
    unittest.main(verbosity=2)
