# SPDX-License-Identifier: GPL-3.0-or-later
"""The daemon link as docs/wire.md lays it out, written without a look at the C++ code.

It shares nothing with the programs under test, so that a mistake in their common code cannot hide on both ends.
Everything here is strict: a value that the layout does not allow raises `Deviation`.
"""

import datetime
import struct
from typing import NamedTuple

PORT = 10023
HEADER_SIZE = 20
EVENT = -1  # the messageType of an event
NOT_A_REPLY = -1  # the replyToId of a request or event
MAX_REQUEST_BODY = 4096  # bytes; the daemon drops a client that announces more

TCP, UDP, ALL = 6, 17, -1
DESCENDING, ASCENDING, UNSORTED = 0, 1, 2


class Deviation(Exception):
    """Bytes that the layout does not allow."""


class Frame(NamedTuple):
    """One frame; `body` are its `dataSize` bytes."""

    module_id: int
    message_id: int
    reply_to: int
    type: int
    body: bytes

    def to_bytes(self):
        return struct.pack(">5i", *self[:4], len(self.body)) + self.body


def split_frames(data):
    """The whole frames at the front of `data`, and the bytes of the last one that is still incomplete."""
    frames, start = [], 0
    while len(data) - start >= HEADER_SIZE:
        *fields, size = struct.unpack_from(">5i", data, start)
        if size < 0:
            raise Deviation(f"a frame announces {size} bytes of body")
        end = start + HEADER_SIZE + size
        if len(data) < end:
            break
        frames.append(Frame(*fields, bytes(data[start + HEADER_SIZE : end])))
        start = end
    return frames, data[start:]


class Address(NamedTuple):
    family: int  # 0 IPv4, 1 IPv6
    port: int
    bytes: bytes  # 4 or 16

    def number(self):
        """What addresses sort by: IPv4 before IPv6, then their value."""
        return self.family, self.bytes


# Each kind of value: a function to bytes, and one from bytes that answers the value and how many bytes it took.


def _number(code):
    size = struct.calcsize(code)
    return (lambda value: struct.pack(code, value)), (lambda data: (struct.unpack_from(code, data)[0], size))


def _pack_string(text):
    raw = text.encode()
    return struct.pack(">i", len(raw)) + (raw + b"\0" if raw else b"")


def _unpack_string(data):
    (length,) = struct.unpack_from(">i", data)
    if length == 0:
        return "", 4
    raw = data[4 : 5 + length]
    if length < 0 or len(raw) != length + 1 or raw.find(b"\0") != length:
        raise Deviation(f"a string of length {length} is {raw!r}")
    return raw[:-1].decode(), 5 + length


def _pack_time(moment):
    if moment is None:
        return bytes(24)
    return struct.pack(">6i", moment.day, moment.month, moment.year, moment.second, moment.minute, moment.hour)


def _unpack_time(data):
    day, month, year, second, minute, hour = struct.unpack_from(">6i", data)
    if not any((day, month, year, second, minute, hour)):
        return None, 24
    try:
        return datetime.datetime(year, month, day, hour, minute, second), 24
    except ValueError as error:
        raise Deviation(f"no moment of a calendar: {data[:24].hex(' ', 4)} ({error})") from None


def _pack_address(address):
    return struct.pack(">2i16s", address.family, address.port, address.bytes)


def _unpack_address(data):
    family, port, raw = struct.unpack_from(">2i16s", data)
    size = {0: 4, 1: 16}.get(family)
    if size is None or not 0 <= port <= 65535 or any(raw[size:]):
        raise Deviation(f"no address: family {family}, port {port}, {raw.hex()}")
    return Address(family, port, raw[:size]), 24


INT = _number(">i")
INT64 = _number(">q")
STRING = (_pack_string, _unpack_string)
TIME = (_pack_time, _unpack_time)
ADDRESS = (_pack_address, _unpack_address)


def pack(layout, values):
    """The body with `layout` that carries `values`, a dict."""
    return b"".join(kind[0](values[name]) for name, kind in layout.items())


def unpack(layout, body):
    """The values of a body as a dict; the body must hold exactly them."""
    values, rest = {}, body
    try:
        for name, kind in layout.items():
            values[name], size = kind[1](rest)
            rest = rest[size:]
    except struct.error:
        raise Deviation(f"a body of {len(body)} bytes ends inside {name}") from None
    if rest:
        raise Deviation(f"a body of {len(body)} bytes has {len(rest)} left over after {name}")
    return values


BYTES = {"bytes": INT64}
ITERATOR = {"iteratorId": INT}
COUNT = {"count": INT}
COUNTERS = dict.fromkeys(("totalReceivedBytes", "totalSendedBytes", "tcpReceivedBytes", "tcpSendedBytes",
                          "udpReceivedBytes", "udpSendedBytes"), INT64)
LIFE = {"startTime": TIME, "endTime": TIME}
APPLICATION = {"id": INT, "name": STRING, "fullPath": STRING, **COUNTERS, **LIFE}
CONNECTION = {
    "id": INT,
    "applicationId": INT,
    **LIFE,
    **dict.fromkeys(("direction", "socketDomain", "socketType", "socketProtocol"), INT),
    **dict.fromkeys(("receivedBytes", "sendedBytes"), INT64),
    **dict.fromkeys(("remoteAddress", "localAddress"), ADDRESS),
}
TOTALS = {**COUNTERS, "startTime": TIME}
EVENT_BODY = {"eventId": INT, "param": INT}


class Request(NamedTuple):
    type: int
    body: dict
    reply: dict = None  # None: nobody waits for a reply

    def frame(self, message_id, **values):
        return Frame(0, message_id, NOT_A_REPLY, self.type, pack(self.body, values))


_to_time = {"toTime": TIME, "socketProtocol": INT}
_sort = {"sortDirection": INT, "sortField": INT}
_connection_parameters = {"iteratorId": INT, **LIFE, "applicationId": INT, "socketProtocol": INT, **_sort}

TOTAL_RECEIVED_BYTES = Request(3, _to_time, BYTES)
TOTAL_SENT_BYTES = Request(5, _to_time, BYTES)
APPLICATION_RECEIVED_BYTES = Request(7, {"applicationId": INT, **_to_time}, BYTES)
APPLICATION_SENT_BYTES = Request(9, {"applicationId": INT, **_to_time}, BYTES)
TOTAL_STATISTIC_INFO = Request(11, {}, TOTALS)
APPLICATION_INFO_FROM_ID = Request(12, {"applicationId": INT}, APPLICATION)
CREATE_APPLICATION_ITERATOR = Request(13, {}, ITERATOR)
SET_APPLICATIONS_PARAMETERS = Request(15, {"iteratorId": INT, **_sort})
GET_COUNT_APPLICATIONS = Request(16, ITERATOR, COUNT)
GET_APPLICATION_INFO = Request(18, {"iteratorId": INT, "index": INT}, APPLICATION)
DELETE_APPLICATIONS_ITERATOR = Request(19, ITERATOR)
CREATE_CONNECTIONS_ITERATOR = Request(20, {}, ITERATOR)
SET_CONNECTIONS_PARAMETERS = Request(22, _connection_parameters)
GET_COUNT_CONNECTIONS = Request(23, ITERATOR, COUNT)
GET_CONNECTION_INFO = Request(25, {"iteratorId": INT, "index": INT}, CONNECTION)
DELETE_CONNECTIONS_ITERATOR = Request(26, ITERATOR)
IS_CLEANING = Request(27, {}, {"isClean": INT})

REQUESTS = {value.type: value for value in list(globals().values()) if isinstance(value, Request)}

NEW_APPLICATION, START_CLEANING, CLEANING_STARTED, CLEANING_ENDED, CONFIGURATION_CHANGED = range(5)
