#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Drives a real daemon over its link and holds it to docs/wire.md.

    exercise_daemon.py [--memory-growth MIB] PROGRAM [TEST...]

PROGRAM is `nevtora-daemon`; it is started with the demo year in a database of its own and on a free port of loopback.
"""

import argparse
import datetime
import os
import plistlib
import random
import resource
import signal
import socket
import struct
import sys
import tempfile
import threading
import time
import unicodedata
import unittest
from operator import itemgetter
from pathlib import Path

import wire
from client import Client
from real_daemon import RealDaemon

DAY = datetime.timedelta(days=1)
FAR = datetime.datetime(2037, 1, 1)

program = None
memory_growth = 16  # MiB that the daemon's resident memory may grow by while it is maltreated


class Daemon(RealDaemon):
    def __init__(self, folder):
        self.settings = Path(folder, "settings.plist")
        self.keep_months(13)  # the whole year, of which 12 months of 30 days lack some days
        files = ["--database", f"{folder}/history.sqlite", "--config", self.settings]
        super().__init__(program, f"{folder}/log", "--demo", *files)
        self.memory = self.resident_memory()
        self.descriptors = self.count_descriptors()

    def keep_months(self, months):
        self.settings.write_bytes(plistlib.dumps({"CaptureInterval": months}))

    def resident_memory(self):
        """In MiB."""
        status = dict(line.split(":") for line in Path(f"/proc/{self.process.pid}/status").read_text().splitlines())
        return int(status["VmRSS"].split()[0]) / 1024

    def processor_time(self):
        """In seconds."""
        user, system = Path(f"/proc/{self.process.pid}/stat").read_text().rpartition(")")[2].split()[11:13]
        return (int(user) + int(system)) / os.sysconf("SC_CLK_TCK")

    def memory_grown(self):
        """In MiB since it came up."""
        return self.resident_memory() - self.memory

    def count_descriptors(self):
        return len(list(Path(f"/proc/{self.process.pid}/fd").iterdir()))


daemon = None


def setUpModule():
    global daemon
    daemon = Daemon(unittest.enterModuleContext(tempfile.TemporaryDirectory(prefix="nevtora-link-")))
    unittest.addModuleCleanup(daemon.end, signal.SIGKILL)


def load_tests(loader, *_):
    """In this order: the same daemon goes through everything, and the last test ends it."""
    cases = (DaemonAnswers, DaemonSurvives, DaemonForgets, DaemonEnds)
    return unittest.TestSuite(map(loader.loadTestsFromTestCase, cases))


class DaemonTest(unittest.TestCase):
    def setUp(self):
        self.client = self.enterContext(Client(daemon.address))

    def check_others_are_served(self):
        with Client(daemon.address) as witness:
            self.assertIsNotNone(witness.ask(wire.TOTAL_STATISTIC_INFO))

    def connections(self, iterator, start, end, application=-1, protocol=wire.ALL, direction=2, field=7):
        """The rows that a range holds."""
        parameters = dict(iteratorId=iterator, startTime=start, endTime=end, applicationId=application)
        parameters |= dict(socketProtocol=protocol, sortDirection=direction, sortField=field)
        self.client.send((wire.SET_CONNECTIONS_PARAMETERS, parameters))
        return self.client.rows(wire.GET_COUNT_CONNECTIONS, wire.GET_CONNECTION_INFO, iterator)

    def quiet_day(self, iterator):
        """A day of the demo year that is over, so that its rows hold still, and has enough to be worth sorting."""
        first = self.client.ask(wire.TOTAL_STATISTIC_INFO)["startTime"]
        for days in range(100, 200):
            start = first + days * DAY
            rows = self.connections(iterator, start, start + DAY)
            if len(rows) >= 50:
                return start, start + DAY, rows
        self.fail("no day of the demo year has 50 connections")


def row_requests(request, iterator, count):
    return [(request, {"iteratorId": iterator, "index": index}) for index in range(count)]


def fold(text):
    """What remains of a text when case and accents do not matter."""
    return "".join(c for c in unicodedata.normalize("NFKD", text.casefold()) if not unicodedata.combining(c))


class DaemonAnswers(DaemonTest):
    def test_records_are_consistent(self):
        rows = self.client.applications()
        self.assertGreaterEqual(len(rows), 20)
        self.assertEqual(len({row["id"] for row in rows}), len(rows))
        for row in rows:
            self.assertGreaterEqual(row["totalReceivedBytes"], row["tcpReceivedBytes"] + row["udpReceivedBytes"])
            self.assertGreaterEqual(row["totalSendedBytes"], row["tcpSendedBytes"] + row["udpSendedBytes"])
            self.assertLessEqual(row["startTime"], row["endTime"])
            by_id = self.client.ask(wire.APPLICATION_INFO_FROM_ID, applicationId=row["id"])
            self.assertEqual((by_id["name"], by_id["fullPath"]), (row["name"], row["fullPath"]))
        self.assertEqual(self.client.ask(wire.IS_CLEANING), {"isClean": 0})

    def test_totals_up_to_a_moment_only_grow_and_add_up(self):
        first = self.client.ask(wire.TOTAL_STATISTIC_INFO)["startTime"]
        ids = [row["id"] for row in self.client.applications()]
        for total, one in (
            (wire.TOTAL_RECEIVED_BYTES, wire.APPLICATION_RECEIVED_BYTES),
            (wire.TOTAL_SENT_BYTES, wire.APPLICATION_SENT_BYTES),
        ):
            last = 0
            for days in (-1, 3, 30, 90.5, 200.25):
                moment = (first + days * DAY).replace(minute=0, second=0)
                tcp, udp, everything = (
                    self.client.ask(total, toTime=moment, socketProtocol=protocol)["bytes"]
                    for protocol in (wire.TCP, wire.UDP, wire.ALL)
                )
                self.assertLessEqual(tcp + udp, everything)
                self.assertEqual(everything > 0, days > 0)
                self.assertGreaterEqual(everything, last)
                values = dict(toTime=moment, socketProtocol=wire.ALL)
                shares = self.client.ask_all(*((one, dict(values, applicationId=i)) for i in ids))
                self.assertEqual(sum(share["bytes"] for share in shares), everything, f"at {moment}")
                last = everything

    def test_a_total_up_to_the_far_future_is_the_present_one(self):
        for _ in range(20):
            before = self.client.ask(wire.TOTAL_STATISTIC_INFO)
            total = self.client.ask(wire.TOTAL_RECEIVED_BYTES, toTime=FAR, socketProtocol=wire.UDP)["bytes"]
            if self.client.ask(wire.TOTAL_STATISTIC_INFO) == before:
                break
        self.assertEqual(total, before["udpReceivedBytes"])

    def test_applications_come_in_every_order(self):
        keys = (
            lambda row: fold(row["name"]),
            lambda row: fold(row["fullPath"]),
            itemgetter("endTime"),
            itemgetter("totalReceivedBytes"),
            itemgetter("totalSendedBytes"),
            None,
        )
        iterator = self.client.ask(wire.CREATE_APPLICATION_ITERATOR)["iteratorId"]
        for field, key in enumerate(keys):
            for direction in (wire.ASCENDING, wire.DESCENDING, wire.UNSORTED):
                with self.subTest(field=field, direction=direction):
                    rows = self._sorted_applications(iterator, field, direction)
                    self.check_order(rows, key, direction)

    def _sorted_applications(self, iterator, field, direction):
        """The rows in the order asked for, fetched while none of their values changed."""
        for _ in range(50):
            count = self.client.ask(wire.GET_COUNT_APPLICATIONS, iteratorId=iterator)["count"]
            rows = row_requests(wire.GET_APPLICATION_INFO, iterator, count)
            parameters = dict(iteratorId=iterator, sortDirection=direction, sortField=field)
            recount = (wire.GET_COUNT_APPLICATIONS, {"iteratorId": iterator})
            replies = self.client.ask_all(*rows, (wire.SET_APPLICATIONS_PARAMETERS, parameters), recount, *rows)
            before, after = replies[:count], replies[count + 1 :]
            if replies[count]["count"] == count and by_id(before) == by_id(after):
                return after
        return self.fail("the values never hold still")

    def check_order(self, rows, key, direction):
        """By `key`; by id where there is none or no direction."""
        if key is None or direction == wire.UNSORTED:
            key, direction = itemgetter("id"), wire.ASCENDING
        values = [key(row) for row in rows]
        self.assertEqual(values, sorted(values, reverse=direction == wire.DESCENDING))

    def test_connections_come_in_every_order_filtered_and_when_their_life_touches_the_range(self):
        iterator = self.client.ask(wire.CREATE_CONNECTIONS_ITERATOR)["iteratorId"]
        start, end, natural = self.quiet_day(iterator)
        keys = [itemgetter(name) for name in ("startTime", "endTime", "direction", "receivedBytes", "sendedBytes")]
        keys += [lambda row: row["localAddress"].number(), lambda row: row["remoteAddress"].number(), None]
        for field, key in enumerate(keys):
            for direction in (wire.ASCENDING, wire.DESCENDING, wire.UNSORTED):
                with self.subTest(field=field, direction=direction):
                    rows = self.connections(iterator, start, end, direction=direction, field=field)
                    self.assertEqual(by_id(rows), by_id(natural))
                    self.check_order(rows, key, direction)
        for row in natural:
            self.assertLessEqual(row["startTime"], row["endTime"])
        for option, name in (("protocol", "socketProtocol"), ("application", "applicationId")):
            for wanted in {row[name] for row in natural}:
                got = self.connections(iterator, start, end, **{option: wanted})
                self.assertEqual(got, [row for row in natural if row[name] == wanted])
        second = datetime.timedelta(seconds=1)
        inner = [row for row in natural if start < row["startTime"] and row["endTime"] < end]
        for life in inner[:: len(inner) // 5]:
            begun, ended = life["startTime"], life["endTime"]
            for first, last in ((ended, end), (ended + second, end), (start, begun), (start, begun - second)):
                want = [row for row in natural if row["startTime"] <= last and row["endTime"] >= first]
                self.assertEqual(self.connections(iterator, first, last), want)

    def test_what_does_not_exist_has_an_empty_answer(self):
        ask, far = self.client.ask, {"toTime": FAR, "socketProtocol": wire.ALL}
        for unknown in (-1, 0x7FFFFFFF, -0x80000000):
            self.assertIsNone(ask(wire.APPLICATION_INFO_FROM_ID, applicationId=unknown))
            self.assertIsNone(ask(wire.GET_APPLICATION_INFO, iteratorId=unknown, index=0))
            self.assertIsNone(ask(wire.GET_CONNECTION_INFO, iteratorId=unknown, index=0))
            self.assertEqual(ask(wire.GET_COUNT_APPLICATIONS, iteratorId=unknown), {"count": 0})
            self.assertEqual(ask(wire.GET_COUNT_CONNECTIONS, iteratorId=unknown), {"count": 0})
            self.assertEqual(ask(wire.APPLICATION_RECEIVED_BYTES, applicationId=unknown, **far), {"bytes": 0})
            self.assertEqual(ask(wire.APPLICATION_SENT_BYTES, applicationId=unknown, **far), {"bytes": 0})
            parameters = dict(iteratorId=unknown, sortDirection=unknown, sortField=unknown)
            self.client.send((wire.SET_APPLICATIONS_PARAMETERS, parameters))
            self.client.send((wire.DELETE_APPLICATIONS_ITERATOR, dict(iteratorId=unknown)))
            self.client.send((wire.DELETE_CONNECTIONS_ITERATOR, dict(iteratorId=unknown)))
        iterator = ask(wire.CREATE_APPLICATION_ITERATOR)["iteratorId"]
        count = ask(wire.GET_COUNT_APPLICATIONS, iteratorId=iterator)["count"]
        for index in (-1, count, 0x7FFFFFFF):
            self.assertIsNone(ask(wire.GET_APPLICATION_INFO, iteratorId=iterator, index=index))
        self.client.send((wire.DELETE_APPLICATIONS_ITERATOR, dict(iteratorId=iterator)))
        self.assertIsNone(ask(wire.GET_APPLICATION_INFO, iteratorId=iterator, index=0))

    def test_a_cursor_belongs_to_the_client_that_made_it(self):
        iterator = self.client.ask(wire.CREATE_APPLICATION_ITERATOR)["iteratorId"]
        with Client(daemon.address) as other:
            self.assertEqual(other.ask(wire.GET_COUNT_APPLICATIONS, iteratorId=iterator), {"count": 0})
            other.ask_all((wire.DELETE_APPLICATIONS_ITERATOR, dict(iteratorId=iterator)), (wire.IS_CLEANING, {}))
        self.assertGreater(self.client.ask(wire.GET_COUNT_APPLICATIONS, iteratorId=iterator)["count"], 0)


def by_id(rows):
    return sorted(rows, key=itemgetter("id"))


class DaemonSurvives(DaemonTest):
    """Clients that break off, break the rules or do not read."""

    def random_requests(self, chance):
        """Bytes of a plausible visit: cursors made, set, counted, read, some deleted."""
        values = dict(startTime=datetime.datetime(2000, 1, 1), endTime=FAR, toTime=FAR, applicationId=-1)
        frames = []
        for message_id in range(chance.randrange(1, 60)):
            request = chance.choice(list(wire.REQUESTS.values()))
            values |= {name: chance.randrange(-1, 8) for name in ("iteratorId", "sortField", "sortDirection")}
            values |= dict(index=chance.randrange(40), socketProtocol=chance.choice((wire.TCP, wire.ALL)))
            frames.append(request.frame(message_id, **{name: values[name] for name in request.body}).to_bytes())
        return b"".join(frames)

    def test_two_hundred_dropped_connections_leave_nothing_behind(self):
        chance = random.Random(200)
        for _ in range(200):
            data = self.random_requests(chance)
            link = socket.create_connection(daemon.address, 10)
            if chance.random() < 0.5:  # reset instead of an orderly end
                link.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
            link.sendall(data[: chance.randrange(len(data))])
            if chance.random() < 0.3:
                link.settimeout(0.005)
                try:
                    link.recv(100)
                except TimeoutError:
                    pass
            link.close()
        self.check_others_are_served()
        deadline = time.monotonic() + 20
        allowed = daemon.descriptors + 1  # this test's own client
        while daemon.count_descriptors() > allowed and time.monotonic() < deadline:
            time.sleep(0.05)
        self.assertLessEqual(daemon.count_descriptors(), allowed)

    def send_frame(self, message_type, body, message_id=7):
        frame = wire.Frame(0, message_id, wire.NOT_A_REPLY, message_type, body)
        self.client.socket.sendall(frame.to_bytes())

    def receive_body(self, message_id=7):
        """Of the next frame that is no event."""
        data = b""
        while True:
            frames, _ = wire.split_frames(data)
            replies = [frame for frame in frames if frame.type != wire.EVENT]
            if replies:
                self.assertEqual(replies[0].reply_to, message_id)
                return replies[0].body
            data += self.client.socket.recv(4096) or self.fail("the daemon closed the link")

    def test_what_cannot_be_understood_is_answered_with_nothing(self):
        for message_type in (0, 1, 2, 4, 28, 9999, -2, 0x7FFFFFFF):
            for body in (b"", b"1234", bytes(wire.MAX_REQUEST_BODY)):
                self.send_frame(message_type, body)
                self.assertEqual(self.receive_body(), b"")
        for request in wire.REQUESTS.values():
            whole = wire.pack(request.body, {name: None if "Time" in name else 1 for name in request.body})
            for size in {len(whole) - 1, len(whole) // 2, 0} if whole else ():
                self.send_frame(request.type, whole[:size])
                if request.reply is not None:
                    self.assertEqual(self.receive_body(), b"")
        for body in (b"", bytes(7), struct.pack(">2i", 77, 1), struct.pack(">2i", wire.CLEANING_ENDED, 0)):
            self.send_frame(wire.EVENT, body)
        self.client.send_event(wire.CONFIGURATION_CHANGED)
        self.send_frame(wire.APPLICATION_INFO_FROM_ID.type, struct.pack(">i", 1) + b"more than was asked for")
        self.assertEqual(wire.unpack(wire.APPLICATION, self.receive_body())["id"], 1)

    def test_times_and_codes_out_of_range_do_no_harm(self):
        extreme = (0x7FFFFFFF, -0x80000000, -1, 0, 13, 86400)
        chance = random.Random(24)
        iterator = self.client.ask(wire.CREATE_CONNECTIONS_ITERATOR)["iteratorId"]
        for _ in range(200):
            twelve = [chance.choice(extreme) for _ in range(12)]
            codes = [chance.choice((-1, 1)), *(chance.choice(extreme) for _ in range(3))]
            body = struct.pack(">i12i4i", iterator, *twelve, *codes)
            self.send_frame(wire.SET_CONNECTIONS_PARAMETERS.type, body)
            self.send_frame(wire.TOTAL_SENT_BYTES.type, struct.pack(">6ii", *twelve[:6], codes[1]))
            self.assertEqual(len(self.receive_body()), 8)
        count = self.client.ask(wire.GET_COUNT_CONNECTIONS, iteratorId=iterator)["count"]
        self.assertGreaterEqual(count, 0)

    def test_a_frame_of_impossible_size_ends_the_link(self):
        for size in (-1, -0x80000000, wire.MAX_REQUEST_BODY + 1, 0x7FFFFFFF):
            with socket.create_connection(daemon.address, 20) as liar:
                bad = struct.pack(">5i", 0, 0, -1, wire.IS_CLEANING.type, size)
                liar.sendall(wire.IS_CLEANING.frame(7).to_bytes() + bad)
                frames, _ = wire.split_frames(b"".join(iter(lambda: liar.recv(4096), b"")))
            replies = [frame.reply_to for frame in frames if frame.type != wire.EVENT]
            self.assertEqual(replies, [7], "what came before it is answered")
            self.check_others_are_served()

    def test_a_frame_waits_for_its_last_byte_and_disturbs_nobody(self):
        for byte in wire.APPLICATION_INFO_FROM_ID.frame(7, applicationId=1).to_bytes():
            self.check_others_are_served()
            self.client.socket.sendall(bytes([byte]))
        self.assertEqual(wire.unpack(wire.APPLICATION, self.receive_body())["id"], 1)

    def test_who_reads_late_gets_every_answer_in_order(self):
        count = 50_000
        requests = (wire.APPLICATION_INFO_FROM_ID.frame(i, applicationId=1).to_bytes() for i in range(count))
        late = self.enterContext(socket.create_connection(daemon.address, 20))
        sender = threading.Thread(target=lambda data: (late.sendall(data), late.shutdown(socket.SHUT_WR)),
                                  args=[b"".join(requests)])
        sender.start()
        time.sleep(1)
        frames, rest = wire.split_frames(b"".join(iter(lambda: late.recv(1 << 20), b"")))
        sender.join()
        replies = [frame.reply_to for frame in frames if frame.type != wire.EVENT]
        self.assertTrue(replies == list(range(count)) and not rest, f"{len(replies)} replies")

    def test_who_waits_for_a_list_gets_its_answers_in_order(self):
        iterator = self.client.ask(wire.CREATE_CONNECTIONS_ITERATOR)
        parameters = dict(startTime=datetime.datetime(2001, 1, 1), endTime=FAR, applicationId=-1, sortField=5)
        parameters |= dict(socketProtocol=wire.ALL, sortDirection=wire.ASCENDING) | iterator
        listed, other = self.client.send((wire.SET_CONNECTIONS_PARAMETERS, parameters),
                                         (wire.GET_COUNT_CONNECTIONS, iterator), (wire.IS_CLEANING, {}))
        self.client.collect(other)
        self.assertIn(listed, self.client.replies)

    def is_served(self, client):
        try:
            return client.ask(wire.IS_CLEANING) is not None
        except (EOFError, ConnectionError):
            return False

    def test_more_clients_than_256_are_turned_away_until_some_have_left(self):
        others = [self.enterContext(Client(daemon.address)) for _ in range(300)]
        served = sum(map(self.is_served, others))
        self.assertTrue(200 < served < 256, served)
        self.assertTrue(self.is_served(self.client))
        for other in others:
            other.socket.close()
        deadline = time.monotonic() + 10
        while not self.is_served(self.enterContext(Client(daemon.address))):
            self.assertLess(time.monotonic(), deadline)

    def test_without_descriptors_new_clients_wait_and_it_does_not_spin(self):
        if memory_growth > 16:
            self.skipTest("a sanitizer needs descriptors for its own checks")
        self.assertTrue(self.is_served(self.client))  # it has its descriptor
        process = daemon.process.pid
        before = resource.prlimit(process, resource.RLIMIT_NOFILE)
        free = next(number for number in range(1000) if not Path(f"/proc/{process}/fd/{number}").exists())
        resource.prlimit(process, resource.RLIMIT_NOFILE, (free, before[1]))
        self.addCleanup(resource.prlimit, process, resource.RLIMIT_NOFILE, before)
        late = self.enterContext(Client(daemon.address))
        begin = daemon.processor_time()
        [asked] = late.send((wire.IS_CLEANING, {}))
        time.sleep(1)
        self.assertLess(daemon.processor_time() - begin, 0.5, "seconds in which nothing can be done")
        self.assertTrue(self.is_served(self.client))
        resource.prlimit(process, resource.RLIMIT_NOFILE, before)
        late.collect(asked)

    def test_a_client_that_never_reads_is_dropped(self):
        request = wire.TOTAL_STATISTIC_INFO.frame(0).to_bytes() * 1000
        deaf = socket.create_connection(daemon.address, 10)
        self.addCleanup(deaf.close)
        deaf.setblocking(False)
        deadline, peak = time.monotonic() + 60, 0
        while time.monotonic() < deadline:
            try:
                while True:
                    deaf.send(request)
            except BlockingIOError:
                self.check_others_are_served()
                peak = max(peak, daemon.memory_grown())
                time.sleep(0.2)
            except (BrokenPipeError, ConnectionResetError):
                self.assertLess(peak, memory_growth)
                return
        self.fail("the daemon keeps a client that reads nothing for a minute")


class DaemonForgets(DaemonTest):
    def test_what_is_older_than_the_months_to_keep_is_dropped_within_two_seconds(self):
        now = datetime.datetime.now()
        old, kept = self.total_to(now - 200 * DAY), self.total_to(now - 20 * DAY)
        daemon.keep_months(1)
        self.client.send_event(wire.CONFIGURATION_CHANGED)
        deadline = time.monotonic() + 2
        while self.total_to(now - 200 * DAY) == old:
            self.assertLess(time.monotonic(), deadline, daemon.log.read_text())
            time.sleep(0.05)
        self.assertEqual(self.total_to(now - 200 * DAY), self.total_to(now - 40 * DAY))
        self.assertEqual(self.total_to(now - 20 * DAY), kept)

    def total_to(self, moment):
        return self.client.ask(wire.TOTAL_RECEIVED_BYTES, toTime=moment, socketProtocol=wire.ALL)["bytes"]


class DaemonEnds(DaemonTest):
    def test_after_all_that_it_is_no_larger_and_ends_once_it_has_answered(self):
        grown = daemon.memory_grown()
        print(f"resident memory {daemon.memory:.1f} MiB, grown by {grown:.1f}", file=sys.stderr)
        self.assertLess(grown, memory_growth)
        ids = self.client.send(*[(wire.TOTAL_STATISTIC_INFO, {})] * 500)
        self.client.collect(ids[0])  # so that the rest has reached the daemon too
        daemon.process.send_signal(signal.SIGTERM)
        for message_id in ids[1:]:
            self.assertIsNotNone(self.client.collect(message_id)[0])
        with self.assertRaises(ConnectionResetError):  # so that nobody sends what will not be answered
            while True:
                self.client.receive()
        self.assertEqual(daemon.process.wait(30), 0, daemon.log.read_text())


def main():
    global program, memory_growth
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--memory-growth", type=float, default=memory_growth, metavar="MIB")
    parser.add_argument("program")
    parser.add_argument("tests", nargs="*")
    arguments = parser.parse_args()
    program, memory_growth = arguments.program, arguments.memory_growth
    unittest.main(argv=[sys.argv[0], *arguments.tests], verbosity=2)


if __name__ == "__main__":
    main()
