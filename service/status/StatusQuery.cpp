// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/status/StatusQuery.h"

#include <sys/socket.h>
#include <sys/time.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "service/status/StatusAddress.h"

namespace service {

std::optional<std::string> queryStatus(const std::string& databasePath, std::string& error) {
    constexpr timeval patience{.tv_sec = 5, .tv_usec = 0};
    const StatusAddress address(databasePath);
    const FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    ::setsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof(patience));
    if (!address.isValid() || ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address.address()),
                                        sizeof(sockaddr_un)) != 0) {
        error = "no daemon keeps " + databasePath +
                " (--database names another history): " + std::strerror(errno);
        return std::nullopt;
    }
    std::string text;
    std::array<char, 4096> piece;
    ssize_t length = 0;
    while ((length = ::recv(socket.get(), piece.data(), piece.size(), 0)) > 0) {
        text.append(piece.data(), static_cast<std::size_t>(length));
    }
    if (length < 0 || text.empty()) {
        error = "the daemon that keeps " + databasePath + " does not answer";
        return std::nullopt;
    }
    return text;
}

}  // namespace service
