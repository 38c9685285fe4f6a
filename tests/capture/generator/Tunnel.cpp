// SPDX-License-Identifier: GPL-3.0-or-later
#include <fcntl.h>
#include <linux/if_tun.h>
#include <net/if.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "tests/capture/generator/Generator.h"

namespace traffic {

/** Carries the packets of the device "interface" to another one of its kind in datagrams, until its input ends. */
void tunnel(const Arguments& arguments) {
    const int device = check(::open("/dev/net/tun", O_RDWR), "open /dev/net/tun");
    ifreq request{};
    request.ifr_flags = IFF_TUN | IFF_NO_PI;
    arguments.text("interface").copy(request.ifr_name, sizeof request.ifr_name - 1);
    check(::ioctl(device, TUNSETIFF, &request), "make a device");

    const Endpoint here = Endpoint::of(arguments.text("here"), arguments.number("port"));
    const Endpoint there = Endpoint::of(arguments);
    const int socket = check(::socket(here.family(), SOCK_DGRAM, 0), "socket");
    setOption(socket, SOL_SOCKET, SO_RCVBUFFORCE, 8 * 1024 * 1024, "SO_RCVBUFFORCE");
    check(::bind(socket, here.get(), here.size), "bind");
    check(::connect(socket, there.get(), there.size), "connect");
    announceReady();

    Tally tally;
    std::array<char, 65536> packet;
    std::array<pollfd, 3> ready{{{device, POLLIN, 0}, {socket, POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}}};
    while (ready[2].revents == 0) {
        check(::poll(ready.data(), ready.size(), -1), "poll");
        if (ready[0].revents & POLLIN) {
            const ssize_t size = check(::read(device, packet.data(), packet.size()), "read a packet");
            tally.sent += static_cast<std::uint64_t>(
                check(::send(socket, packet.data(), static_cast<std::size_t>(size), 0), "carry a packet"));
        }
        if (ready[1].revents & POLLIN) {
            const ssize_t size = check(::recv(socket, packet.data(), packet.size(), 0), "get a packet");
            tally.received += static_cast<std::uint64_t>(size);
            check(::write(device, packet.data(), static_cast<std::size_t>(size)), "write a packet");
        }
    }
    report(tally);
}

}  // namespace traffic
