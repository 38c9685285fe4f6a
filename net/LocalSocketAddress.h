// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "net/SocketAddress.h"

namespace Net {

/** A local-domain address: a zero-terminated file-system path from byte 2 on. */
class LocalSocketAddress : public SocketAddress {
  public:
    /** The empty path in an image of 106 bytes. */
    LocalSocketAddress() = default;

    /**
     * The image's length byte is 6 whatever the path, on purpose: the four data bytes that it accounts for
     * are all that `GetDataLength`, copies and system calls see. The whole path is stored behind it.
     */
    explicit LocalSocketAddress(const std::string& path);

    /** The text from byte 2 to its first zero; at most what is stored. */
    std::string GetPath() const;
};

}  // namespace Net
