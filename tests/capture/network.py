# SPDX-License-Identifier: GPL-3.0-or-later
"""Network namespaces that live as long as this process: two ends of a cable, and a router beside it.

    near (10.77.0.1, fd77::1) ---- far (10.77.0.2, fd77::2)
    near (10.78.0.1) ---- router ---- (10.79.0.2) far

What comes from 10.66.0.0/16 gets no reply. All of 10.64.0.0/15 is far too.
"""

import ctypes
import fcntl
import json
import socket
import struct
import subprocess
import time

ETHERNET_HEADER = 14  # bytes of a packet in the counters of a cable's end; loopback and tunnels do not count them
SEGMENT_HEADERS, LARGEST_PACKET = 52, 1500  # bytes, those of IPv4 and TCP with time stamps
NEAR_ETHER, FAR_ETHER = "02:00:00:77:00:01", "02:00:00:77:00:02"  # the stations at a cable's ends

SIOCETHTOOL = 0x8946
OFFLOADS = {"tx checksums": 0x17, "tso": 0x1F, "gso": 0x24, "gro": 0x2C}  # ETHTOOL_STXCSUM and others


def dying_with_us(command):
    return ["setpriv", "--pdeathsig", "KILL", *map(str, command)]


class Namespace:
    """A network namespace, held by a process."""

    def __init__(self):
        self.holder = subprocess.Popen(dying_with_us(["unshare", "--net", "sleep", "infinity"]))
        deadline = time.monotonic() + 10
        while self.name() == self.name("self") and time.monotonic() < deadline:
            time.sleep(0.005)
        self.run("ip", "link", "set", "lo", "up")
        # Nothing that the kernel would say by itself: no router is asked for, no address is looked up twice.
        for folder in ("all", "default", "lo"):
            self.set(f"net/ipv6/conf/{folder}/accept_dad", 0)
            self.set(f"net/ipv6/conf/{folder}/accept_ra", 0)
        self.set("net/ipv6/conf/default/addr_gen_mode", 1)
        self.set("net/ipv4/ping_group_range", "0 2147483647")
        self.set("net/ipv4/tcp_fastopen", 0x207)  # both ends, without asking for a cookie first

    def set(self, name, value):
        self.run("sh", "-c", 'echo "$2" >"/proc/sys/$1"', "set", name, value)

    def name(self, pid=None):
        return subprocess.run(
            ["readlink", f"/proc/{pid or self.holder.pid}/ns/net"], capture_output=True, check=True
        ).stdout

    def inside(self, command):
        return ["nsenter", f"--net=/proc/{self.holder.pid}/ns/net", *map(str, command)]

    def run(self, *command):
        return subprocess.run(self.inside(command), check=True, stdout=subprocess.PIPE, text=True).stdout

    def counters(self, interface):
        """What crossed an interface at the IP layer: (bytes received, bytes sent)."""
        (link,) = json.loads(self.run("ip", "-s", "-d", "-j", "link", "show", "dev", interface))
        header = ETHERNET_HEADER if link.get("linkinfo", {}).get("info_kind") == "veth" else 0
        return tuple(link["stats64"][way]["bytes"] - header * link["stats64"][way]["packets"] for way in ("rx", "tx"))

    def overhead_sent(self):
        """Bytes that TCP over IPv4 has sent besides its payload, as packets that a cable would carry."""
        rows = [line.split() for line in self.run("cat", "/proc/net/snmp").splitlines() if line.startswith("Tcp:")]
        counters = dict(zip(*rows))
        return int(counters["OutSegs"]) * SEGMENT_HEADERS + int(counters["RetransSegs"]) * LARGEST_PACKET

    def set_offloads(self, interface, enabled):
        """`ethtool -K`, which not every system has."""
        script = f"import network; network.set_offloads_here({interface!r}, {enabled})"
        subprocess.run(
            self.inside(["/usr/bin/python3", "-c", script]), check=True, cwd=__file__.rpartition("/")[0] or "."
        )

    def close(self):
        self.holder.kill()
        self.holder.wait()


def set_offloads_here(interface, enabled):
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as any_socket:
        for command in OFFLOADS.values():
            value = ctypes.create_string_buffer(struct.pack("II", command, enabled))
            request = struct.pack("16sP16x", interface.encode(), ctypes.addressof(value))
            fcntl.ioctl(any_socket, SIOCETHTOOL, request)


class Network:
    """The three namespaces and their cables, whose interfaces are named for the namespace that they lead to."""

    def __init__(self):
        self.near, self.far, self.router = (Namespace() for _ in range(3))
        self.connect(self.near, "far", ("10.77.0.1/24", "fd77::1/64"), self.far, "near", ("10.77.0.2/24", "fd77::2/64"))
        self.connect(self.near, "router", ("10.78.0.1/24",), self.router, "near", ("10.78.0.2/24",))
        self.connect(self.router, "far", ("10.79.0.1/24",), self.far, "router", ("10.79.0.2/24",))
        self.near.run("ip", "route", "add", "10.79.0.0/24", "via", "10.78.0.2")
        self.far.run("ip", "route", "add", "10.78.0.0/24", "via", "10.79.0.1")
        self.far.run("ip", "route", "add", "blackhole", "10.66.0.0/16")
        self.near.run("ip", "route", "add", "10.64.0.0/15", "via", "10.77.0.2")
        self.far.run("ip", "route", "add", "local", "10.64.0.0/15", "dev", "lo")
        self.router.set("net/ipv4/ip_forward", 1)
        for namespace in (self.near, self.far):
            namespace.run("ip", "address", "add", "fd77:1::1/128", "dev", "lo")

    @staticmethod
    def connect(left, left_name, left_addresses, right, right_name, right_addresses):
        left.run(
            *("ip", "link", "add", left_name, "address", NEAR_ETHER, "type", "veth", "peer", right_name),
            *("address", FAR_ETHER, "netns", f"/proc/{right.holder.pid}/ns/net"),
        )
        ends = ((left, left_name, left_addresses), (right, right_name, right_addresses))
        for namespace, name, addresses in ends:
            for address in addresses:
                namespace.run("ip", "address", "add", address, "dev", name, *(["nodad"] if ":" in address else []))
            namespace.set_offloads(name, False)  # so that its counters count packets as a cable carries them
            namespace.run("ip", "link", "set", name, "up")
        neighbours = (left, left_name, right_addresses, FAR_ETHER), (right, right_name, left_addresses, NEAR_ETHER)
        for namespace, name, addresses, ether in neighbours:  # so that nobody asks who has an address
            for address in addresses:
                neighbour = address.partition("/")[0]
                namespace.run("ip", "neighbour", "replace", neighbour, "lladdr", ether, "dev", name)

    def close(self):
        for namespace in (self.near, self.far, self.router):
            namespace.close()
