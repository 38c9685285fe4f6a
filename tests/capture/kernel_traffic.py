#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Compares what a daemon books to the kernel with what crossed the interfaces when nobody but kernels spoke.

    kernel_traffic.py DAEMON

Takes root. Where it cannot run it says why and ends with 77, which ctest takes for "skipped".
"""

import sys
import tempfile
import time
import unittest
from pathlib import Path

from capturing_daemon import Application, CapturingDaemon, skip_where_it_cannot_run
from network import Network

BOOKED_WITHIN = 2.5  # seconds: two polls
KERNEL = ""

# The kernel reports each membership twice within some seconds.
MEMBER = """
import socket, time
four = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
four.setsockopt(socket.IPPROTO_IP, socket.IP_ADD_MEMBERSHIP, socket.inet_aton("239.77.0.2") + socket.inet_aton("10.77.0.2"))
six = socket.socket(socket.AF_INET6, socket.SOCK_DGRAM)
group = socket.inet_pton(socket.AF_INET6, "ff15::77") + socket.if_nametoindex("near").to_bytes(4, "little")
six.setsockopt(socket.IPPROTO_IPV6, socket.IPV6_JOIN_GROUP, group)
time.sleep(4)
"""
PINGER = """
import socket
asked = socket.socket(socket.AF_INET, socket.SOCK_DGRAM, socket.IPPROTO_ICMP)
asked.settimeout(5)
for _ in range(50):
    asked.sendto(bytes([8]) + bytes(999), ("10.79.0.2", 0))
    asked.recv(2000)
"""


class KernelTraffic(unittest.TestCase):
    daemon_program = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="nevtora-kernel-")
        self.addCleanup(folder.cleanup)
        self.network = Network()
        self.addCleanup(self.network.close)
        time.sleep(4)  # the new interfaces' own memberships are told by then
        self.daemon = CapturingDaemon(self.daemon_program, Path(folder.name))
        self.addCleanup(self.daemon.close)

    def kernels(self):
        time.sleep(BOOKED_WITHIN)
        return self.daemon.applications().get(KERNEL, Application((0, 0))).wire

    def moved(self, interface, namespace, script):
        """What a script makes the kernel move, as booked and as an interface of `far` counts it."""
        booked, crossed = self.kernels(), self.network.far.counters(interface)
        namespace.run("/usr/bin/python3", "-c", script)
        pairs = (self.kernels(), booked), (self.network.far.counters(interface), crossed)
        return [tuple(after - before for after, before in zip(*pair)) for pair in pairs]

    def test_reports_of_memberships_are_the_kernels(self):
        booked, crossed = self.moved("near", self.network.far, MEMBER)
        self.assertGreaterEqual(crossed[1], 2 * 40 + 2 * 76)  # each with the IP header and one group
        self.assertEqual(booked[1], crossed[1])

    def test_what_a_router_forwards_is_nobodys(self):
        booked, crossed = self.moved("router", self.network.near, PINGER)
        self.assertEqual(crossed, (50 * 1020, 50 * 1020))
        self.assertEqual(booked, crossed)  # by the far end's kernel, which answers


if __name__ == "__main__":
    skip_where_it_cannot_run()
    KernelTraffic.daemon_program = sys.argv[1]
    unittest.main(argv=sys.argv[:1], verbosity=2)
