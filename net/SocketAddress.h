// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include "net/AddressFamily.h"

struct sockaddr;

namespace Net {

/**
 * A socket address of any family. It owns an image laid out as a BSD sockaddr on every system: byte 0 the
 * image's length with these two header bytes, byte 1 the family, then the family's data. Where the host's own
 * layout differs, the image is translated at the system call (`HostAddress`).
 */
class SocketAddress {
  public:
    /** An empty local-domain address of 106 bytes, the size of BSD's sockaddr_un. */
    SocketAddress();

    /**
     * `dataLength` bytes (0 to 253, what the length byte can say) behind the header, copied from `data` or
     * zero when it is null.
     */
    SocketAddress(AddressFamily family, const void* data, int dataLength);

    /** Copies as many bytes of a BSD image, not of a Linux sockaddr, as its own length byte says, two at least. */
    explicit SocketAddress(const sockaddr* image);

    SocketAddress(const SocketAddress& other);

    /** An image that is long enough is written over and keeps its storage; otherwise it is replaced. */
    SocketAddress& operator=(const SocketAddress& other);

    virtual ~SocketAddress() = default;

    int GetFamily() const { return m_Image[1]; }
    const unsigned char* GetData() const { return m_Image.data() + 2; }
    unsigned char* GetData() { return m_Image.data() + 2; }
    int GetDataLength() const { return m_Image[0] - 2; }

    /** The BSD image; its length is its first byte. On a host with another layout not for system calls. */
    const sockaddr* GetSockAddr() const { return reinterpret_cast<const sockaddr*>(m_Image.data()); }
    sockaddr* GetSockAddr() { return reinterpret_cast<sockaddr*>(m_Image.data()); }

  protected:
    /** All bytes of the image, also those past its length byte. */
    std::vector<unsigned char> m_Image;
};

}  // namespace Net
