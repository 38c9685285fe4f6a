// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "service/capture/NetlinkMessage.h"

namespace service {

/**
 * A netlink socket to one subsystem of the kernel, either for dumps or for notices of multicast groups.
 *
 * One thread at a time. After a dump that failed the socket may still hold the rest of its answer: open
 * another.
 */
class NetlinkSocket {
  public:
    /** Called for each message; the message's payload is gone once the call returns. */
    using Visitor = std::function<void(const NetlinkMessage&)>;

    enum class DumpResult {
        Complete,
        Interrupted,  ///< the kernel's table changed under the dump: some entries may be missing or double
        Failed
    };

    /** A socket to the subsystem `protocol` (NETLINK_SOCK_DIAG, ...); null with the reason in `error`. */
    static std::unique_ptr<NetlinkSocket> open(int protocol, std::string& error);

    ~NetlinkSocket();
    NetlinkSocket(const NetlinkSocket&) = delete;
    NetlinkSocket& operator=(const NetlinkSocket&) = delete;

    /** Joins a multicast group; false with the reason in `error` where that is not permitted. */
    bool subscribe(int group, std::string& error);

    /** Asks for `bytes` of room for notices that wait to be read; gets less without CAP_NET_ADMIN. */
    void reserveReceiveBuffer(int bytes);

    /** Sends `request` as a dump request of that type and visits each message of the answer. */
    DumpResult dump(std::uint16_t type, std::span<const std::byte> request, const Visitor& visit,
                    std::string& error);

    /** Visits what has arrived, without waiting. False when the kernel dropped notices for want of room. */
    bool receivePending(const Visitor& visit);

  private:
    /** What one datagram of a dump's answer means for the dump. */
    enum class Progress { More, Done, Failed };

    explicit NetlinkSocket(int descriptor);

    bool sendDumpRequest(std::uint16_t type, std::span<const std::byte> request, std::string& error);
    Progress visitDatagram(std::span<const std::byte> datagram, const Visitor& visit, bool& interrupted,
                           std::string& error) const;

    /** The next datagram from the kernel, inside `m_Buffer`; nothing with errno set. */
    std::optional<std::span<const std::byte>> receive(int flags);

    const int m_Descriptor;
    std::uint32_t m_Sequence = 0;  ///< of the latest request
    std::vector<std::byte> m_Buffer;
};

}  // namespace service
