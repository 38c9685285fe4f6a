// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "service/capture/SocketReport.h"

/** Requests to and answers from the kernel's socket diagnostics (sock_diag(7)), as pure functions over bytes.
 */
namespace service::inetdiag {

/** Message type of dump requests, their answers, and the notices of destroyed sockets. */
extern const std::uint16_t messageType;

/** The request for all listening TCP sockets and all connections of AF_INET or AF_INET6, with their counters.
 */
std::vector<std::byte> tcpDumpRequest(std::int32_t socketDomain);

/** Reads one answer or notice. Nothing when it is too short, of an unknown family, or with an attribute that
 * ends outside of it. */
std::optional<SocketReport> decode(std::span<const std::byte> payload);

}  // namespace service::inetdiag
