#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Stands in for the daemon and checks every byte that a front end sends.

    strict_daemon.py [--seconds N] -- COMMAND...

Listens on loopback, starts COMMAND, serves one front end for N seconds, tells it to end and ends with
status 0. The first deviation from docs/wire.md ends it at once with a message and status 1. The front end's reader is
tried meanwhile: replies come in shuffled order and in pieces that ignore where frames begin.
"""

import argparse
import random
import socket
import subprocess
import sys
import time

import wire
from scripted_daemon import STARTED, ScriptedDaemon, few_applications, make_application


class StrictDaemon(ScriptedDaemon):
    """The state behind one link. Every method raises `wire.Deviation` on what a front end must not do."""

    def __init__(self):
        super().__init__(few_applications())
        self.next_frame = 0
        self.seen = {}  # message type -> how many
        self.asked_ids = set()

    def take(self, frame):
        if frame.message_id != self.next_frame:
            raise wire.Deviation(f"messageId is {frame.message_id}, {self.next_frame} is next")
        if frame.module_id != 0 or frame.reply_to != wire.NOT_A_REPLY:
            raise wire.Deviation(f"moduleId is {frame.module_id}, replyToId {frame.reply_to}")
        self.next_frame += 1
        self.seen[frame.type] = self.seen.get(frame.type, 0) + 1
        return super().take(frame)

    def take_event(self, event):
        if event["eventId"] not in (wire.START_CLEANING, wire.CONFIGURATION_CHANGED) or event["param"] != 0:
            raise wire.Deviation(f"a front end does not send {event}")

    def answer(self, request, values):
        self._check_ranges(values)
        if request is wire.APPLICATION_INFO_FROM_ID:
            self.asked_ids.add(values["applicationId"])
        return super().answer(request, values)

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

    def announce_application(self):
        """One more application appears, with a name longer than a read; answers the event's bytes."""
        self.applications.append(make_application(len(self.applications), "Newcomer" * 400, "/usr/bin/newcomer", 1))
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
        raise wire.Deviation(f"no front end came in 30 s (command's status: {command.poll()})") from None
    connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
    return connection


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--seconds", type=float, default=60)
    parser.add_argument("command", nargs="+")
    arguments = parser.parse_args()

    listener = socket.create_server(("127.0.0.1", wire.PORT))
    command = subprocess.Popen(arguments.command)
    daemon = StrictDaemon()
    try:
        link = Link(wait_for_front_end(listener, command), daemon)
        receive_visit(link, daemon, arguments.seconds)
        end_visit(link, daemon, command)
    except (wire.Deviation, OSError, subprocess.TimeoutExpired) as deviation:
        print(f"frame {daemon.next_frame}: {deviation}", file=sys.stderr)
        return 1
    finally:
        command.kill()
        command.wait()
    print(f"{daemon.next_frame} frames, all right; by type: {dict(sorted(daemon.seen.items()))}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
