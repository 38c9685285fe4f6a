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
from real_daemon import RealDaemon

ADDRESS = ("127.0.0.1", wire.PORT)
OBEYED_WITHIN = 2  # seconds

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
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory(prefix="nevtora-settings-"))).resolve()
        self.log = self.folder / "log"
        self.sink = self.enterContext(socket.create_server(("127.0.0.1", 0)))
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
        options = "--capture", "diag", "--database", self.folder / "history.sqlite", *self.options
        self.daemon = RealDaemon(self.daemon_program, self.log, *options, address=ADDRESS)
        self.addCleanup(self.daemon.end, signal.SIGKILL)
        self.client = self.enterContext(Client(ADDRESS))

    def restart_daemon(self):
        self.client.socket.close()
        self.assertEqual(self.daemon.end(), 0, self.log.read_text())
        self.start_daemon()

    def applications(self):
        """By executable."""
        return {row["fullPath"]: row for row in self.client.applications()}

    def connections(self, path):
        """Of one application, oldest first."""
        iterator = self.client.ask(wire.CREATE_CONNECTIONS_ITERATOR)
        parameters = dict(startTime=datetime.datetime(2001, 1, 1), endTime=datetime.datetime(2037, 1, 1))
        parameters |= dict(applicationId=self.applications()[path]["id"], socketProtocol=wire.ALL)
        parameters |= dict(sortDirection=wire.ASCENDING, sortField=0)
        self.client.send((wire.SET_CONNECTIONS_PARAMETERS, iterator | parameters))
        return self.client.rows(wire.GET_COUNT_CONNECTIONS, wire.GET_CONNECTION_INFO, **iterator)

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
