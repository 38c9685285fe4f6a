# SPDX-License-Identifier: GPL-3.0-or-later
"""The kinds of traffic that the daemon must attribute: who moves what, and how, between which ends.

Each program of a kind is an executable of its own, so that what the daemon says of an executable is said of one
program in one kind.
"""

import ctypes
import errno
import itertools
import os
import socket
import subprocess
from dataclasses import dataclass, field
from typing import Callable

from network import FAR_ETHER

V4, V6 = "10.77.0.2", "fd77::2"  # the far end
EVERY_WIRE = frozenset({"near sent", "near received", "far sent", "far received"})
KILO, MEGA = 1000, 1000_000
AN_EXCHANGE = {"address": V4, "request": 2 * MEGA, "reply": 3 * MEGA}


@dataclass
class Program:
    """One process, or a family of them. "@role" among the arguments is another executable of the kind."""

    role: str
    mode: str
    end: str  # the namespace that it runs in: "near", "far", "router"
    arguments: dict
    is_server: bool = False  # says when it is ready, and ends with its input
    waits: bool = False  # says when it is connected, and goes on with its input when the others are done
    script: str = ""  # in the language of the interpreter that it is a copy of


@dataclass
class Cable:
    """An interface that counts what the programs of some roles (none: all) move."""

    end: str
    interface: str
    roles: tuple = ()
    in_large_pieces: bool = False  # its counters miss the headers of the packets that these are cut into


@dataclass
class Kind:
    name: str
    programs: list
    cables: tuple = (Cable("far", "near"),)  # whose counters tell the wire bytes
    wire: frozenset = EVERY_WIRE  # of which ends and ways all bytes are the programs'
    payload_tolerance: float = 0.001
    apart: tuple = ()  # roles with a root of their own, where paths are not the machine's
    silent: tuple = ()  # roles that move no byte of payload, but headers maybe
    deaf: tuple = ()  # roles that close before all is there
    most_rows: dict = field(default_factory=dict)  # connections of a role, at most
    directions: bool = True  # clients' connections are outgoing, servers' incoming
    is_older: bool = False  # its sockets are there before the daemon
    settled_after: float = 0.08  # seconds without a packet
    booked_after: float = 2.5  # seconds: two polls and a write; half-open connections have ten to become whole ones
    lacks: Callable = lambda: None  # why it cannot be tried here
    prepare: Callable = lambda network: None
    restore: Callable = lambda network: None
    port: int = field(default_factory=itertools.count(20000, 100).__next__)


def tcp_server(role="server", end="far", **arguments):
    return Program(role, "tcp-server", end, {"address": V4} | arguments, is_server=True)


def tcp_client(role="client", end="near", waits=False, **arguments):
    arguments = AN_EXCHANGE | arguments
    return Program(role, "tcp-client", end, arguments | ({"wait": 1} if waits else {}), waits=waits)


def udp_server(role="server", end="far", **arguments):
    return Program(role, "udp-server", end, {"address": V4} | arguments, is_server=True)


def udp_client(role="client", end="near", waits=False, **arguments):
    arguments = {"address": V4, "count": 1000, "size": 700, "reply": 300} | arguments
    return Program(role, "udp-client", end, arguments | ({"wait": 1} if waits else {}), waits=waits)


def tcp(name, server=None, client=None, **kind):
    return Kind(name, [tcp_server(**(server or {})), tcp_client(**(client or {}))], **kind)


def udp(name, server=None, client=None, **kind):
    return Kind(name, [udp_server(**(server or {})), udp_client(**(client or {}))], **kind)


def both(**arguments):
    return {"server": arguments, "client": arguments}


def storm(mode, **arguments):
    """200 processes that live for milliseconds."""
    words = {"mode": mode, "program": "@child", "processes": 200, "address": V4} | arguments
    return Program("parent", "storm", "near", words)


def lacks_socket(kind, protocol, name):
    def find_out():
        try:
            socket.socket(socket.AF_INET, kind, protocol).close()
        except OSError as error:
            return f"this kernel has no {name}: {errno.errorcode[error.errno]}"

    return find_out


def lacks_io_uring():
    library = ctypes.CDLL(None, use_errno=True)
    library.syscall(IO_URING_SETUP, 0, None)  # says that this is nonsense, where it is to be had
    if ctypes.get_errno() in (errno.ENOSYS, errno.EPERM):
        return f"io_uring is not to be had: {errno.errorcode[ctypes.get_errno()]}"


def lacks_device(kind, name, *options):
    def find_out():
        command = ["unshare", "--net", "ip", "link", "add", "probe", "type", kind, *options]
        made = subprocess.run(command, capture_output=True, text=True)
        if made.returncode:
            return f"this kernel has no {name}: {made.stderr.strip()}"

    return find_out


def lacks_translation():
    """Of addresses."""
    table = "add table ip probe; add chain ip probe probe { type nat hook output priority 0; }"
    try:
        made = subprocess.run(["unshare", "--net", "nft", table], capture_output=True, text=True)
    except FileNotFoundError:
        return "there is no nft"
    if made.returncode:
        return f"this kernel translates no addresses: {made.stderr.strip()}"


def translating(end, hook, rule):
    chain = f"add chain ip kinds kinds {{ type nat hook {hook} priority 0; }}"
    rules = f"add table ip kinds; {chain}; add rule ip kinds kinds {rule}"
    return lambda network: getattr(network, end).run("nft", rules)


def translating_no_more(end):
    return lambda network: getattr(network, end).run("nft", "delete table ip kinds")


def set_offloads(enabled):
    def change(network):
        network.near.set_offloads("far", enabled)
        network.far.set_offloads("near", enabled)

    return change


def kernel_tunnel(kind, *options):
    """A tunnel by the kernel, with the addresses 10.77.1.1 and .2 in it."""

    def make(network):
        for namespace, here, there in ((network.near, 1, 2), (network.far, 2, 1)):
            ends = ("local", f"10.77.0.{here}", "remote", f"10.77.0.{there}")
            namespace.run("ip", "link", "add", "carried", "type", kind, *options, *ends)
            namespace.run("ip", "address", "add", f"10.77.1.{here}/24", "dev", "carried")
            namespace.set_offloads("carried", False)
            namespace.run("ip", "link", "set", "carried", "up")

    return make


def remove_tunnel(network):
    for namespace in (network.near, network.far):
        namespace.run("ip", "link", "delete", "carried")


def make_devices(network):
    for namespace, here in ((network.near, 1), (network.far, 2)):
        namespace.run("ip", "tuntap", "add", "dev", "carried", "mode", "tun")
        namespace.run("ip", "address", "add", f"10.77.1.{here}/24", "dev", "carried")
        namespace.run("ip", "link", "set", "carried", "up")


def tunnel(role, end, here, there):
    arguments = {"here": here, "address": there, "interface": "carried"}
    return Program(role, "tunnel", end, arguments, is_server=True)


def ping(role, **arguments):
    return Program(role, "ping", "near", {"address": V4, "count": 200, "size": 1000} | arguments)


PYTHON_CLIENT = """
import json, os, socket, struct, sys
arguments = dict(word.split("=") for word in sys.argv[1:])
link = socket.create_connection((arguments["address"], int(arguments["port"])))
link.sendall(struct.pack("=QQ", 500_016, 500_000) + bytes(500_000))
received = 0
while received < 500_000:
    received += len(link.recv(65536))
print(json.dumps({"program": os.readlink("/proc/self/exe"), "received": received, "sent": 500_016}))
"""

NEAR_WIRE = frozenset({"near sent", "near received"})
LOOPBACK = dict(cables=(Cable("near", "lo"),))
SCTP, MPTCP = 132, 262
IO_URING_SETUP = 425

KINDS = [
    tcp("TCP over IPv4", client={"count": 3}),
    tcp("TCP over IPv6", **both(address=V6)),
    tcp("TCP over IPv4 in IPv6 sockets", {"address": "::"}, {"address": "::ffff:" + V4}),
    tcp("200 short TCP connections", client={"count": 200, "request": 300, "reply": 500}),
    Kind("200 TCP processes", [tcp_server(), storm("tcp-client", request=300, reply=500)], silent=("parent",)),
    tcp("TCP by an executable that is deleted", client={"unlink": 1, "count": 20, "request": 5 * KILO}),
    tcp("TCP by an executable that took over from another", client={"program": "@second"}, silent=("client",)),
    tcp("TCP of preforked processes", {"style": "prefork", "children": 4}, {"count": 4}),
    tcp("TCP of forked processes", {"style": "fork", "connections": 4}, {"count": 4}),
    tcp(
        "TCP of a program for each connection",
        {"style": "fork", "connections": 2, "program": "@handler"},
        {"count": 2},
        silent=("server",),
    ),
    tcp(
        "TCP of a program that was started on demand",
        {"style": "hand-over", "program": "@handler"},
        silent=("server",),
    ),
    Kind(
        "TCP of a connection that was handed over",
        [Program("server", "tcp-passer", "far", {"address": V4, "program": "@handler"}, is_server=True), tcp_client()],
        silent=("server",),
    ),
    tcp("TCP that passes from hand to hand", client={"program": "@second", "begun": 10 * KILO, "request": 40 * KILO}),
    tcp("TCP beside a bystander", {"bystander": "@bystander", "linger": 2500}, {"pause": 300}, silent=("bystander",)),
    Kind(
        "TCP in a container",
        [
            tcp_server(),
            Program("starter", "container", "near", {"mode": "tcp-client", "program": "@contained"} | AN_EXCHANGE),
        ],
        apart=("contained",),
        silent=("starter",),
    ),
    Kind("TCP sockets older than the daemon", [tcp_server(), tcp_client(waits=True)], is_older=True),
    Kind("UDP sockets older than the daemon", [udp_server(), udp_client(waits=True)], is_older=True),
    tcp("sendfile", **both(method="sendfile")),
    tcp("splice", **both(method="splice")),
    tcp("sendmmsg on a stream", **both(method="mmsg")),
    tcp("MSG_ZEROCOPY", **both(method="zerocopy")),
    tcp("io_uring", lacks=lacks_io_uring, **both(method="uring")),
    tcp("io_uring by the kernel's workers", lacks=lacks_io_uring, **both(method="uring-async")),
    tcp("io_uring that looks for requests by itself", lacks=lacks_io_uring, **both(method="uring-polled")),
    Kind(
        "TCP of servers that share a port",
        [tcp_server(shared=1), tcp_server("another server", shared=1), tcp_client(count=20, request=5 * KILO)],
    ),
    tcp(
        "TCP with offloads",
        cables=(Cable("far", "near", in_large_pieces=True),),
        prepare=set_offloads(True),
        restore=set_offloads(False),
    ),
    tcp("TCP after its process", {"linger": 300}, {"buffer": 8 * MEGA, "reply": 0}, settled_after=0.7),
    tcp("TCP closed by the server", {"first": 1}, {"last": 1, "count": 100, "request": 300, "reply": 500}),
    tcp("TCP Fast Open", {"fast": 1}, {"fast": 1, "count": 50, "request": 1000, "reply": 500}),
    tcp(
        "MPTCP",
        lacks=lacks_socket(socket.SOCK_STREAM, MPTCP, "MPTCP"),
        payload_tolerance=0.02,  # it hands TCP some bytes twice when it deems the first ones late
        **both(protocol=MPTCP),
    ),
    tcp(
        "MPTCP of a program for each connection",
        {"style": "fork", "connections": 2, "program": "@handler", "protocol": MPTCP},
        {"count": 2, "protocol": MPTCP},
        lacks=lacks_socket(socket.SOCK_STREAM, MPTCP, "MPTCP"),
        payload_tolerance=0.02,
        silent=("server",),
    ),
    tcp("SCTP", lacks=lacks_socket(socket.SOCK_STREAM, SCTP, "SCTP"), **both(protocol=SCTP)),
    udp("UDP on connected sockets"),
    udp("UDP on unconnected sockets", client={"connected": 0}),
    Kind(
        "UDP on a socket that turns to another peer",
        [udp_server(), udp_server("another server", address="10.64.0.9"), udp_client(next="10.64.0.9")],
    ),
    Kind(
        "UDP of servers that share a port",
        [udp_server(shared=1), udp_server("another server", shared=1), udp_client(flows=20, count=10)],
    ),
    udp("UDP over IPv6", **both(address=V6)),
    udp("UDP over IPv4 in IPv6 sockets", {"address": "::"}, {"address": "::ffff:" + V4, "connected": 0}),
    udp("200 UDP flows", client={"flows": 200, "count": 5}),
    Kind(
        "200 UDP processes",
        [udp_server(), storm("udp-client", count=1, size=60, reply=200)],
        silent=("parent",),
    ),
    udp("sendmmsg and recvmmsg", client={"method": "mmsg"}),
    udp("UDP by io_uring", lacks=lacks_io_uring, client={"method": "uring", "count": 100}),
    udp("UDP segmented by the kernel", {"gro": 1}, {"method": "gso", "count": 2000, "size": 1200}),
    udp(
        "UDP to a program that has closed",
        {"until": 1},
        {"connected": 0, "reply": 0, "pause": 200, "count": 300},
        wire=frozenset({"near sent", "far received"}),  # the kernel rejects them
        deaf=("server",),
        most_rows={"server": 3},  # itself, what came late, and what came after that
    ),
    udp(
        "UDP multicast",
        {"address": "0.0.0.0", "group": "239.77.0.1"},
        {"address": "239.77.0.1", "connected": 0, "reply": 0},
        prepare=lambda network: [
            namespace.run("ip", "route", "replace", "239.77.0.0/16", "dev", interface)
            for namespace, interface in ((network.near, "far"), (network.far, "near"))
        ],
        wire=frozenset({"near sent", "far received"}),  # the kernel tells the routers who has joined
        directions=False,
    ),
    udp("IPv4 fragments", client={"size": 8 * KILO, "reply": 6 * KILO, "count": 200}),
    udp("IPv6 fragments", {"address": V6}, {"address": V6, "size": 8 * KILO, "reply": 6 * KILO, "count": 200}),
    udp("IPv4 options", **both(options=1)),
    udp("IPv6 extension headers", **both(address=V6, options=1)),
    udp("a protocol that nobody knows", **both(address=V6, protocol=253, port=0), directions=False),
    Kind(
        "three pings at once",
        [ping("raw"), ping("another"), ping("datagram", datagram=1)],
        wire=NEAR_WIRE,
        directions=False,
    ),
    Kind("ICMPv6 ping", [ping("raw", address=V6)], wire=NEAR_WIRE, directions=False),
    Kind(
        "UDP that the kernel rejects",
        [udp_client(connected=0, reply=0, count=100)],
        wire=frozenset({"near sent"}),
    ),
    *(
        Kind(
            f"packet socket, {name}",
            [
                udp_server(),
                Program(
                    "sender",
                    "packet-sender",
                    "near",
                    {"from": "10.77.0.1", "address": V4, "interface": "far", "ether": FAR_ETHER, "count": 500} | cooked,
                ),
            ],
            directions=False,
            silent=("sender",) if "ring" in cooked else (),  # what lies in the frames cannot be seen
        )
        for name, cooked in (("raw", {}), ("cooked", {"cooked": 1}), ("from a ring", {"ring": 1}))
    ),
    tcp("TCP over loopback", {"end": "near", "address": "127.77.0.1"}, {"address": "127.77.0.1"}, **LOOPBACK),
    tcp("TCP over IPv6 loopback", {"end": "near", "address": "fd77:1::1"}, {"address": "fd77:1::1"}, **LOOPBACK),
    udp("UDP over loopback", {"end": "near", "address": "127.77.0.1"}, {"address": "127.77.0.1"}, **LOOPBACK),
    tcp("TCP through a router", {"address": "10.79.0.2"}, {"address": "10.79.0.2"}, cables=(Cable("far", "router"),)),
    udp("UDP through a router", {"address": "10.79.0.2"}, {"address": "10.79.0.2"}, cables=(Cable("far", "router"),)),
    *(
        make(
            f"{make.__name__.upper()} through a router that hides who asks",
            {"address": "10.79.0.2"},
            {"address": "10.79.0.2"},
            cables=(Cable("far", "router"),),
            lacks=lacks_translation,
            prepare=translating("router", "postrouting", "oifname far masquerade"),
            restore=translating_no_more("router"),
        )
        for make in (tcp, udp)
    ),
    *(
        make(
            f"{make.__name__.upper()} to an address that stands for another",
            client={"address": "10.65.0.1"},
            lacks=lacks_translation,
            prepare=translating("near", "output", f"ip daddr 10.65.0.1 dnat to {V4}"),
            restore=translating_no_more("near"),
            directions=make is tcp,  # a datagram goes to the one address, and its reply comes from the other
        )
        for make in (tcp, udp)
    ),
    Kind(
        "TCP in a tunnel of programs",
        [
            tunnel("near tunnel", "near", "10.77.0.1", V4),
            tunnel("far tunnel", "far", V4, "10.77.0.1"),
            tcp_server(address="10.77.1.2"),
            tcp_client(address="10.77.1.2"),
        ],
        cables=(Cable("far", "near", ("near tunnel", "far tunnel")), Cable("far", "carried", ("server", "client"))),
        lacks=lambda: None if os.path.exists("/dev/net/tun") else "there is no /dev/net/tun",
        prepare=make_devices,
        restore=remove_tunnel,
        directions=False,
    ),
    *(
        tcp(
            f"TCP in a tunnel of the kernel, {name}",
            {"address": "10.77.1.2"},
            {"address": "10.77.1.2"},
            cables=(Cable("far", "carried"),),
            lacks=lacks_device(kind, name, *options),
            prepare=kernel_tunnel(kind, *options),
            restore=remove_tunnel,
        )
        for kind, name, options in (
            ("vxlan", "VXLAN", ("id", "77", "dstport", "4789")),
            ("ipip", "IPIP", ()),
            ("sit", "SIT", ()),
            ("gre", "GRE", ()),
        )
    ),
    Kind(
        "TCP in a tunnel of the kernel, WireGuard",
        [],
        lacks=lambda: lacks_device("wireguard", "WireGuard")() or "this test cannot give WireGuard its keys",
    ),
    Kind(
        "a connection that outlasts 100,000 flows of another program",
        [
            tcp_server(),
            tcp_client(waits=True),
            udp_client("sprayer", address="10.64.0.1", method="spray", count=100 * KILO, size=100),
        ],
        wire=frozenset({"near sent"}),  # the kernel rejects some
        directions=False,
    ),
    Kind(
        "a scan of ports",
        [Program("scanner", "port-scan", "near", {"address": V4, "count": 3 * KILO})],
        wire=NEAR_WIRE,
        silent=("scanner",),
    ),
    Kind(
        "a program for an interpreter",
        [tcp_server(), Program("interpreter", "", "near", {"address": V4}, script=PYTHON_CLIENT)],
    ),
    # The last: while it lasts, others' openings find no room and are booked without their direction.
    Kind(
        "a connection that outlasts a SYN flood",
        [
            tcp_server(),
            tcp_client(waits=True),
            Program("flood", "syn-flood", "near", {"address": V4, "count": 100 * KILO}),
        ],
        silent=("flood",),
        directions=False,
        booked_after=12,
    ),
]
