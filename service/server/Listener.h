// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>

#include "service/server/ListenAddress.h"
#include "service/system/FileDescriptor.h"

namespace service {

/** A socket at which clients arrive. */
class Listener {
  public:
    enum class Arrival {
        Client,        ///< one was accepted
        None,          ///< nobody waits, or who did has gone
        NoDescriptor,  ///< somebody waits, but the system has no descriptor or memory for it now
    };

    /** Starts to listen. Nothing, with the reason in `error`, when the address can't be had. */
    static std::optional<Listener> open(const ListenAddress& address, std::string& error);

    /** Takes the next client, if there is one, into `socket`; it does not block and is set up for the link.
     */
    Arrival accept(FileDescriptor& socket);

    /** Where it listens, with the port that the system chose if it was left to it. */
    const ListenAddress& address() const { return m_Address; }
    int descriptor() const { return m_Descriptor.get(); }

  private:
    Listener(FileDescriptor descriptor, const ListenAddress& address);

    FileDescriptor m_Descriptor;
    ListenAddress m_Address;
};

}  // namespace service
