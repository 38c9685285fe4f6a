#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Cleans the history of a real daemon while clients watch, kill it or get in its way.

    clean_history.py [--kills N] [--history FILE] PROGRAM [TEST...]

PROGRAM is `nevtora-daemon`. It goes on from a copy of FILE, by default one that holds the demo year, for each test, and
has the demo's traffic. N daemons (5) are killed, at moments spread over the cleaning.
"""

import argparse
import contextlib
import datetime
import resource
import shutil
import signal
import sqlite3
import sys
import tempfile
import time
import unittest
from pathlib import Path

import wire
from client import Client
from real_daemon import RealDaemon

CLEAN_LIMIT = 60
DAY = datetime.timedelta(days=1)

program = None
kills = 5
template = None  # the history that every test has a copy of


def size_of(database):
    """Bytes on disk, the log included."""
    return sum(path.stat().st_size for path in (database, log_of(database)) if path.exists())


def log_of(database):
    return Path(f"{database}-wal")


def start_daemon(database):
    options = "--demo", "--database", database, "--config", "/nonexistent"
    # Writing beyond what a process may write is to be an error then, not its end.
    return RealDaemon(program, database.with_name("log"), *options, restore_signals=False)


def setUpModule():
    global template
    folder = unittest.enterModuleContext(tempfile.TemporaryDirectory(prefix="nevtora-clean-"))
    if template is None:
        template = Path(folder, "year.sqlite")
        start_daemon(template).end()


class CleansHistory(unittest.TestCase):
    def setUp(self):
        self.database = Path(self.enterContext(tempfile.TemporaryDirectory(prefix="nevtora-clean-")), "history.sqlite")
        self.begin()

    def begin(self):
        """A daemon that knows the whole past, and what it says of it."""
        for path in (self.database, log_of(self.database), Path(f"{self.database}-shm")):
            path.unlink(missing_ok=True)
        shutil.copy(template, self.database)
        self.daemon = start_daemon(self.database)
        self.addCleanup(self.daemon.end, signal.SIGKILL)
        self.client = self.connect()
        first = self.client.ask(wire.TOTAL_STATISTIC_INFO)["startTime"]
        self.past = (first + 300 * DAY).replace(minute=0, second=0)
        self.before = self.total_to_past(self.client)
        self.highest = max(self.applications())
        self.assertGreater(self.before, 0)
        while self.next_application_on_disk() <= self.highest:
            time.sleep(0.2)  # what a client has seen may be a second ahead of the disk

    def connect(self):
        return self.enterContext(Client(self.daemon.address, CLEAN_LIMIT))

    def total_to_past(self, client):
        return client.ask(wire.TOTAL_RECEIVED_BYTES, toTime=self.past, socketProtocol=wire.ALL)["bytes"]

    def applications(self):
        """Their ids."""
        return {row["id"] for row in self.client.applications()}

    def longest_answer_until(self, over):
        """In seconds. `isClean` is 1 exactly in the replies between events 2 and 3, and the past goes once, as a whole."""
        longest, totals = 0, []
        while not over():
            begin = time.monotonic()
            [message_id] = self.client.send((wire.IS_CLEANING, {}))
            values, events = self.client.collect(message_id)
            codes = [event for event, _ in self.client.events[:events]]
            cleaning = wire.CLEANING_STARTED in codes and wire.CLEANING_ENDED not in codes
            self.assertEqual(values["isClean"], int(cleaning), f"after events {codes}")
            totals.append(self.total_to_past(self.client))
            longest = max(longest, time.monotonic() - begin)
        gone = totals.index(0) if 0 in totals else len(totals)
        self.assertEqual(totals, [self.before] * gone + [0] * (len(totals) - gone))
        return longest

    def clean(self):
        self.client.events.clear()
        self.client.send_event(wire.START_CLEANING)
        self.client.wait_for_event(wire.CLEANING_ENDED)

    def check_shrinks(self, before):
        deadline = time.monotonic() + 10
        while size_of(self.database) > before / 5:
            self.assertLess(time.monotonic(), deadline, f"{size_of(self.database)} bytes of {before}")
            time.sleep(0.02)

    def test_two_clients_clean_and_others_come_and_ask_meanwhile(self):
        other = self.connect()
        size, begin = size_of(self.database), time.monotonic()
        idle = self.longest_answer_until(lambda: time.monotonic() > begin + 1)
        begin, clock = time.monotonic(), datetime.datetime.now()
        for client in (self.client, other):
            client.send_event(wire.START_CLEANING)
        self.client.wait_for_event(wire.CLEANING_STARTED)
        late = self.connect()
        is_cleaning = late.ask(wire.IS_CLEANING)["isClean"]
        self.assertTrue(is_cleaning or late.count_event(wire.CLEANING_ENDED))
        busy = self.longest_answer_until(lambda: self.client.count_event(wire.CLEANING_ENDED))
        took = time.monotonic() - begin
        for client in (other, late):
            client.wait_for_event(wire.CLEANING_ENDED)
        self.assertEqual([event for event, _ in other.events if event], [wire.CLEANING_STARTED, wire.CLEANING_ENDED])
        self.assertEqual(self.total_to_past(late), 0)
        self.check_shrinks(size)
        print(
            f"cleaned in {took:.2f} s, {size / 1e6:.1f} MB before, {size_of(self.database) / 1e6:.2f} after; "
            f"longest answer {busy * 1000:.1f} ms, {idle * 1000:.1f} before",
            file=sys.stderr,
        )
        while not (applications := self.applications()):
            time.sleep(0.05)
        self.assertGreater(min(applications), self.highest)
        self.assertFalse(
            applications & {param for event, param in self.client.events if event == wire.NEW_APPLICATION},
            "who was known before is no news",
        )
        start = self.client.ask(wire.TOTAL_STATISTIC_INFO)["startTime"]
        self.assertGreaterEqual(start, clock.replace(microsecond=0))
        self.assertLess(start, clock + datetime.timedelta(seconds=2), "what moved while it was cleaned counts")

    def test_a_reader_of_the_old_history_only_keeps_its_space(self):
        reader = sqlite3.connect(self.database)
        reader.execute("BEGIN")
        reader.execute("SELECT count(*) FROM counting").fetchone()
        size, begin = size_of(self.database), time.monotonic()
        self.clean()
        self.assertLess(time.monotonic() - begin, CLEAN_LIMIT / 2)
        self.assertEqual(self.total_to_past(self.client), 0)
        self.assertEqual(reader.execute("SELECT min(id) FROM applications").fetchone()[0], 1)
        reader.close()
        self.check_shrinks(size)

    def test_a_disk_that_refuses_ends_the_cleaning_and_the_history_stays(self):
        process = self.daemon.process.pid
        _, most = resource.prlimit(process, resource.RLIMIT_FSIZE)
        resource.prlimit(process, resource.RLIMIT_FSIZE, (8192, most))
        self.clean()
        self.assertEqual(self.client.ask(wire.IS_CLEANING), {"isClean": 0})
        self.assertEqual(self.total_to_past(self.client), self.before)
        self.assertIn(self.highest, self.applications())
        self.assertIn("cannot be wiped and stays as it is", self.daemon.log.read_text())
        resource.prlimit(process, resource.RLIMIT_FSIZE, (most, most))
        self.clean()
        self.assertEqual(self.total_to_past(self.client), 0)

    def test_a_daemon_that_is_told_to_stop_cleans_first(self):
        self.client.send_event(wire.START_CLEANING)
        self.client.wait_for_event(wire.CLEANING_STARTED)
        self.assertEqual(self.daemon.end(), 0, self.daemon.log.read_text())
        self.assertEqual(self.state_on_disk()["connections"], 0)

    def test_a_kill_leaves_the_old_history_or_an_empty_one(self):
        begin = time.monotonic()
        self.clean()
        took, emptied = time.monotonic() - begin, 0
        for i in range(kills):
            with self.subTest(kill=i):
                self.daemon.end(signal.SIGKILL)
                self.begin()
                emptied += self.check_kill_after(took * i / max(kills - 1, 1))
        print(f"killed {kills} times within {took:.2f} s: {emptied} histories were empty", file=sys.stderr)

    def check_kill_after(self, seconds):
        """Whether the history is empty then; it goes on either way."""
        size, deadline = size_of(self.database), time.monotonic() + seconds
        self.client.send_event(wire.START_CLEANING)
        while time.monotonic() < deadline:
            pass
        self.daemon.end(signal.SIGKILL)
        state = self.state_on_disk()
        self.assertEqual(state["integrity"], "ok")
        self.assertGreater(state["next_application"], self.highest)
        self.daemon.start()
        self.client = self.connect()
        total = self.total_to_past(self.client)
        self.assertIn(total, (0, self.before))
        if total:
            self.assertIn(self.highest, self.applications())
            self.assertGreater(state["connections"], 0)
            return False
        self.assertTrue(all(row > self.highest for row in self.applications()))
        self.assertEqual(state["connections"], 0)
        self.check_shrinks(size)
        return True

    def next_application_on_disk(self):
        with contextlib.closing(sqlite3.connect(self.database)) as database:
            return database.execute("SELECT next_application FROM counting").fetchone()[0]

    def state_on_disk(self):
        """Looked at in a copy, so that the next daemon finds what the last one left."""
        copy = self.database.with_name("copy.sqlite")
        shutil.copy(self.database, copy)
        if log_of(self.database).exists():
            shutil.copy(log_of(self.database), log_of(copy))
        with contextlib.closing(sqlite3.connect(copy)) as database:
            ask = lambda sql: database.execute(sql).fetchone()[0]
            return {
                "integrity": ask("PRAGMA integrity_check"),
                "next_application": ask("SELECT next_application FROM counting"),
                "connections": ask("SELECT count(*) FROM connections WHERE started < unixepoch() - 3600"),
            }


def main():
    global program, kills, template
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--kills", type=int, default=kills)
    parser.add_argument("--history", type=Path, metavar="FILE")
    parser.add_argument("program")
    parser.add_argument("tests", nargs="*")
    arguments = parser.parse_args()
    program, kills, template = arguments.program, arguments.kills, arguments.history
    unittest.main(argv=[sys.argv[0], *arguments.tests], verbosity=2)


if __name__ == "__main__":
    main()
