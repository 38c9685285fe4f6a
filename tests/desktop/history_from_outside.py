#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Opens windows of the past and looks at what they ask a daemon, in which order and how fast.

    netns own_settings history_from_outside.py PROGRAM

The daemon is a scripted one whose totals are known for every moment, so what a window shows of them is known too.
"""

import datetime
import plistlib
import sys
import time
from collections import defaultdict
from pathlib import Path

from setting import Window, accessible, desktop

import scripted_daemon
import wire

SETTINGS = Path("/Library/Preferences/com.qv.Nevtora Meter.plist")
MONTHS = 36  # of history, enough for the longest range below
PAUSE = 0.05  # seconds between two steps at least
DAY = 24 * 60 * 60
EPOCH = datetime.datetime(2001, 1, 1)
OPENING = 5  # seconds that may pass between the press of a button and the end of the range


class Recorder(scripted_daemon.ScriptedDaemon):
    """Every second since `EPOCH` brought 2 MiB and took 1 MiB. Keeps what it is asked about moments."""

    span = 0  # seconds since the statistics began
    asked = defaultdict(list)  # (protocol, application or None) -> (clock, what is asked for, moment)

    def totals(self):
        started = datetime.datetime.now() - datetime.timedelta(seconds=Recorder.span)
        return super().totals() | {"startTime": started.replace(microsecond=0)}

    def answer(self, request, values):
        if request.reply is not wire.BYTES:
            return super().answer(request, values)
        is_sent = request in (wire.TOTAL_SENT_BYTES, wire.APPLICATION_SENT_BYTES)
        series = values["socketProtocol"], values.get("applicationId")
        Recorder.asked[series].append((time.monotonic(), is_sent, values["toTime"]))
        return {"bytes": int((values["toTime"] - EPOCH).total_seconds()) * 2**20 * (1 if is_sent else 2)}


def points(span):
    """How many steps a range of `span` seconds has."""
    step, t, count = max(1.0, span / 100.0), 0.0, 0
    while t <= span + 4 * step:
        t += step
        count += 1
    return count


class Past:
    """A window of the past and its queries."""

    def __init__(self, main, span, protocol, button, row=0):
        self.span, self.button = span, button
        self.asked = Recorder.asked[protocol, row or None]
        Recorder.span = span
        main.table.addRowSelection(row)
        main.press(button)
        desktop.wait_for("A query", lambda: self.asked)

    def check(self):
        possible = {points(self.span + late) for late in range(OPENING)}
        sizes = {2 + 2 * count + 4 for count in possible}
        desktop.wait_for(f"The last query of {self.span} s", lambda: len(self.asked) in sizes and self.has_rested(), 30)
        steps, captions = self.asked[:-4], self.asked[-4:]
        self.check_steps(steps)
        assert [is_sent for _, is_sent, _ in captions] == [False, True, False, True], captions
        start, end = captions[0][2], captions[2][2]
        assert captions[1][2] == start and captions[3][2] == end, captions
        assert self.span <= (end - start).total_seconds() <= self.span + OPENING, captions
        print(f"{self.button}, {self.span} s: {len(steps) // 2} pairs, then 4 queries")
        return (end - start).total_seconds()

    def has_rested(self):
        return time.monotonic() - self.asked[-1][0] > 4 * PAUSE

    def check_steps(self, steps):
        pairs = list(zip(steps[::2], steps[1::2]))
        assert len(pairs) * 2 == len(steps)
        moments = []
        for sent, received in pairs:
            assert (sent[1], received[1]) == (True, False), f"sent before received: {sent}, {received}"
            assert sent[2] == received[2], (sent, received)
            moments.append(sent[2])
        step = max(1.0, self.span / 100.0)
        gaps = [(b - a).total_seconds() for a, b in zip(moments, moments[1:])]
        assert all(abs(gap - step) <= 1 + OPENING / 100 for gap in gaps), gaps
        rests = [later[0][0] - earlier[1][0] for earlier, later in zip(pairs[1:], pairs[2:])]
        assert min(rests) >= PAUSE, f"a rest of {min(rests)} s only"


def captions_of(frame):
    labels = [element for element in accessible.elements(frame) if element.description.endswith(", MB")]
    return {label.description: float(label.name) for label in labels}


def visit(program_path, children):
    process = children.start([program_path])
    main = Window(process)
    desktop.wait_for("Its rows", lambda: main.table.nRows > 3)

    second = Past(main, 1, wire.ALL, "Full Traffic")
    seconds = second.check()
    wanted = {"Received, MB": 2 * seconds, "Sent, MB": seconds}
    frame = next(each for each in accessible.programs("nevtora-meter")[0] if each.name == "Total Graphic")
    seen = desktop.wait_for("Captions", lambda: captions_of(frame) == wanted or None)
    assert seen, captions_of(frame)
    print(f"Captions: {captions_of(frame)}")
    Recorder.asked.clear()

    windows = [Past(main, 59 * 60, wire.TCP, "TCP"), Past(main, 3600, wire.UDP, "UDP"),
               Past(main, 30 * DAY, wire.ALL, "Full Traffic"), Past(main, 1000 * DAY, wire.TCP, "TCP", row=1)]
    for window in windows:
        window.check()

    Recorder.asked.clear()
    last = Past(main, 3600, wire.UDP, "UDP", row=2)
    desktop.wait_for("Some steps", lambda: len(last.asked) > 10)
    assert process.poll() is None
    process.terminate()
    assert process.wait(5) == 0
    asked = len(last.asked)
    assert asked < 60, f"{asked} queries of a window that was closed"
    print(f"Ended amid a computation after {asked} queries")


def main():
    SETTINGS.write_bytes(plistlib.dumps({"CaptureInterval": MONTHS}))
    applications = scripted_daemon.few_applications()
    with scripted_daemon.Server(applications, daemon=Recorder), desktop.desktop() as children:
        accessible.check_available()
        visit(sys.argv[1], children)


if __name__ == "__main__":
    desktop.run_or_skip(main)
