# SPDX-License-Identifier: GPL-3.0-or-later
"""A desktop that nobody sees: a session bus, an X server and a window manager for programs that need them."""

import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from contextlib import contextmanager
from pathlib import Path


class Unavailable(Exception):
    """No desktop can be made here; the text says why."""


def run_or_skip(main):
    """Runs a test's `main`; ends with 77, which ctest takes for "skipped", where no desktop can be made."""
    try:
        main()
    except Unavailable as reason:
        print(f"skipped: {reason}")
        sys.exit(77)


def first_result(attempt, seconds):
    """The first true result of `attempt`, which is called again and again; None when time is up."""
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        if result := attempt():
            return result
        time.sleep(0.05)
    return None


def wait_for(what, attempt, seconds=15):
    """As `first_result`, but ends the script when time is up."""
    return first_result(attempt, seconds) or sys.exit(f"{what} did not appear within {seconds} s.")


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
            end(child)


def end(child, seconds=3):
    """Ends a program, politely at first."""
    child.terminate()
    try:
        child.wait(seconds)
    except subprocess.TimeoutExpired:
        child.kill()
        child.wait()


def start_and_read(children, command, **options):
    """Starts a program that tells where it can be reached, on the descriptor in place of FD; answers what it tells."""
    if not shutil.which(command[0]):
        raise Unavailable(f"there is no {command[0]} here")
    read, write = os.pipe()
    children.start([part.replace("FD", str(write)) for part in command], pass_fds=[write], **options)
    os.close(write)
    with open(read) as answer:
        if place := answer.readline().strip():
            return place
    raise Unavailable(f"{command[0]} does not start here")


def start_bus(children, log):
    bus = ["dbus-daemon", "--session", "--nofork", "--print-address=FD"]
    os.environ["DBUS_SESSION_BUS_ADDRESS"] = start_and_read(children, bus, stdout=log, stderr=log)


def start_display(children, log, size):
    server = ["Xvfb", "-displayfd", "FD", "-screen", "0", f"{size}x24", "-nolisten", "tcp", "-noreset"]
    os.environ["DISPLAY"] = ":" + start_and_read(children, server, stderr=log)


def start_window_manager(children, log):
    if missing := [tool for tool in ("openbox", "xdotool") if not shutil.which(tool)]:
        raise Unavailable(f"there is no {', '.join(missing)} here")
    with tempfile.TemporaryDirectory() as scratch:
        ready = Path(scratch, "ready")
        children.start(["openbox", "--startup", f"touch {ready}"], stdout=log, stderr=log)
        # A window that opens while the window manager takes over may stay unmapped for good.
        if not first_result(ready.exists, seconds=15):
            raise Unavailable("openbox does not start here")


@contextmanager
def desktop(size="1280x800"):
    """Puts the environment's display, bus and folders in place; answers the `Children` that end with the desktop.

    Raises `Unavailable` where the system has no desktop to give.
    """
    signal.signal(signal.SIGTERM, lambda *_: sys.exit("Stopped."))  # so that the children end too
    with tempfile.TemporaryDirectory() as home, Children() as children, open(f"{home}/log", "w") as log:
        os.environ.update(HOME=home, XDG_RUNTIME_DIR=home, XDG_CONFIG_HOME=home, XDG_CACHE_HOME=home)
        os.environ["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"
        os.environ.pop("WAYLAND_DISPLAY", None)
        start_bus(children, log)
        start_display(children, log, size)
        start_window_manager(children, log)
        yield children


def windows_of(process):
    """The ids of the windows that a program shows."""
    if process.poll() is not None:
        sys.exit(f"The window's program ended with status {process.returncode}.")
    search = ["xdotool", "search", "--all", "--onlyvisible", "--pid", str(process.pid), "--name", "Nevtora"]
    return subprocess.run(search, capture_output=True, text=True).stdout.split()


def save_picture(window, path):
    """Saves a window with its frame."""
    subprocess.run(["import", "-silent", "-frame", "-window", window, str(path)], timeout=10, check=True)


def click(x, y, button=1):
    subprocess.run(["xdotool", "mousemove", str(x), str(y), "click", str(button)], timeout=15, check=True)


def press(*keys):
    subprocess.run(["xdotool", "key", *keys], timeout=15, check=True)
