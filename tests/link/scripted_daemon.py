# SPDX-License-Identifier: GPL-3.0-or-later
"""A daemon whose records are written down here: what a window shows of them is known beforehand.

`few_applications()` and `many_applications(count)` make the records, `ScriptedDaemon` answers questions about them,
and `Server` lets front ends ask.
"""

import datetime
import socket
import socketserver
import struct
import threading

import wire

FEW = [  # name, path, MiB received; names in mixed case, one not in Latin, one with no path
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
WORKERS = ("backup", "build", "cache", "index", "mail", "proxy", "queue", "render", "search", "sync")
STARTED = datetime.datetime(2024, 2, 29, 9, 5, 0)
APPLICATION_KEYS = ["name", "fullPath", "endTime", "totalReceivedBytes", "totalSendedBytes", "id"]
CONNECTION_KEYS = ["startTime", "endTime", "direction", "receivedBytes", "sendedBytes", "localAddress", "remoteAddress",
                   "id"]


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
        "endTime": STARTED + datetime.timedelta(days=40 - index % 40, seconds=index),
    }


def few_applications():
    return [make_application(i, *known) for i, known in enumerate(FEW)]


def many_applications(count):
    """Workers of ten kinds, each moving a little less than the one before it."""

    def make(index):
        kind = WORKERS[index % len(WORKERS)]
        return make_application(index, f"{kind}-{index:05}", f"/srv/{kind}/bin/{kind}-{index:05}", 9e4 / (9 + index))

    return [make(index) for index in range(count)]


def make_connection(index, application_id):
    begin = STARTED + datetime.timedelta(minutes=7 * index)
    family = index % 2
    return {
        "id": 1 + index,
        "applicationId": application_id,
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


class ScriptedDaemon:
    """Answers from its records. Raises `wire.Deviation` on a question that they have no answer to."""

    def __init__(self, applications):
        self.applications = applications
        connections = 40 if applications else 0
        self.connections = [make_connection(i, 1 + i % len(applications)) for i in range(connections)]
        self.application_cursors = {}
        self.connection_cursors = {}
        self.next_cursor = 0

    def take(self, frame):
        """Answers the bytes to send back, if any."""
        if frame.type == wire.EVENT:
            self.take_event(wire.unpack(wire.EVENT_BODY, frame.body))
            return b""
        if frame.type not in wire.REQUESTS:
            raise wire.Deviation(f"messageType {frame.type} is no request")
        request = wire.REQUESTS[frame.type]
        reply = self.answer(request, wire.unpack(request.body, frame.body))
        if request.reply is None:
            return b""
        return wire.Frame(0, 0, frame.message_id, frame.type + 1, wire.pack(request.reply, reply)).to_bytes()

    def take_event(self, event):
        """Nothing here depends on events."""

    def answer(self, request, values):
        """The reply's values; None for a request without one."""
        if request.reply is wire.BYTES:
            return {"bytes": 2**20 * (3 if values["socketProtocol"] == wire.ALL else 1)}
        if request is wire.TOTAL_STATISTIC_INFO:
            return self.totals()
        if request is wire.APPLICATION_INFO_FROM_ID:
            return self.applications[values["applicationId"] - 1]
        if request is wire.IS_CLEANING:
            return {"isClean": 0}
        return self._answer_cursor(request, values)

    def totals(self):
        sums = {name: sum(row[name] for row in self.applications) for name in wire.COUNTERS}
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
            cursor.rows = (in_order(self.applications, cursor.parameters, APPLICATION_KEYS) if of_applications
                           else self._connections(cursor))
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

    def _connections(self, cursor):
        wanted = cursor.parameters
        if wanted is None:
            raise wire.Deviation("connections are counted before their range was set")
        rows = [
            row for row in self.connections
            if wanted["applicationId"] in (-1, row["applicationId"])
            and wanted["socketProtocol"] in (-1, row["socketProtocol"])
            and row["startTime"] <= wanted["endTime"]
            and row["endTime"] >= wanted["startTime"]
        ]
        return in_order(rows, wanted, CONNECTION_KEYS)


def in_order(rows, parameters, keys):
    """The rows as a cursor with these parameters counts them."""
    key = keys[parameters["sortField"]] if parameters else "id"
    if key == "id" or parameters["sortDirection"] == wire.UNSORTED:
        return list(rows)
    fold = str.casefold if key in ("name", "fullPath") else lambda value: value
    descending = parameters["sortDirection"] == wire.DESCENDING
    return sorted(rows, key=lambda row: fold(row[key]), reverse=descending)


class Server:
    """Serves any number of front ends, each with cursors of its own, until it is left or closed.

    That resets the connections, as the daemon does when it ends, so that a front end's next write fails.
    """

    def __init__(self, applications, port=wire.PORT, daemon=ScriptedDaemon):
        links = self._links = []

        class Link(socketserver.BaseRequestHandler):
            def handle(self):
                links.append(self.request)
                serve(self.request, daemon(applications))

        class Listener(socketserver.ThreadingTCPServer):
            allow_reuse_address = True
            daemon_threads = True

        self._listener = Listener(("127.0.0.1", port), Link)

    def __enter__(self):
        threading.Thread(target=self._listener.serve_forever, args=(0.05,), daemon=True).start()
        return self

    def __exit__(self, *_):
        self.close()

    def tell(self, event_id, param=0):
        """Sends an event to every front end."""
        event = wire.pack(wire.EVENT_BODY, {"eventId": event_id, "param": param})
        for link in self._links:
            link.sendall(wire.Frame(0, 0, wire.NOT_A_REPLY, wire.EVENT, event).to_bytes())

    def close(self):
        self._listener.shutdown()
        self._listener.socket.close()
        for link in self._links:
            reset(link)


def serve(link, daemon):
    """Answers one front end until either side has had enough."""
    link.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
    rest = b""
    try:
        while data := link.recv(1 << 16):
            frames, rest = wire.split_frames(rest + data)
            link.sendall(b"".join(map(daemon.take, frames)))
    except OSError:
        pass  # gone


def reset(link):
    try:
        link.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("2i", 1, 0))
        link.shutdown(socket.SHUT_RD)  # wakes the thread that reads from it
        link.close()
    except OSError:
        pass  # the front end left first
