#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Makes the pictures of the window; see docs/pictures/make.

    make_pictures.py PROGRAMS FOLDER [PICTURE...]

PROGRAMS is the folder with the built programs. Needs the daemon's port for itself.
"""

import os
import plistlib
import subprocess
import sys
import tempfile
import time
from contextlib import contextmanager, nullcontext
from functools import partial
from pathlib import Path

import accessible
import desktop

ROOT = Path(__file__).resolve().parents[1]
sys.path.insert(0, str(ROOT / "tests/link"))

import scripted_daemon
import wire
from client import Client

SCREEN = "2200x1400"  # room for a window at twice its size
REFRESH = 5  # seconds between two refreshes of the window
COMPUTING = 6  # seconds until a chart of the past is there: its steps are 50 ms apart
LIVE = 30  # seconds of a live chart that are worth a picture
SETTLE = 1  # seconds until icons, the drawer's movement and the like have come to rest
FRAME = ["-bordercolor", "#8a8f98", "-border", "1"]  # tells the window from a page of any colour
SMALL = ["-dither", "None", "-colors", "256", "-strip", "-define", "png:compression-level=9"]
SETTINGS = Path("/Library/Preferences/com.qv.Nevtora Meter.plist")
ALL, ONLY_LISTED, ALL_BUT_LISTED = 0, 1, 2
PLACES = ["/usr/bin/git", "/usr/bin/ssh", "/usr/bin/python3", "/usr/lib/apt/methods/http"]
MANY_PLACES = sorted(str(path) for path in Path("/usr/bin").iterdir())[:60]
TRAY = """
background_color = #33363b 100
border_width = 0

panel_items = FS
panel_size = 100% 32
panel_position = top right horizontal
panel_padding = 8 4 8
panel_background_id = 1
panel_layer = top
systray_icon_size = 22
"""
NOTIFICATIONS = """
[global]
    width = 400
    origin = top-right
    offset = 24x24
    font = Inter 10
    padding = 16
    horizontal_padding = 16
    frame_width = 1
    separator_color = frame
    show_indicators = no
    corner_radius = 8
    max_icon_size = 48
    format = "<b>%s</b>\\n%b"

[urgency_normal]
    background = "{background}"
    foreground = "{foreground}"
    frame_color = "{frame}"
"""
NOTIFICATION_COLORS = {
    "light": {"background": "#ffffff", "foreground": "#1f2328", "frame": "#c8ccd2"},
    "dark": {"background": "#2b2e33", "foreground": "#e6e8eb", "frame": "#4a4e55"},
}


def xdotool(*command):
    return subprocess.run(["xdotool", *map(str, command)], timeout=5, check=True, capture_output=True, text=True).stdout


def find_windows(search):
    return subprocess.run(["xdotool", *map(str, search)], timeout=5, capture_output=True, text=True).stdout.split()


def box_of(window):
    """Where a window is on the screen, and its size, as "X", "Y", "WIDTH" and "HEIGHT"."""
    lines = xdotool("getwindowgeometry", "--shell", window).splitlines()
    return {name: int(value) for name, value in (line.split("=") for line in lines)}


def width(window):
    return box_of(window)["WIDTH"]


class Window:
    """An open window, and what a person would do with it."""

    def __init__(self, process, scale):
        self.process = process
        self.id = desktop.wait_for("The window", lambda: desktop.windows_of(process))[0]
        self.scale = scale
        self.element = desktop.wait_for("The table", lambda: accessible.attempt(lambda: self._find(process)))
        self.table = accessible.tables(self.element)[0]

    @staticmethod
    def _find(process):
        """The program's element, once its table has a row."""
        for program in accessible.programs("nevtora-meter"):
            if program.get_process_id() == process.pid and accessible.tables(program)[0].nRows > 0:
                return program
        return None

    def click(self, element):
        x, y = accessible.middle(element)
        desktop.click(x * self.scale, y * self.scale)

    def sort_by(self, title):
        """The largest first: two clicks, with a pause or they would be a double click."""
        header = self.table.getColumnHeader(accessible.header(self.table).index(title))
        self.click(header)
        time.sleep(SETTLE)
        self.click(header)

    def select(self, row):
        self.click(self.table.getAccessibleAt(row, accessible.header(self.table).index("Name")))

    def open_drawer(self):
        accessible.press(accessible.find(self.element, "push button", "Additional Info >>>"))

    def scroll_to_the_middle(self):
        """The middle button takes a scroll bar's handle to the pointer."""
        box = accessible.box(accessible.find(self.element, "table"))
        desktop.click(box.x + box.width - 6, box.y + box.height // 2, button=2)

    def other_window(self, title):
        search = ["search", "--all", "--onlyvisible", "--pid", self.process.pid, "--name", title]
        return desktop.wait_for(title, lambda: find_windows(search))[0]

    def open_status_menu(self):
        """With the list of applications beside it; answers the boxes of both. Screen readers do not see them."""
        before = desktop.wait_for("The status item", self._windows_with_status_item)
        icon = box_of(min(before, key=width))
        desktop.click(icon["X"] + icon["WIDTH"] // 2, icon["Y"] + icon["HEIGHT"] // 2, button=3)
        desktop.wait_for("The status menu", lambda: self._windows_beside(before, 1))
        xdotool("key", "Down", "Down", "Right")
        menus = desktop.wait_for("The applications' menu", lambda: self._windows_beside(before, 2))
        return [box_of(menu) for menu in menus]

    def _windows(self):
        return xdotool("search", "--onlyvisible", "--pid", self.process.pid).split()

    def _windows_with_status_item(self):
        windows = self._windows()
        return windows if any(width(window) < 32 for window in windows) else None

    def _windows_beside(self, before, count):
        windows = [window for window in self._windows() if window not in before]
        return windows if len(windows) == count else None


class Preferences:
    """The sheet of an open window."""

    def __init__(self, window):
        accessible.press(accessible.find(window.element, "push button", "Preferences"))
        find = lambda: [e for e in accessible.find_all(window.element, ["dialog"]) if accessible.is_showing(e)]
        self.element = desktop.wait_for("The preferences", lambda: accessible.attempt(find))[0]
        search = ["search", "--all", "--onlyvisible", "--pid", window.process.pid, "--name", "^Preferences"]
        self.id = xdotool(*search).split()[0]


class Studio:
    """Where the pictures are made: a desktop, daemons to choose from, and a folder."""

    def __init__(self, programs, folder, children):
        self.programs = programs
        self.folder = folder
        self.children = children

    @contextmanager
    def demo_daemon(self):
        with tempfile.TemporaryDirectory() as scratch:
            command = [self.programs / "nevtora-daemon", "--demo", "--database", f"{scratch}/demo.sqlite"]
            daemon = self.children.start(command, stderr=subprocess.DEVNULL)
            desktop.wait_for("The demo daemon", daemon_answers, seconds=60)
            yield
            desktop.end(daemon)

    @contextmanager
    def window(self, scheme="light", scale=1, locale="C.UTF-8"):
        """A window that remembers nothing of those before it."""
        with tempfile.TemporaryDirectory() as config:
            portal = start_portal(self.children, scheme)
            environment = os.environ | {"XDG_CONFIG_HOME": config, "QT_SCALE_FACTOR": str(scale), "LC_ALL": locale}
            process = self.children.start([self.programs / "nevtora-meter"], env=environment)
            yield Window(process, scale)
            desktop.end(process)
            desktop.end(portal)

    @contextmanager
    def notification_service(self, scheme):
        with tempfile.NamedTemporaryFile("w") as settings:
            settings.write(NOTIFICATIONS.format(**NOTIFICATION_COLORS[scheme]))
            settings.flush()
            service = self.children.start(["dunst", "-config", settings.name], stderr=subprocess.DEVNULL)
            time.sleep(SETTLE)
            yield
            desktop.end(service)

    @contextmanager
    def tray(self):
        with tempfile.NamedTemporaryFile("w") as settings:
            settings.write(TRAY)
            settings.flush()
            tray = self.children.start(["tint2", "-c", settings.name], stderr=subprocess.DEVNULL)
            time.sleep(SETTLE)
            yield
            desktop.end(tray)

    def save(self, window, name):
        self.save_other(window.id, name)

    def save_other(self, window, name):
        """Nothing in the window is hovered."""
        time.sleep(SETTLE)
        xdotool("mousemove", 0, 0)
        time.sleep(SETTLE)
        self.save_screen(name, window=window)

    def save_screen(self, name, part=None, window="root"):
        """The whole of a window or of the screen, or a `part` of it: WxH+X+Y."""
        path = self.folder / f"{name}.png"
        crop = ["-crop", part] if part else []
        subprocess.run(["import", "-silent", "-window", window, *crop, str(path)], timeout=30, check=True)
        subprocess.run(["mogrify", *FRAME, *SMALL, str(path)], timeout=30, check=True)
        print(f"Saved {path}, {path.stat().st_size // 1024} KiB", flush=True)


def daemon_answers():
    try:
        with Client(("127.0.0.1", wire.PORT)) as client:
            return client.ask(wire.IS_CLEANING)
    except OSError:
        return None


def start_portal(children, scheme):
    command = [sys.executable, Path(__file__).with_name("color_scheme.py"), scheme]
    portal = children.start(command, stdout=subprocess.PIPE, text=True)
    portal.stdout.readline()
    return portal


def main_window(studio, name, **looks):
    with studio.demo_daemon(), studio.window(**looks) as window:
        window.sort_by("Received, MB")
        studio.save(window, name)


def details(studio, name, **looks):
    with studio.demo_daemon(), studio.window(**looks) as window:
        window.sort_by("Received, MB")
        window.open_drawer()
        time.sleep(SETTLE)
        window.select(2)
        studio.save(window, name)


def narrow(studio, name):
    with scripted_daemon.Server(scripted_daemon.few_applications()), studio.window() as window:
        xdotool("windowsize", "--sync", window.id, 600, 480)
        studio.save(window, name)


def many(studio, name):
    with scripted_daemon.Server(scripted_daemon.many_applications(10_000)), studio.window() as window:
        window.scroll_to_the_middle()
        studio.save(window, name)


def empty(studio, name):
    with scripted_daemon.Server([]), studio.window() as window:
        studio.save(window, name)


def daemon_lost(studio, name):
    with scripted_daemon.Server(scripted_daemon.few_applications()) as server, studio.window() as window:
        server.close()
        time.sleep(REFRESH + SETTLE)
        studio.save(window, name)


def preferences(studio, name, mode=ALL_BUT_LISTED, paths=PLACES, writable=True, **looks):
    """Over settings that only this program's surroundings have, see tests/support/own_settings."""
    SETTINGS.write_bytes(plistlib.dumps({"AllowDenyAppsMode": mode, "AllowDenyApps": paths}))
    with scripted_daemon.Server(scripted_daemon.few_applications()), studio.window(**looks) as window:
        with nullcontext() if writable else read_only(SETTINGS.parent):
            studio.save(Preferences(window), name)


def history(studio, name, size=None, **looks):
    """Of all applications, over the demo's year."""
    with studio.demo_daemon(), studio.window(**looks) as window:
        window.select(0)
        accessible.press(accessible.find(window.element, "push button", "Full Traffic"))
        graphic = window.other_window("Graphic")
        if size:
            xdotool("windowsize", "--sync", graphic, *size)
        time.sleep(COMPUTING)
        studio.save_other(graphic, name)


def history_range(studio, name):
    with studio.demo_daemon(), studio.window() as window:
        window.select(0)
        accessible.press(accessible.find(window.element, "push button", "TCP"))
        graphic = window.other_window("Graphic")
        accessible.press(accessible.find(window.element, "push button", "Change range..."))
        studio.save_other(graphic, name)


def connections(studio, name):
    with studio.demo_daemon(), studio.window() as window:
        window.sort_by("Received, MB")
        time.sleep(SETTLE)
        window.select(2)
        accessible.press(accessible.find(window.element, "push button", "Full Traffic"))
        graphic = window.other_window("Graphic")
        xdotool("windowmove", "--sync", graphic, 0, 0)
        accessible.press(accessible.find(window.element, "push button", "Connections"))
        time.sleep(COMPUTING)
        studio.save_other(graphic, name)


def live_chart(studio, name, size=None, **looks):
    """Of what moves the most in the demo."""
    with studio.demo_daemon(), studio.window(**looks) as window:
        window.sort_by("Received, MB")
        time.sleep(SETTLE)
        window.select(2)
        accessible.press(accessible.find(window.element, "push button", "Live Chart"))
        graphic = window.other_window("Realtime")
        if size:
            xdotool("windowsize", "--sync", graphic, *size)
        time.sleep(LIVE)
        studio.save_other(graphic, name)


@contextmanager
def read_only(folder):
    """For root as well."""
    subprocess.run(["mount", "--bind", "-o", "ro", folder, folder], check=True)
    yield
    subprocess.run(["umount", folder], check=True)


def cleaning(studio, name, **looks):
    with scripted_daemon.Server(scripted_daemon.few_applications()) as server, studio.window(**looks) as window:
        window.sort_by("Received, MB")
        server.tell(wire.CLEANING_STARTED)
        window.other_window("Cleaning")
        time.sleep(SETTLE)
        box = accessible.box(accessible.find(window.element, "frame"))
        studio.save_screen(name, f"{box.width}x{box.height}+{box.x}+{box.y}")


def notification(studio, name, scheme):
    """Two of them, over a corner of the window."""
    applications = scripted_daemon.few_applications()
    with scripted_daemon.Server(applications) as server, studio.notification_service(scheme):
        with studio.window(scheme=scheme) as window:
            screen = [int(pixels) for pixels in SCREEN.split("x")]
            xdotool("windowmove", "--sync", window.id, screen[0] - width(window.id) - 1, 24)
            for application in applications[:2]:
                server.tell(wire.NEW_APPLICATION, application["id"])
            shown = desktop.wait_for("The notifications", lambda: find_windows(["search", "--class", "Dunst"]))[0]
            desktop.wait_for("Both of them", lambda: box_of(shown)["HEIGHT"] > 150)
            time.sleep(SETTLE)
            studio.save_screen(name, f"760x360+{screen[0] - 760}+0")


def status_menu(studio, name):
    """The window lies behind the menus, its title under the panel."""
    with scripted_daemon.Server(scripted_daemon.few_applications()), studio.tray(), studio.window() as window:
        screen = [int(pixels) for pixels in SCREEN.split("x")]
        xdotool("windowmove", window.id, screen[0] - width(window.id), 32)
        time.sleep(SETTLE)
        boxes = window.open_status_menu()
        time.sleep(SETTLE)
        left = min(box["X"] for box in boxes) - 24
        height = max(box["Y"] + box["HEIGHT"] for box in boxes) + 24
        studio.save_screen(name, f"{screen[0] - left}x{height}+{left}+0")


PICTURES = {
    "main-window": main_window,
    "main-window-dark": partial(main_window, scheme="dark"),
    "main-window-2x": partial(main_window, scale=2),
    "details": details,
    "details-dark": partial(details, scheme="dark"),
    "narrow": narrow,
    "many-applications": many,
    "no-applications": empty,
    "daemon-lost": daemon_lost,
    "status-menu": status_menu,
    "history": history,
    "history-dark": partial(history, scheme="dark"),
    "history-2x": partial(history, scale=2),
    "history-tiny": partial(history, size=(460, 300)),
    "history-huge": partial(history, size=(1900, 1000)),
    "history-german": partial(history, locale="de_DE.UTF-8"),
    "history-range": history_range,
    "connections": connections,
    "live-chart": live_chart,
    "live-chart-dark": partial(live_chart, scheme="dark"),
    "live-chart-2x": partial(live_chart, scale=2),
    "live-chart-tiny": partial(live_chart, size=(200, 130)),
    "cleaning": cleaning,
    "cleaning-dark": partial(cleaning, scheme="dark"),
    "notification": partial(notification, scheme="light"),
    "notification-dark": partial(notification, scheme="dark"),
    "preferences": preferences,
    "preferences-dark": partial(preferences, scheme="dark"),
    "preferences-2x": partial(preferences, scale=2),
    "preferences-empty": partial(preferences, mode=ONLY_LISTED, paths=[]),
    "preferences-long": partial(preferences, paths=MANY_PLACES),
    "preferences-unused": partial(preferences, mode=ALL),
    "preferences-unwritable": partial(preferences, writable=False),
}


def main():
    programs, folder = Path(sys.argv[1]).resolve(), Path(sys.argv[2])
    names = sys.argv[3:] or PICTURES
    if unknown := set(names) - set(PICTURES):
        sys.exit(f"There is no picture {', '.join(unknown)}; there are {', '.join(PICTURES)}.")
    with desktop.desktop(SCREEN) as children:
        studio = Studio(programs, folder, children)
        for name in names:
            PICTURES[name](studio, name)


if __name__ == "__main__":
    main()
