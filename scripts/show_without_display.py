#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Opens the window on a virtual display, saves pictures of it and prints the table's first rows.

    show_without_display.py PROGRAM FOLDER

The rows are read from the window itself, the way a screen reader reads them.
"""

import os
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

SECONDS = 25  # the whole visit
ROWS = 12

deadline = time.monotonic() + SECONDS


def wait_for(what, attempt):
    """The first true result of `attempt`, which is called again and again until time is up."""
    while time.monotonic() < deadline:
        if result := attempt():
            return result
        time.sleep(0.1)
    sys.exit(f"{what} did not appear within {SECONDS} s.")


class Children:
    """The programs that this script started; they end with it, the last one first."""

    def __init__(self):
        self.running = []

    def start(self, command, **options):
        self.running.append(subprocess.Popen(command, **options))
        return self.running[-1]

    def __enter__(self):
        return self

    def __exit__(self, *_):
        for child in reversed(self.running):
            child.terminate()
            child.wait()


def start_and_read(children, command, **options):
    """Starts a program that tells where it can be reached, on the descriptor in place of FD; answers what it tells."""
    read, write = os.pipe()
    children.start([part.replace("FD", str(write)) for part in command], pass_fds=[write], **options)
    os.close(write)
    with open(read) as answer:
        return answer.readline().strip()


def start_desktop(children, log):
    """A session bus, an X server that nobody else uses, and a window manager."""
    bus = ["dbus-daemon", "--session", "--nofork", "--print-address=FD"]
    os.environ["DBUS_SESSION_BUS_ADDRESS"] = start_and_read(children, bus, stdout=log, stderr=log)
    server = ["Xvfb", "-displayfd", "FD", "-screen", "0", "1280x800x24", "-nolisten", "tcp", "-noreset"]
    os.environ["DISPLAY"] = ":" + start_and_read(children, server, stderr=log)
    children.start(["openbox"], stdout=log, stderr=log)


def find(accessible, wanted):
    """The first element below `accessible`, depth first, for which `wanted` holds; None while there is none."""
    for child in accessible:
        if child is None:
            continue
        if wanted(child):
            return child
        if found := find(child, wanted):
            return found
    return None


def find_table(pyatspi, name):
    """The table of the program called `name`, once it has a row."""
    for program in pyatspi.Registry.getDesktop(0):
        if program and program.name == name:
            table = find(program, lambda element: "Table" in pyatspi.listInterfaces(element))
            if table and table.queryTable().nRows > 0:
                return table.queryTable()
    return None


def read_rows(table):
    """The header and the first rows, as lists of texts."""
    columns = range(table.nColumns)
    header = [table.getColumnHeader(column).name for column in columns]
    rows = [[table.getAccessibleAt(r, c).name for c in columns] for r in range(min(ROWS, table.nRows))]
    return header, rows


def print_rows(header, rows):
    widths = [max(map(len, cells)) for cells in zip(header, *rows)]
    for cells in (header, *rows):
        print("  ".join(cell.ljust(width) for cell, width in zip(cells, widths)).rstrip())


def save_picture(window, path):
    subprocess.run(["import", "-silent", "-frame", "-window", window, str(path)], check=True)
    print(f"Saved {path}")


def window_of(process):
    """The id of the process's window; empty while it has none."""
    search = ["xdotool", "search", "--onlyvisible", "--pid", str(process.pid), "--name", "Nevtora"]
    return subprocess.run(search, capture_output=True, text=True).stdout.split("\n")[0]


def main():
    program, folder = Path(sys.argv[1]), Path(sys.argv[2])
    folder.mkdir(parents=True, exist_ok=True)
    signal.signal(signal.SIGTERM, lambda *_: sys.exit("Stopped."))  # so that the children end too
    print(f"No display here: showing {program.name} on a virtual one for some seconds.")
    with tempfile.TemporaryDirectory() as runtime, Children() as children:
        os.environ.setdefault("XDG_RUNTIME_DIR", runtime)
        os.environ["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"
        start_desktop(children, open(f"{runtime}/log", "w"))
        import pyatspi  # needs the bus

        process = children.start([program])
        window = wait_for("The window", lambda: process.poll() is None and window_of(process))
        table = wait_for("The table", lambda: find_table(pyatspi, program.name))
        time.sleep(6)  # one more refresh
        save_picture(window, folder / "main-window.png")
        print_rows(*read_rows(table))


if __name__ == "__main__":
    main()
