# SPDX-License-Identifier: GPL-3.0-or-later
"""A client of the daemon for tests: it counts its frames, matches replies and keeps events in arrival order."""

import socket

import wire


class Client:
    """One link. Every wait ends with an exception after `timeout` seconds."""

    def __init__(self, address, timeout=20):
        self.socket = socket.create_connection(address, timeout)
        self.socket.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        self.next_id = 0
        self.events = []  # (eventId, param) in arrival order
        self._asked = {}  # message id -> request
        self.replies = {}  # uncollected: message id -> (values or None, number of events that came before it)
        self._rest = b""

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.socket.close()

    def send(self, *requests):
        """Sends (request, values) pairs in one write; answers the message ids of those that get a reply."""
        frames, ids = [], []
        for request, values in requests:
            frames.append(request.frame(self.next_id, **values).to_bytes())
            if request.reply is not None:
                self._asked[self.next_id] = request
                ids.append(self.next_id)
            self.next_id += 1
        self.socket.sendall(b"".join(frames))
        return ids

    def send_event(self, event_id, param=0):
        body = wire.pack(wire.EVENT_BODY, {"eventId": event_id, "param": param})
        self.socket.sendall(wire.Frame(0, self.next_id, wire.NOT_A_REPLY, wire.EVENT, body).to_bytes())
        self.next_id += 1

    def receive(self):
        """Waits for more bytes and files every frame that is complete now."""
        data = self.socket.recv(1 << 16)
        if not data:
            raise EOFError("the daemon closed the link" + (" inside a frame" if self._rest else ""))
        frames, self._rest = wire.split_frames(self._rest + data)
        for frame in frames:
            self._file(frame)

    def _file(self, frame):
        if frame.type == wire.EVENT:
            values = wire.unpack(wire.EVENT_BODY, frame.body)
            self.events.append((values["eventId"], values["param"]))
            return
        if frame.reply_to not in self._asked:
            raise wire.Deviation(f"a reply to {frame.reply_to}, which was not asked or is answered already")
        request = self._asked.pop(frame.reply_to)
        values = wire.unpack(request.reply, frame.body) if frame.body else None
        self.replies[frame.reply_to] = values, len(self.events)

    def collect(self, message_id):
        """The reply's values, None for an empty body, and the number of events that came before it."""
        while message_id not in self.replies:
            self.receive()
        return self.replies.pop(message_id)

    def ask_all(self, *requests):
        """Pipelined: sends all, then collects the replies in order."""
        return [self.collect(message_id)[0] for message_id in self.send(*requests)]

    def ask(self, request, **values):
        return self.ask_all((request, values))[0]

    def rows(self, count, row, iteratorId):
        """All rows of a cursor, fetched in batches that fit into the link's buffers."""
        size = self.ask(count, iteratorId=iteratorId)["count"]
        requests = [(row, {"iteratorId": iteratorId, "index": index}) for index in range(size)]
        return [values for i in range(0, size, 1000) for values in self.ask_all(*requests[i : i + 1000])]

    def applications(self):
        """All of them, in the daemon's own order; they add up to the totals."""
        for _ in range(50):  # until no poll came between the answers
            totals = self.ask(wire.TOTAL_STATISTIC_INFO)
            iterator = self.ask(wire.CREATE_APPLICATION_ITERATOR)
            rows = self.rows(wire.GET_COUNT_APPLICATIONS, wire.GET_APPLICATION_INFO, **iterator)
            self.send((wire.DELETE_APPLICATIONS_ITERATOR, iterator))
            if self.ask(wire.TOTAL_STATISTIC_INFO) == totals:
                break
        sums = {name: sum(row[name] for row in rows) for name in wire.COUNTERS}
        assert sums | {"startTime": totals["startTime"]} == totals, (sums, totals)
        return rows

    def count_event(self, event_id):
        return sum(event == event_id for event, _ in self.events)

    def wait_for_event(self, event_id):
        """Returns once the event was received at least once."""
        while not self.count_event(event_id):
            self.receive()
