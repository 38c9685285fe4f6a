#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Drives the window from outside: with the mouse, the keyboard and as a screen reader, on a desktop of its own.

    window_from_outside.py PROGRAM

The daemon is a scripted one with 12 applications, so that everything the window shows is known beforehand. Ends with
77, which ctest takes for "skipped", where a desktop cannot be made.
"""

import datetime
import os
import re
import signal
import subprocess
import sys
import time

from setting import Window, accessible, desktop

import scripted_daemon
import wire

SECONDS = 150  # the whole visit, of which a quiet machine needs 7
PATIENCE = 15  # seconds for one step on a busy one
ENVIRONMENT = {"TZ": "Europe/Berlin", "LC_ALL": "C.UTF-8"}  # the records lie on both sides of a change of clocks
BUTTONS = ("push button", "toggle button", "check box", "menu item", "check menu item")
COLUMNS = {"Name": "name", "Path": "fullPath", "Last activity": "endTime", "Received, MB": "totalReceivedBytes",
           "Sent, MB": "totalSendedBytes"}  # by what they sort
DETAILS = "Additional Info"
TOTALS = "All applications"
OPEN, CLOSED = "Additional Info <<<", "Additional Info >>>"  # the caption button's


def megabytes(count):
    return f"{count / 2**20:.3f}"


def date_text(moment):
    """As the window writes it; the zone, "GMT+1" or "GMT+2", is cut off."""
    return f"{moment:%A, %B} {moment.day}, {moment:%Y at %H:%M:%S} "


def ten_values(record, first, last):
    """What a panel shows of a record, by the values' descriptions."""
    values = {}
    for description, name in (("received", "Received"), ("sent", "Sended")):
        tcp, udp, total = (record[f"{kind}{name}Bytes"] for kind in ("tcp", "udp", "total"))
        bytes_by_kind = {"TCP": tcp, "UDP": udp, "Other": total - tcp - udp, "Total": total}
        values |= {f"{kind} {description}": megabytes(count) for kind, count in bytes_by_kind.items()}
    return values | {first: date_text(record["startTime"]), last: date_text(record["endTime"])}


class Visit(Window):
    """One window and what is known of it. Every step ends the script when it does not see what it should."""

    def __init__(self, program, children):
        self.program = program
        self.records = scripted_daemon.few_applications()
        super().__init__(children.start([program], env=os.environ | ENVIRONMENT))
        self.window = desktop.wait_for("The window", lambda: desktop.windows_of(self.process))[0]

    def frames(self):
        """The windows that programs with this one's name show."""
        programs = accessible.programs("nevtora-meter")
        frames = [frame for program in programs for frame in accessible.find_all(program, ["frame"])]
        return [frame for frame in frames if accessible.is_showing(frame)]

    def rows(self):
        return accessible.rows(self.table)

    def column(self, title):
        return accessible.header(self.table).index(title)

    def expect(self, what, look, wanted):
        """Looks again and again until it sees `wanted`."""
        end = time.monotonic() + PATIENCE
        while (seen := accessible.attempt(look)) != wanted:
            if time.monotonic() > end:
                sys.exit(f"{what}:\n  wanted {wanted}\n  seen   {seen}")
            time.sleep(0.02)

    def click(self, element, sideways=0):
        x, y = accessible.middle(element)
        desktop.click(x + sideways, y)

    def button(self, name):
        return accessible.find(self.element, "push button", name)

    def values(self, panel):
        """The texts of the panel that carry a description, by it and without their unit."""
        container = next(element for element in accessible.elements(self.element) if element.name == panel
                         and element.childCount > 0)
        labels = [element for element in accessible.elements(container) if element.description]
        return {re.sub(", MB$", "", label.description): label.name for label in labels}


def application_cells(number, record):
    path = record["fullPath"] or "/mach_kernel"
    received, sent = (megabytes(record[key]) for key in ("totalReceivedBytes", "totalSendedBytes"))
    return [str(number), "", record["name"], path, received, sent, date_text(record["endTime"])]


def now_in_berlin():
    os.environ["TZ"] = ENVIRONMENT["TZ"]
    time.tzset()
    return datetime.datetime.now()


def is_now(text):
    return any(text == date_text(now_in_berlin() - datetime.timedelta(seconds=age)) for age in range(8))


def reads_rows(visit):
    records = visit.records
    wanted = [application_cells(i + 2, record) for i, record in enumerate(records)]
    visit.expect("Rows below the totals row", lambda: visit.rows()[1:], wanted)
    totals = scripted_daemon.ScriptedDaemon(records).totals()
    counters = [megabytes(totals[key]) for key in ("totalReceivedBytes", "totalSendedBytes")]
    visit.expect("The totals row", lambda: visit.rows()[0][:-1], ["1", "", "Full Traffic", "No Path", *counters])
    visit.expect("A totals row of now", lambda: is_now(visit.rows()[0][-1]), True)
    print(f"{len(wanted) + 1} rows, 1 to {wanted[-1][0]}: {', '.join(cells[2] for cells in visit.rows())}")


def sorts_by_each_column(visit):
    """Three clicks on each header: ascending, descending, unsorted. Others than COLUMNS never sort."""
    name = visit.column("Name")
    titles = accessible.header(visit.table)
    for title in titles:
        key = COLUMNS.get(title, "id")
        for clicks, direction in enumerate((wire.ASCENDING, wire.DESCENDING, wire.UNSORTED)):
            # Never twice at one place: the second would be half of a double click.
            visit.click(visit.table.getColumnHeader(titles.index(title)), sideways=6 * (clicks - 1))
            wanted = scripted_daemon.in_order(visit.records, {"sortField": 0, "sortDirection": direction}, [key])
            visit.expect(f"Names after click {clicks + 1} on {title}",
                         lambda: [cells[name] for cells in visit.rows()[1:]],
                         [record["name"] for record in wanted])
    print(f"Sorted up, down and not at all by {', '.join(COLUMNS)}; not at all by the other columns")


def properties_are_enabled(visit):
    """Whether the button and the menu's item "Properties" are; they must agree."""
    enabled = {accessible.is_enabled(item) for item in accessible.find_all(visit.element, BUTTONS, "Properties")}
    return enabled.pop() if len(enabled) == 1 else enabled


def opens_the_drawer(visit):
    visit.expect("Properties without a selection", lambda: properties_are_enabled(visit), False)
    visit.press(CLOSED)
    visit.expect("The drawer's button", lambda: visit.button(CLOSED), None)
    nothing = dict.fromkeys(ten_values(visit.records[0], "First traffic", "Last traffic"), "-")
    visit.expect("Details of nothing", lambda: visit.values(DETAILS),
                 {"Application": "Please, select application."} | nothing)
    for row in (4, 11):
        record = visit.records[row - 1]
        visit.click(visit.table.getAccessibleAt(row, visit.column("Name")))
        wanted = {"Application": record["name"]} | ten_values(record, "First traffic", "Last traffic")
        visit.expect(f"Details of {record['name']}", lambda: visit.values(DETAILS), wanted)
        visit.expect("Properties of an application", lambda: properties_are_enabled(visit), True)
        print(f"Details: {visit.values(DETAILS)}")
    visit.table.addRowSelection(0)
    visit.expect("Details of the totals row", lambda: visit.values(DETAILS),
                 {"Application": "Please, select application."} | nothing)
    visit.expect("Properties of the totals row", lambda: properties_are_enabled(visit), False)
    visit.press(OPEN)
    visit.expect("The drawer's button", lambda: visit.button(OPEN), None)
    visit.expect("The drawer's button", lambda: bool(visit.button(CLOSED)), True)
    print("The totals row has no details; the drawer opens and closes")


def reads_the_totals(visit):
    totals = scripted_daemon.ScriptedDaemon(visit.records).totals() | {"endTime": now_in_berlin()}
    wanted = ten_values(totals, "Since", "To") | {"To": None}
    visit.expect("Totals", lambda: visit.values(TOTALS) | {"To": None}, wanted)
    visit.expect("Totals of now", lambda: is_now(visit.values(TOTALS)["To"]), True)
    print(f"Totals: {visit.values(TOTALS)}")


def names_every_button(visit):
    buttons = accessible.find_all(visit.element, BUTTONS)
    nameless = [button for button in buttons if not button.name]
    assert buttons and not nameless, f"without a name: {nameless}"
    print(f"Buttons and menu items: {', '.join(button.name for button in buttons)}")


def starts_only_once(visit):
    subprocess.run(["xdotool", "windowminimize", visit.window], check=True)
    visit.expect("Visible windows", lambda: desktop.windows_of(visit.process), [])
    began = time.monotonic()
    second = subprocess.run([visit.program], env=os.environ | ENVIRONMENT, timeout=PATIENCE)
    took = time.monotonic() - began
    assert second.returncode == 0, f"the second start ended with status {second.returncode}"
    visit.expect("Visible windows", lambda: desktop.windows_of(visit.process), [visit.window])
    visit.expect("Windows", lambda: len(visit.frames()), 1)
    print(f"A second start ends after {took:.1f} s with status 0 and brings the first to the front")


def ends_with_its_window(visit):
    subprocess.run(["xdotool", "windowactivate", "--sync", visit.window, "key", "alt+F4"], check=True, timeout=PATIENCE)
    status = visit.process.wait(PATIENCE)
    assert status == 0, f"closed without a tray, the program ends with status {status}"
    print("Closing the window ends the program with status 0")


STEPS = (reads_rows, sorts_by_each_column, opens_the_drawer, reads_the_totals, names_every_button, starts_only_once,
         ends_with_its_window)


def main():
    signal.signal(signal.SIGALRM, lambda *_: sys.exit(f"Not done after {SECONDS} s."))
    signal.alarm(SECONDS)
    applications = scripted_daemon.few_applications()
    with scripted_daemon.Server(applications), desktop.desktop() as children:
        accessible.check_available()
        visit = Visit(sys.argv[1], children)
        for step in STEPS:
            step(visit)


if __name__ == "__main__":
    desktop.run_or_skip(main)
