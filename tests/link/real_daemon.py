# SPDX-License-Identifier: GPL-3.0-or-later
"""A real daemon for tests."""

import signal
import socket
import subprocess
import time
from pathlib import Path

import wire
from client import Client

START_LIMIT = 90  # seconds; the demo writes a year of history first


class RealDaemon:
    """One daemon process; further ones may follow it with the same options, on a free port unless one is given."""

    def __init__(self, program, log, *options, address=None, **process_options):
        with socket.create_server(("127.0.0.1", 0)) as free:
            self.address = address or free.getsockname()
        self.command = [program, "--listen", "{}:{}".format(*self.address), *options]
        self.process_options = process_options
        self.log = Path(log)
        self.start()

    def start(self):
        """Returns once it answers."""
        with open(self.log, "a") as log:
            self.process = subprocess.Popen(self.command, stderr=log, **self.process_options)
        try:
            self._wait_until_it_answers()
        except BaseException:
            self.end(signal.SIGKILL)
            print(self.log.read_text())
            raise

    def _wait_until_it_answers(self):
        deadline = time.monotonic() + START_LIMIT
        while True:
            try:
                with Client(self.address, START_LIMIT) as client:
                    client.ask(wire.TOTAL_STATISTIC_INFO)
                return
            except ConnectionRefusedError:
                assert self.process.poll() is None and time.monotonic() < deadline, "it does not come up"
                time.sleep(0.02)

    def end(self, how=signal.SIGTERM):
        """Answers its status."""
        self.process.send_signal(how)
        return self.process.wait(30)
