# SPDX-License-Identifier: GPL-3.0-or-later
"""A daemon that captures in the kernel, asked over its link and, once it has ended, by its history."""

import contextlib
import ipaddress
import os
import signal
import socket
import sqlite3
import subprocess
import sys
import time
from dataclasses import dataclass
from pathlib import Path
from typing import NamedTuple

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "link"))

import wire  # noqa: E402
from client import Client  # noqa: E402
from network import dying_with_us  # noqa: E402

START_LIMIT = 30  # seconds


def why_not():
    """What this system lacks, if it does."""
    if os.geteuid() != 0 or Path("/proc/self/uid_map").read_text().split() != ["0", "0", "4294967295"]:
        return "it takes root, for network namespaces and for programs in the kernel"
    if not Path("/sys/kernel/btf/vmlinux").exists():
        return "this kernel tells nothing of its types (/sys/kernel/btf/vmlinux)"
    if " cgroup2 " not in Path("/proc/mounts").read_text():
        return "there is no cgroup v2"
    return None


def skip_where_it_cannot_run():
    if reason := why_not():
        print("skipped:", reason)
        sys.exit(77)


@dataclass
class Application:
    """Bytes received and sent."""

    wire: tuple
    payload: tuple = (0, 0)


class Connection(NamedTuple):
    path: str  # of its application
    direction: int
    local: object
    remote: object
    protocol: int
    wire: tuple


class CapturingDaemon:
    def __init__(self, program, folder, capture="bpf"):
        self.program = program
        self.database, self.log = folder / "history.sqlite", folder / "log"
        with socket.create_server(("127.0.0.1", 0)) as free:
            address = free.getsockname()
        command = [program, "--capture", capture, "--database", self.database, "--config", folder / "none.plist"]
        with open(self.log, "w") as log:
            self.process = subprocess.Popen(
                dying_with_us([*command, "--listen", f"{address[0]}:{address[1]}"]), stderr=log
            )
        deadline = time.monotonic() + START_LIMIT
        while True:
            try:
                self.client = Client(address)
                self.client.ask(wire.TOTAL_STATISTIC_INFO)
                return
            except (ConnectionError, EOFError):
                if self.process.poll() is not None or time.monotonic() > deadline:
                    raise RuntimeError("the daemon does not answer:\n" + self.log.read_text()) from None
                time.sleep(0.02)

    def applications(self):
        """By executable, as the daemon tells its clients."""
        iterator = self.client.ask(wire.CREATE_APPLICATION_ITERATOR)["iteratorId"]
        count = self.client.ask(wire.GET_COUNT_APPLICATIONS, iteratorId=iterator)["count"]
        requests = [(wire.GET_APPLICATION_INFO, {"iteratorId": iterator, "index": index}) for index in range(count)]
        rows = self.client.ask_all(*requests)
        return {row["fullPath"]: Application((row["totalReceivedBytes"], row["totalSendedBytes"])) for row in rows}

    def status(self):
        """What it tells of itself: texts by name."""
        command = [self.program, "--status", "--database", self.database]
        lines = subprocess.run(command, check=True, capture_output=True, text=True).stdout.splitlines()
        return dict(line.split(": ", 1) for line in lines if ": " in line)

    def kernel_programs(self):
        """The ids of those that it keeps."""
        programs = set()
        for file in Path(f"/proc/{self.process.pid}/fdinfo").iterdir():
            with contextlib.suppress(FileNotFoundError):  # some come and go
                _, _, rest = file.read_text().partition("prog_id:")
                programs.update(map(int, rest.split()[:1]))
        return programs

    def stop(self):
        self.client.socket.close()
        self.process.send_signal(signal.SIGTERM)
        if self.process.wait(30):
            raise RuntimeError("the daemon failed:\n" + self.log.read_text())

    def close(self):
        self.client.socket.close()
        self.process.kill()
        self.process.wait()

    def query(self, text):
        with sqlite3.connect(self.database) as database:
            return database.execute(text).fetchall()

    def history(self):
        """By executable, as the daemon has written it. Rows are cumulative for each class of protocols."""
        columns = ("received", "sent", "payload_received", "payload_sent")
        latest = ", ".join(f"max({column}) AS {column}" for column in columns)
        rows = self.query(
            f"SELECT path, {', '.join(f'sum({column})' for column in columns)} "
            f"FROM (SELECT application, {latest} FROM series GROUP BY application, class) "
            "JOIN applications ON id = application GROUP BY path"
        )
        return {path: Application(tuple(values[:2]), tuple(values[2:])) for path, *values in rows}

    def connections(self):
        rows = self.query(
            "SELECT path, direction, local, remote, protocol, received, sent FROM connections "
            "JOIN applications ON applications.id = application"
        )
        return [
            Connection(path, direction, address_of(local), address_of(remote), protocol, (received, sent))
            for path, direction, local, remote, protocol, received, sent in rows
        ]


def address_of(column):
    """Of a byte for the family, the address and two bytes for the port."""
    return ipaddress.ip_address(column[1:-2] or bytes(4))
