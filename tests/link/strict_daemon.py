#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Stands in for the daemon and checks every byte that a front end sends.

    strict_daemon.py [--seconds N] [--port P] [-- COMMAND...]

Listens on loopback, starts COMMAND if one is given, serves one front end for N seconds, tells it to end and ends with
status 0. The first deviation from docs/wire.md ends it at once with a message and status 1. The front end's reader is
tried meanwhile: replies come in shuffled order and in pieces that ignore where frames begin.
"""

import argparse
import datetime
import random
import socket
import subprocess
import sys
import time

import wire

APPLICATIONS = [  # name, path, MiB received; names in mixed case, one not in Latin, one with no path
    ("Web Browser", "/usr/lib/web-browser/web-browser", 1834.2),
    ("mail", "/usr/bin/mail", 201.7),
    ("Kernel", "", 88.0),
    ("Music Player", "/opt/music player/player", 641.5),
    ("apt", "/usr/lib/apt/methods/https", 512.0),
    ("Чат", "/usr/bin/chat", 14.25),
    ("video-call", "/usr/bin/video-call", 920.9),
    ("Backup", "/usr/bin/backup", 3.5),
    ("ssh", "/usr/bin/ssh", 0.4),
    ("Torrent", "/usr/bin/torrent", 4096.0),
    ("name service", "/usr/sbin/name-service", 0.02),
    ("Editor", "/usr/share/editor/editor", 0.0),
]
STARTED = datetime.datetime(2024, 2, 29, 9, 5, 0)
APPLICATION_KEYS = ["name", "fullPath", "endTime", "totalReceivedBytes", "totalSendedBytes", "id"]
CONNECTION_KEYS = [
    "startTime",
    "endTime",
    "direction",
    "receivedBytes",
    "sendedBytes",
    "localAddress",
    "remoteAddress",
    "id",
]


def make_application(index, name, path, mebibytes):
    received = int(mebibytes * 2**20)
    return {
        "id": 1 + index,
        "name": name,
        "fullPath": path,
        "totalReceivedBytes": received,
        "totalSendedBytes": received // 8,
        "tcpReceivedBytes": received * 3 // 4,
        "tcpSendedBytes": received // 16,
        "udpReceivedBytes": received // 8,
        "udpSendedBytes": received // 32,
        "startTime": STARTED + datetime.timedelta(hours=index),
        "endTime": STARTED + datetime.timedelta(days=40 - index, seconds=index),
    }


def make_connection(index):
    begin = STARTED + datetime.timedelta(minutes=7 * index)
    family = index % 2
    return {
        "id": 1 + index,
        "applicationId": 1 + index % len(APPLICATIONS),
        "startTime": begin,
        "endTime": begin + datetime.timedelta(seconds=90 * index),
        "direction": index % 3,
        "socketDomain": [2, 10][family],
        "socketType": [1, 2][index % 5 == 0],
        "socketProtocol": [wire.TCP, wire.UDP][index % 5 == 0],
        "receivedBytes": 1000 * index,
        "sendedBytes": 2**33 - index,
        "remoteAddress": wire.Address(family, 443, bytes([32 + index] * [4, 16][family])),
        "localAddress": wire.Address(family, 40000 + index, bytes([127] * [4, 16][family])),
    }


class Cursor:
    def __init__(self):
        self.rows = []
        self.parameters = None
        self.count = None  # as the front end knows it


class StrictDaemon:
    """The state behind one link. Every method raises `wire.Deviation` on what a front end must not do."""

    def __init__(self):
        self.applications = [make_application(i, *known) for i, known in enumerate(APPLICATIONS)]
        self.connections = [make_connection(i) for i in range(40)]
        self.application_cursors = {}
        self.connection_cursors = {}
        self.next_frame = 0
        self.next_cursor = 0
        self.seen = {}  # message type -> how many
        self.asked_ids = set()

    def take(self, frame):
        """Checks one frame; answers the bytes to send back, if any."""
        if frame.message_id != self.next_frame:
            raise wire.Deviation(f"messageId is {frame.message_id}, {self.next_frame} is next")
        if frame.module_id != 0 or frame.reply_to != wire.NOT_A_REPLY:
            raise wire.Deviation(f"moduleId is {frame.module_id}, replyToId {frame.reply_to}")
        self.next_frame += 1
        self.seen[frame.type] = self.seen.get(frame.type, 0) + 1
        if frame.type == wire.EVENT:
            return self._take_event(wire.unpack(wire.EVENT_BODY, frame.body))
        if frame.type not in wire.REQUESTS:
            raise wire.Deviation(f"messageType {frame.type} is no request")
        request = wire.REQUESTS[frame.type]
        reply = self._answer(request, wire.unpack(request.body, frame.body))
        if request.reply is None:
            return b""
        return wire.Frame(0, 0, frame.message_id, frame.type + 1, wire.pack(request.reply, reply)).to_bytes()

    def _take_event(self, event):
        if event["eventId"] not in (wire.START_CLEANING, wire.CONFIGURATION_CHANGED) or event["param"] != 0:
            raise wire.Deviation(f"a front end does not send {event}")
        return b""

    def _answer(self, request, values):
        self._check_ranges(values)
        if request.reply is wire.BYTES:
            return {"bytes": 2**20 * (3 if values["socketProtocol"] == wire.ALL else 1)}
        if request is wire.TOTAL_STATISTIC_INFO:
            return self._totals()
        if request is wire.APPLICATION_INFO_FROM_ID:
            self.asked_ids.add(values["applicationId"])
            return self.applications[values["applicationId"] - 1]
        if request is wire.IS_CLEANING:
            return {"isClean": 0}
        return self._answer_cursor(request, values)

    def _check_ranges(self, values):
        if values.get("socketProtocol", wire.ALL) not in (wire.TCP, wire.UDP, wire.ALL):
            raise wire.Deviation(f"protocol of {values}")
        for name in ("toTime", "startTime", "endTime"):
            if values.get(name, STARTED) is None:
                raise wire.Deviation(f"{name} of {values} is unset")
        known = range(1, len(self.applications) + 1)
        anyone = [-1] if "iteratorId" in values else []
        if values.get("applicationId", 1) not in [*known, *anyone]:
            raise wire.Deviation(f"no such application: {values}")

    def _totals(self):
        counters = [name for name in wire.TOTALS if name != "startTime"]
        sums = {name: sum(row[name] for row in self.applications) for name in counters}
        return {**sums, "startTime": STARTED}

    def _answer_cursor(self, request, values):
        if request in (wire.CREATE_APPLICATION_ITERATOR, wire.CREATE_CONNECTIONS_ITERATOR):
            return self._create_cursor(request)
        of_applications = request.type < wire.CREATE_CONNECTIONS_ITERATOR.type
        cursors = self.application_cursors if of_applications else self.connection_cursors
        cursor = cursors.get(values["iteratorId"])
        if cursor is None:
            raise wire.Deviation(f"request {request.type} names cursor {values['iteratorId']}, which it never had")
        if request.reply is wire.COUNT:
            cursor.rows = self._applications(cursor) if of_applications else self._connections(cursor)
            cursor.count = len(cursor.rows)
            return {"count": cursor.count}
        if "index" in values:
            if cursor.count is None or not 0 <= values["index"] < cursor.count:
                raise wire.Deviation(f"row {values['index']} of {cursor.count} is asked")
            return cursor.rows[values["index"]]
        if "sortField" in values:
            self._set_parameters(cursor, values, APPLICATION_KEYS if of_applications else CONNECTION_KEYS)
        else:
            del cursors[values["iteratorId"]]
        return None

    def _create_cursor(self, request):
        self.next_cursor += 1  # one number for both kinds, so that a mix-up shows
        of_applications = request is wire.CREATE_APPLICATION_ITERATOR
        cursors = self.application_cursors if of_applications else self.connection_cursors
        cursors[self.next_cursor] = Cursor()
        return {"iteratorId": self.next_cursor}

    def _set_parameters(self, cursor, values, keys):
        if not 0 <= values["sortField"] < len(keys) or values["sortDirection"] not in (0, 1, 2):
            raise wire.Deviation(f"sort of {values}")
        cursor.parameters = values

    def _applications(self, cursor):
        return self._sorted(self.applications, cursor.parameters, APPLICATION_KEYS)

    def _connections(self, cursor):
        wanted = cursor.parameters
        if wanted is None:
            raise wire.Deviation("connections are counted before their range was set")
        rows = [
            row
            for row in self.connections
            if wanted["applicationId"] in (-1, row["applicationId"])
            and wanted["socketProtocol"] in (-1, row["socketProtocol"])
            and row["startTime"] <= wanted["endTime"]
            and row["endTime"] >= wanted["startTime"]
        ]
        return self._sorted(rows, wanted, CONNECTION_KEYS)

    @staticmethod
    def _sorted(rows, parameters, keys):
        key = keys[parameters["sortField"]] if parameters else "id"
        if key == "id" or parameters["sortDirection"] == wire.UNSORTED:
            return list(rows)
        fold = str.casefold if key in ("name", "fullPath") else lambda value: value
        descending = parameters["sortDirection"] == wire.DESCENDING
        return sorted(rows, key=lambda row: fold(row[key]), reverse=descending)

    def announce_application(self):
        """One more application appears; answers the event's bytes."""
        self.applications.append(make_application(len(self.applications), "Newcomer", "/usr/bin/newcomer", 1))
        body = wire.pack(wire.EVENT_BODY, {"eventId": wire.NEW_APPLICATION, "param": len(self.applications)})
        return wire.Frame(0, 0, wire.NOT_A_REPLY, wire.EVENT, body).to_bytes()

    def check_whole_visit(self, rest):
        """What a front end must have done by the end of some refreshes."""
        if rest:
            raise wire.Deviation(f"the last frame stops after {len(rest)} bytes")
        for request in (wire.CREATE_APPLICATION_ITERATOR, wire.GET_APPLICATION_INFO):
            if request.type not in self.seen:
                raise wire.Deviation(f"request {request.type} never came; frames by type: {self.seen}")
        for request in (wire.TOTAL_STATISTIC_INFO, wire.GET_COUNT_APPLICATIONS):
            if self.seen.get(request.type, 0) < 2:
                raise wire.Deviation(f"no second refresh asked {request.type}; frames by type: {self.seen}")
        if self.applications[-1]["id"] not in self.asked_ids:
            raise wire.Deviation("the new application was announced, yet nobody asked about it")


def send_in_pieces(link, data, chance):
    sizes = (1, 19, 20, 21, 1023, 1025, 5000)
    while data:
        size = chance.choice(sizes)
        link.sendall(data[:size])
        data = data[size:]
        if chance.random() < 0.05:
            time.sleep(0.002)


class Link:
    """The front end's connection and what has come of its next frame."""

    def __init__(self, connection, daemon):
        self.socket = connection
        self.daemon = daemon
        self.rest = b""
        self.chance = random.Random(10023)

    def serve(self, seconds):
        """Answers for so long; false when the front end has left."""
        end = time.monotonic() + seconds
        while (left := end - time.monotonic()) > 0:
            self.socket.settimeout(left)
            try:
                data = self.socket.recv(1 << 16)
            except TimeoutError:
                break
            if not data:
                return False
            frames, self.rest = wire.split_frames(self.rest + data)
            replies = [self.daemon.take(frame) for frame in frames]
            self.chance.shuffle(replies)
            self._send_in_pieces(b"".join(replies))
        return True

    def send(self, data):
        self.socket.settimeout(10)
        self.socket.sendall(data)

    def _send_in_pieces(self, data):
        while data:
            size = self.chance.choice((1, 19, 20, 21, 1023, 1025, 5000))
            self.send(data[:size])
            data = data[size:]
            if self.chance.random() < 0.05:
                time.sleep(0.002)


def receive_visit(link, daemon, seconds):
    """A visit with an application that appears in the middle; the front end must not leave by itself."""
    stays = link.serve(seconds / 2)
    link.send(daemon.announce_application())
    if not stays or not link.serve(seconds / 2):
        raise wire.Deviation("the front end closed the link")
    daemon.check_whole_visit(link.rest)


def end_visit(link, daemon, command):
    """Asks the front end to end: it gives its cursors back and leaves with status 0."""
    command.terminate()
    if link.serve(20):
        raise wire.Deviation("the front end, told to end, is still there after 20 s")
    status = command.wait(20)
    if link.rest or status != 0:
        raise wire.Deviation(f"the front end ended with status {status}, {len(link.rest)} bytes into a frame")
    if daemon.application_cursors or daemon.connection_cursors:
        raise wire.Deviation("the front end left cursors behind")


def wait_for_front_end(listener, command):
    listener.settimeout(30)
    try:
        connection, _ = listener.accept()
    except TimeoutError:
        status = command.poll() if command else None
        raise wire.Deviation(f"no front end came in 30 s (command's status: {status})") from None
    connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
    return connection


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--seconds", type=float, default=60)
    parser.add_argument("--port", type=int, default=wire.PORT)
    parser.add_argument("command", nargs="*")
    arguments = parser.parse_args()

    listener = socket.create_server(("127.0.0.1", arguments.port))
    command = subprocess.Popen(arguments.command) if arguments.command else None
    daemon = StrictDaemon()
    try:
        link = Link(wait_for_front_end(listener, command), daemon)
        receive_visit(link, daemon, arguments.seconds)
        if command:
            end_visit(link, daemon, command)
    except (wire.Deviation, OSError, subprocess.TimeoutExpired) as deviation:
        print(f"frame {daemon.next_frame}: {deviation}", file=sys.stderr)
        return 1
    finally:
        if command:
            command.kill()
            command.wait()
    print(f"{daemon.next_frame} frames, all right; by type: {dict(sorted(daemon.seen.items()))}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
