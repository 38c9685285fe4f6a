// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "protocol/BinarySerializer.h"
#include "protocol/MessageHeader.h"
#include "tests/support/Listener.h"

/** A daemon's end of the link that a test scripts: it records every request and answers with what it is told.
 */
class LinkPeer {
  public:
    struct Request {
        MessageHeader header;
        std::string body;  ///< as it travelled
    };

    /** Makes a reply's body from a request; returning false leaves the request without an answer. */
    using Answer = std::function<bool(const Request&, BinarySerializer& body)>;

    explicit LinkPeer(Answer answer, unsigned short port = 0);

    /** Closes the connection and waits for the serving thread. */
    ~LinkPeer();

    bool isBound() const { return m_Listener.isBound(); }
    Net::IPv4SocketAddress address() const { return m_Listener.address(); }

    /** Sends bytes as they are to the connected client. */
    void send(const std::string& bytes);
    void sendFrame(int replyToId, int messageType, BinarySerializer& body);
    void sendEvent(int eventId, int param, int moduleId = 0);

    /** Waits for the client to have sent so many requests and events, five seconds at most. */
    std::vector<Request> waitForRequests(std::size_t count);

    /** Those that came since the last call. */
    std::vector<Request> newRequests();

    /** Resets the connection, as a daemon that died would. */
    void die();

  private:
    void serve();
    bool readExactly(char* data, std::size_t count) const;
    int connection() const;

    Answer m_Answer;
    Listener m_Listener;
    std::atomic<int> m_Connection{-1};
    std::atomic<bool> m_IsStopping{false};
    std::mutex m_Mutex;
    std::vector<Request> m_Requests;  ///< guarded by m_Mutex
    std::size_t m_Seen = 0;
    std::thread m_Thread;
};
