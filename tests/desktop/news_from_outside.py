#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Tells a window of new applications and of cleanings, and looks at what the desktop and the user get to see.

    netns own_settings news_from_outside.py PROGRAM

The daemon and the notification service are scripted ones. Ends with 77, which ctest takes for "skipped", where a
desktop cannot be made.
"""

import signal
import subprocess
import time
import unittest

from setting import CHARTS, Window, accessible, desktop, run_cases

import scripted_daemon
import wire
from notification_service import NotificationService

TITLE = "Cleaning database..."
TEXT = "Please wait some time while Nevtora Meter clean database."
REFRESH = 5  # seconds between two refreshes of the window
PROMPT = 4  # seconds for what must not wait for the next refresh


class CleanedDaemon(scripted_daemon.ScriptedDaemon):
    is_cleaning = False
    events = []  # that front ends sent

    def take_event(self, event):
        CleanedDaemon.events.append(event["eventId"])

    def answer(self, request, values):
        if request is wire.IS_CLEANING:
            return {"isClean": int(CleanedDaemon.is_cleaning)}
        return super().answer(request, values)


class News(unittest.TestCase):
    program = None  # `nevtora-meter`
    children = None  # the desktop's

    def setUp(self):
        CleanedDaemon.is_cleaning = False
        CleanedDaemon.events = []
        self.applications = scripted_daemon.few_applications()
        self.server = scripted_daemon.Server(self.applications, daemon=CleanedDaemon)
        self.enterContext(self.server)

    def start(self):
        self.process = self.children.start([self.program])
        self.addCleanup(desktop.end, self.process)
        self.window = Window(self.process)
        self.table = self.window.table

    def serve(self, **abilities):
        """A notification service, until the end of the test at the latest."""
        service = NotificationService(**abilities)
        self.addCleanup(service.die)
        return service

    def active_window(self):
        return subprocess.run(["xdotool", "getactivewindow"], capture_output=True, text=True).stdout.strip()

    def add_application(self, name):
        application = scripted_daemon.make_application(len(self.applications), name, "/usr/bin/new", 1)
        self.applications.append(application)
        self.server.tell(wire.NEW_APPLICATION, application["id"])

    def wait_for_notification(self, service, number):
        desktop.wait_for(f"Notification {number}", lambda: len(service.notifications) >= number)
        return service.notifications[number - 1]

    def start_cleaning(self):
        self.server.tell(wire.CLEANING_STARTED)
        return self.window.wait_for("dialog", TITLE)

    def end_cleaning(self):
        self.server.tell(wire.CLEANING_ENDED)
        self.window.wait_until_gone("dialog", TITLE)

    def test_new_applications_are_told_to_the_desktop_and_a_click_brings_the_window(self):
        service = self.serve()
        self.start()
        self.add_application("<b>50%</b> & %@ %1\n\a\u202e")
        self.add_application("second")
        first = self.wait_for_notification(service, 1)
        self.assertEqual(first[:4], ("Nevtora Meter", 0, "nevtora-meter", "New application added to list"))
        self.assertEqual(first.body, "New application (&lt;b&gt;50%&lt;/b&gt; &amp; %@ %1\u240a\u2407\ufffd) open network "
                         "connection, and it added to Nevtora Meter applications list")
        self.assertEqual(first.actions[0], "default")
        self.assertEqual({key: first.hints[key] for key in ("urgency", "desktop-entry")},
                         {"urgency": 1, "desktop-entry": "nevtora-meter"})
        width, height, row_bytes, has_alpha, bits, samples, pixels = first.hints["image-data"]
        self.assertEqual((width, height, row_bytes, has_alpha, bits, samples, len(pixels)),
                         (64, 64, 256, True, 8, 4, 64 * 256))
        self.assertEqual(first.milliseconds, -1)
        self.assertIn("(second)", self.wait_for_notification(service, 2).body)
        service.close(1)

        [window] = self.window.on_screen("Nevtora")
        subprocess.run(["xdotool", "windowminimize", "--sync", window], check=True)
        before = self.table.nRows
        self.applications.append(self.applications[0])
        service.click(2, "token")
        desktop.wait_for("The window in front", lambda: self.active_window() == window, PROMPT)
        self.assertGreater(self.table.nRows, before)

    def test_a_slow_or_dying_service_keeps_nobody_waiting(self):
        slow = self.serve(delay=3600)
        self.start()
        self.add_application("first")
        time.sleep(1)
        began = time.monotonic()
        for row in (3, 4, 5):
            self.table.addRowSelection(row)
            self.window.press("Additional Info >>>" if row % 2 else "Additional Info <<<")
            accessible.rows(self.table, 1)
            time.sleep(0.3)
        self.assertLess(time.monotonic() - began, 10)
        slow.die()
        next_one = self.serve(capabilities=("body",))
        self.add_application("<second>")
        self.assertIn("(<second>)", self.wait_for_notification(next_one, 1).body)

    def test_a_cleaning_closes_the_charts_and_has_a_dialog_until_its_end(self):
        service = self.serve()
        self.start()
        self.add_application("new")
        self.wait_for_notification(service, 1)
        self.window.open_charts()
        sheet = self.window.open_preferences()
        self.window.press("Clean All Data Now", sheet)
        desktop.wait_for("A wish", lambda: CleanedDaemon.events == [wire.START_CLEANING])

        [main] = self.window.on_screen("^Nevtora Meter$")
        subprocess.run(["xdotool", "windowminimize", "--sync", main], check=True)
        dialog = self.start_cleaning()
        self.assertEqual(self.window.on_screen(CHARTS), [])
        self.assertEqual([each.name for each in accessible.find_all(dialog, ["label"])], [TEXT])
        self.assertEqual(accessible.find_all(dialog, ["push button"]), [])
        [window] = self.window.on_screen(TITLE)
        self.server.tell(wire.CLEANING_STARTED)
        subprocess.run(["xdotool", "windowactivate", "--sync", window, "key", "Escape", "alt+F4"], check=True)
        del self.applications[3:]
        rows = lambda: self.table.nRows == 4
        desktop.wait_for("A refresh", rows, REFRESH + PROMPT)
        service.click(1, "")
        desktop.wait_for("The main window", lambda: main in self.window.on_screen("Nevtora"), PROMPT)
        time.sleep(1)
        self.assertEqual(self.active_window(), window)
        del self.applications[:]
        self.end_cleaning()
        desktop.wait_for("A refresh", lambda: self.table.nRows == 1, PROMPT)
        self.window.press("OK", sheet)

    def test_a_cleaning_without_its_daemon_or_its_beginning(self):
        CleanedDaemon.is_cleaning = True
        self.start()
        self.window.wait_for("dialog", TITLE)
        self.end_cleaning()
        self.server.tell(wire.CLEANING_ENDED)
        self.start_cleaning()
        self.server.close()
        self.window.wait_until_gone("dialog", TITLE, REFRESH + PROMPT)

    def test_the_session_can_end_the_program_while_the_dialog_is_up_and_amid_a_computation(self):
        for begin in (self.start_cleaning, lambda: self.window.open_charts()):
            self.start()
            begin()
            self.process.send_signal(signal.SIGTERM)
            self.assertEqual(self.process.wait(PROMPT + 1), 0)


if __name__ == "__main__":
    run_cases(News, "program")
