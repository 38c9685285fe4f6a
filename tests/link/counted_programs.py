# SPDX-License-Identifier: GPL-3.0-or-later
"""Two programs that send over loopback without a pause, and a real daemon that counts them or not."""

import datetime
import os
import select
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time
import unittest
from pathlib import Path

import wire
from client import Client

ADDRESS = ("127.0.0.1", wire.PORT)
OBEYED_WITHIN = 2  # seconds
START_LIMIT = 60

# Sends a little, often enough that no second passes without.
SENDER = """
import socket, sys, time
link = socket.create_connection(("127.0.0.1", int(sys.argv[1])))
while True:
    link.send(b"x" * 100)
    time.sleep(0.02)
"""


class CountedPrograms(unittest.TestCase):
    """Two programs that move bytes without a pause, and a daemon that counts them."""

    daemon_program = None  # `nevtora-daemon`
    options = ()  # for the daemon

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="nevtora-settings-")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name).resolve()
        self.log = self.folder / "log"
        self.sink = socket.create_server(("127.0.0.1", 0))
        self.addCleanup(self.sink.close)
        threading.Thread(target=self.swallow, daemon=True).start()
        self.bundled = self.start_sender("Bundled.app/Contents/bundled")
        self.plain = self.start_sender("plain")

    def swallow(self):
        """Takes in what the senders send, until they end."""
        links = [self.sink.accept()[0] for _ in range(2)]
        while links:
            for link in select.select(links, [], [])[0]:
                if not link.recv(1 << 16):
                    links.remove(link)
                    link.close()

    def start_sender(self, name):
        """Runs the sender as a program of its own; answers its executable."""
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(os.path.realpath(sys.executable), path)
        command = [path, "-S", "-c", SENDER, str(self.sink.getsockname()[1])]
        process = subprocess.Popen(command, env={"PYTHONHOME": sys.base_prefix})
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return str(path)

    def start_daemon(self):
        database = self.folder / "history.sqlite"
        command = [self.daemon_program, "--capture", "diag", "--database", database, *self.options]
        with open(self.log, "a") as log:
            self.daemon = subprocess.Popen(command, stderr=log)
        self.addCleanup(self.daemon.wait)
        self.addCleanup(self.daemon.kill)
        deadline = time.monotonic() + START_LIMIT
        while True:
            try:
                self.client = Client(ADDRESS)
                self.addCleanup(self.client.socket.close)
                return
            except ConnectionRefusedError:
                self.assertTrue(time.monotonic() < deadline and self.daemon.poll() is None, self.log.read_text())
                time.sleep(0.02)

    def restart_daemon(self):
        self.client.socket.close()
        self.daemon.send_signal(signal.SIGTERM)
        self.assertEqual(self.daemon.wait(30), 0, self.log.read_text())
        self.start_daemon()

    def ask_rows(self, create, count, row, delete, parameters=None):
        iterator = self.client.ask(create)["iteratorId"]
        if parameters:
            self.client.send((wire.SET_CONNECTIONS_PARAMETERS, parameters | {"iteratorId": iterator}))
        size = self.client.ask(count, iteratorId=iterator)["count"]
        rows = self.client.ask_all(*((row, {"iteratorId": iterator, "index": i}) for i in range(size)))
        self.client.send((delete, {"iteratorId": iterator}))
        return rows

    def applications(self):
        """By executable; they add up to the totals."""
        while True:  # until no poll came between the answers
            before = self.client.ask(wire.TOTAL_STATISTIC_INFO)
            rows = self.ask_rows(
                wire.CREATE_APPLICATION_ITERATOR,
                wire.GET_COUNT_APPLICATIONS,
                wire.GET_APPLICATION_INFO,
                wire.DELETE_APPLICATIONS_ITERATOR,
            )
            if self.client.ask(wire.TOTAL_STATISTIC_INFO) == before:
                break
        self.assertEqual(sum(row["totalSendedBytes"] for row in rows), before["totalSendedBytes"])
        return {row["fullPath"]: row for row in rows}

    def connections(self, path):
        """Of one application, oldest first."""
        parameters = dict(
            startTime=datetime.datetime(2001, 1, 1),
            endTime=datetime.datetime(2037, 1, 1),
            applicationId=self.applications()[path]["id"],
            socketProtocol=wire.ALL,
            sortDirection=wire.ASCENDING,
            sortField=0,
        )
        return self.ask_rows(
            wire.CREATE_CONNECTIONS_ITERATOR,
            wire.GET_COUNT_CONNECTIONS,
            wire.GET_CONNECTION_INFO,
            wire.DELETE_CONNECTIONS_ITERATOR,
            parameters,
        )

    def sent(self, path):
        """Nothing when it is not among the applications."""
        row = self.applications().get(path)
        return row["totalSendedBytes"] if row else None

    def check_counted(self, path):
        deadline = time.monotonic() + OBEYED_WITHIN
        before = self.sent(path)
        while self.sent(path) == before:
            self.assertLess(time.monotonic(), deadline, f"{path} is not counted\n{self.log.read_text()}")
            time.sleep(0.02)

    def check_only_one_counted(self, one, other):
        """Once the time that a change may take is over; answers where the other's counter stands."""
        time.sleep(max(0, self.changed_at + OBEYED_WITHIN - time.monotonic()))
        still = self.sent(other)
        self.check_counted(one)
        self.assertEqual(self.sent(other), still, f"{other} is counted\n{self.log.read_text()}")
        return still
