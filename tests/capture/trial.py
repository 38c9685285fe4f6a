# SPDX-License-Identifier: GPL-3.0-or-later
"""Runs the programs of one kind of traffic, and takes down what they say and what crosses the cables."""

import json
import os
import shutil
import subprocess
import sys
import time
from collections import defaultdict

from network import dying_with_us

RECEIVED, SENT = 0, 1


class Running:
    """A program of a kind."""

    def __init__(self, program, command, environment):
        self.program = program
        pipes = dict(stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.process = subprocess.Popen(dying_with_us(command), text=True, env=environment, **pipes)
        if program.is_server or program.waits:
            line = self.process.stdout.readline()
            if line != "ready\n":
                raise RuntimeError(f"{program.role} did not start: {line}{self.process.stderr.read()}")

    def finish(self):
        """What its processes say that they moved; ends its input, for which some wait."""
        output, errors = self.process.communicate(timeout=60)
        if self.process.returncode:
            raise RuntimeError(f"{self.program.role} failed: {errors}")
        return [json.loads(line) for line in output.splitlines()]

    def kill(self):
        self.process.kill()
        self.process.communicate()


class Trial:
    def __init__(self, kind, network, folder, generator):
        self.kind, self.network, self.folder = kind, network, folder
        self.paths, self.ends = {}, {}  # by role
        for program in kind.programs:
            self.add_executable(program.role, program.end, sys.executable if program.script else generator)
            for value in program.arguments.values():
                if str(value).startswith("@"):
                    self.add_executable(value[1:], program.end, generator)
        self.told = defaultdict(lambda: [0, 0])  # by executable: payload received and sent
        self.crossed = []  # for each cable: bytes received and sent by its end
        self.running = []
        self.failure = None

    def add_executable(self, role, end, original):
        path = self.folder / f"{self.kind.port}.{role.replace(' ', '-')}"
        shutil.copy(os.path.realpath(original), path)
        self.paths[role], self.ends[role] = str(path), end

    def start(self):
        self.kind.prepare(self.network)
        self.running = [self.start_program(program) for program in self.kind.programs if program.is_server]
        self.before = self.settled_counters()
        self.running += [self.start_program(program) for program in self.kind.programs if not program.is_server]

    def start_program(self, program):
        path = self.paths[program.role]
        words = {"port": self.kind.port} | program.arguments
        words = [f"{k}={self.paths[v[1:]] if str(v).startswith('@') else v}" for k, v in words.items()]
        command = [path, "-S", "-c", program.script] if program.script else [path, program.mode]
        environment = os.environ | ({"PYTHONHOME": sys.base_prefix} if program.script else {})
        return Running(program, getattr(self.network, program.end).inside([*command, *words]), environment)

    def run(self):
        """All of it; an older kind has started already."""
        try:
            if self.kind.is_older:
                self.before = self.settled_counters()
            else:
                self.start()
            self.finish()
        except Exception as failure:  # told by the test of this kind, while the others go on
            self.failure = failure
            for program in self.running:
                program.kill()
        finally:
            self.kind.restore(self.network)
            self.booked_at = time.monotonic() + self.kind.booked_after

    def finish(self):
        for program in sorted(self.running, key=lambda running: running.program.waits):
            if not program.program.is_server:
                self.note(program.finish())
        after = self.settled_counters()
        self.crossed = [(b[0] - a[0], b[1] - a[1]) for a, b in zip(self.before, after)]
        for program in self.running:
            if program.program.is_server:
                self.note(program.finish())

    def note(self, lines):
        for line in lines:
            self.told[line["program"]][RECEIVED] += line["received"]
            self.told[line["program"]][SENT] += line["sent"]

    def settled_counters(self):
        """Once no packet comes any more."""
        counters = self.counters()
        while True:
            time.sleep(self.kind.settled_after)
            before, counters = counters, self.counters()
            if counters == before:
                return counters

    def counters(self):
        return [self.counters_of(cable) for cable in self.kind.cables]

    def counters_of(self, cable):
        if cable.in_large_pieces:
            return self.network.near.overhead_sent(), self.network.far.overhead_sent()
        return getattr(self.network, cable.end).counters(cable.interface)

    def wire_expectations(self):
        """What should be booked to a group of executables: (description, bytes, executables, way)."""
        for cable, crossed in zip(self.kind.cables, self.crossed):
            if cable.in_large_pieces:
                crossed = [
                    overhead + sum(self.told[self.paths[role]][way] for role in self.at("far"))
                    for way, overhead in enumerate(crossed)
                ]
            for end in ("near", "far"):
                paths = [self.paths[role] for role in self.at(end) if not cable.roles or role in cable.roles]
                for way, name in enumerate(("received", "sent")):
                    if paths and f"{end} {name}" in self.kind.wire:
                        yield f"{end} {name}", crossed[way if end == cable.end else 1 - way], paths, way

    def at(self, end):
        return [role for role, where in self.ends.items() if where == end]
