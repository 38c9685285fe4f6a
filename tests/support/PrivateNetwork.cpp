// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/PrivateNetwork.h"

#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>

namespace {

bool bringLoopbackUp() {
    const int control = socket(AF_INET, SOCK_DGRAM, 0);
    ifreq request{};
    std::strncpy(request.ifr_name, "lo", sizeof request.ifr_name - 1);
    request.ifr_flags = IFF_UP;
    const bool isUp = ioctl(control, SIOCSIFFLAGS, &request) == 0;
    close(control);
    return isUp;
}

}  // namespace

bool enterPrivateNetwork() {
    const bool isPrivate = unshare(CLONE_NEWNET) == 0 || unshare(CLONE_NEWUSER | CLONE_NEWNET) == 0;
    return isPrivate && bringLoopbackUp();
}
