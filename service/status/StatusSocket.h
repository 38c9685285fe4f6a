// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "service/server/EventLoop.h"
#include "service/status/StatusAddress.h"
#include "service/system/FileDescriptor.h"

namespace service {

/**
 * Gives the daemon's status to whoever connects to its local socket, and closes. On the event loop's thread.
 */
class StatusSocket {
  public:
    /**
     * The socket replaces one that a daemon left behind that died; nobody but the history's only user may
     * call this. Null with the reason in `error`. `loop` must outlive the socket.
     *
     * @param status gives the text, of a few KiB
     */
    static std::unique_ptr<StatusSocket> open(EventLoop& loop, const std::string& databasePath,
                                              std::function<std::string()> status, std::string& error);
    ~StatusSocket();

    StatusSocket(const StatusSocket&) = delete;
    StatusSocket& operator=(const StatusSocket&) = delete;

  private:
    StatusSocket(EventLoop& loop, StatusAddress address, FileDescriptor listener,
                 std::function<std::string()> status);

    void answer();

    EventLoop& m_Loop;
    const StatusAddress m_Address;
    const FileDescriptor m_Listener;
    const std::function<std::string()> m_Status;
    EventLoop::WatchId m_Watch = EventLoop::noWatch;
};

}  // namespace service
