#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Opens the window on a virtual display, saves pictures of it and prints the table's first rows.

    show_without_display.py PROGRAM FOLDER

The rows are read from the window itself; see read_table.py.
"""

import os
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

SECONDS = 25  # the whole visit

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
        signal.signal(signal.SIGTERM, signal.SIG_IGN)
        for child in reversed(self.running):
            child.terminate()
            try:
                child.wait(3)
            except subprocess.TimeoutExpired:
                child.kill()
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
    with tempfile.TemporaryDirectory() as scratch:
        ready = Path(scratch, "ready")
        children.start(["openbox", "--startup", f"touch {ready}"], stdout=log, stderr=log)
        # A window that opens while the window manager takes over may stay unmapped for good.
        wait_for("The window manager", ready.exists)


def save_picture(window, path):
    subprocess.run(["import", "-silent", "-frame", "-window", window, str(path)], timeout=10, check=True)
    print(f"Saved {path}")


def window_of(process):
    """The id of the process's window; empty while it has none."""
    if process.poll() is not None:
        sys.exit(f"The window's program ended with status {process.returncode}.")
    search = ["xdotool", "search", "--all", "--onlyvisible", "--pid", str(process.pid), "--name", "Nevtora"]
    return subprocess.run(search, capture_output=True, text=True).stdout.split("\n")[0]


def read_table(program):
    """The table's first rows as text. Another process asks for them: a window that hangs would hang it too."""
    reader = Path(__file__).with_name("read_table.py")
    command = [sys.executable, reader, program.name]
    return subprocess.run(command, timeout=10, check=True, stdout=subprocess.PIPE, text=True).stdout


def show(program, folder, children):
    process = children.start([program])
    window = wait_for("The window", lambda: window_of(process))
    time.sleep(7)  # until its second refresh
    save_picture(window, folder / "main-window.png")
    print(read_table(program), end="")


def main():
    program, folder = Path(sys.argv[1]), Path(sys.argv[2])
    folder.mkdir(parents=True, exist_ok=True)
    signal.signal(signal.SIGTERM, lambda *_: sys.exit("Stopped."))  # so that the children end too
    print(f"No display here: showing {program.name} on a virtual one for some seconds.", flush=True)
    with tempfile.TemporaryDirectory() as runtime, Children() as children:
        os.environ.setdefault("XDG_RUNTIME_DIR", runtime)
        os.environ["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"
        start_desktop(children, open(f"{runtime}/log", "w"))
        try:
            show(program, folder, children)
        except subprocess.SubprocessError as error:
            sys.exit(f"The window does not react: {error}")


if __name__ == "__main__":
    main()
