// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <sys/socket.h>

namespace service {

inline bool setSocketOption(int descriptor, int level, int option, int value) {
    return ::setsockopt(descriptor, level, option, &value, sizeof value) == 0;
}

/**
 * Whether closing the socket, also by the end of the process, resets the connection. The peer's next write
 * then fails at once, where after an orderly end it would succeed and its sender would wait for a reply for
 * ever.
 */
inline void setResetOnClose(int descriptor, bool reset) {
    const linger setting{.l_onoff = reset ? 1 : 0, .l_linger = 0};
    ::setsockopt(descriptor, SOL_SOCKET, SO_LINGER, &setting, sizeof setting);
}

}  // namespace service
