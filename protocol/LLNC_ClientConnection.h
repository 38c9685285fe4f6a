// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <queue>

#include "net/Socket.h"
#include "net/SocketAddress.h"
#include "protocol/BinarySerializer.h"
#include "protocol/MessageHeader.h"
#include "threads/CriticalSection.h"
#include "threads/CriticalSectionLock.h"
#include "threads/PosixThread.h"

/**
 * The front end's end of the link: one stream connection, and one reader thread that files replies under the
 * number of their request and queues the daemon's events.
 *
 * Any thread may send and wait; several requests may be outstanding at once. There is no time-out and no
 * reconnection: a reply that never comes blocks its waiter for good, and after the end of the stream the
 * reader tries on without a pause until it is stopped.
 */
class LLNC_ClientConnection : public PosixThread {
  public:
    /** An event as queued for the application; an `eventId` of -1 means that there is none. */
    struct Event {
        int moduleId;
        int eventId;
        int param;
    };

    /** Connects and starts the reader, also when the connection failed: see `GetSocket().isValid()`. */
    explicit LLNC_ClientConnection(const Net::SocketAddress& address);

    /** Stops the reader and closes the connection. */
    ~LLNC_ClientConnection() override;

    /**
     * Sends a request. Returns its `messageId` (0 or more), 0 when it could not be serialized, -1 when the
     * socket would not take it.
     */
    template <class Request>
    int SendMessage(const Request& message, int moduleId);

    /** Blocks until the reply to `messageId` is there; the result is that of reading it. */
    template <class Reply>
    bool WaitReply(int messageId, Reply& reply);

    /** Sends and waits. False when the request could not be sent or its reply could not be read. */
    template <class Request, class Reply>
    bool SendMessage(const Request& request, Reply& reply, int moduleId);

    /** Sends an event; false when it could not be sent. */
    bool SendEvent(int eventId, int param, int moduleId);

    /** The reply to `messageId`, which is handed over; null when it has not arrived. */
    std::unique_ptr<BinarySerializer> GetReply(int messageId);

    /** Files a reply; an earlier one that nobody has collected is dropped. */
    void PutReplyToMap(int messageId, std::unique_ptr<BinarySerializer> body);

    void PutNextEventIdToQueue(int moduleId, int eventId, int param);

    /** Takes the oldest event out of the queue; {0, -1, 0} when there is none. */
    Event GetNextEvent();
    bool IsEventOccured();

    /** Writes all of `data` to the socket, consuming it; false when the socket fails, the rest is then lost.
     */
    bool SendData(BinarySerializer& data);

    /**
     * Reads exactly `count` bytes, an empty serializer when `count` is 0 or less; null at the end of the
     * stream, on failure and when the reader is to stop. Memory grows with what arrives, not with `count`.
     */
    std::unique_ptr<BinarySerializer> GetData(int count);

    /** Ends the reader thread; the socket stays open. */
    void stop();

    /** The reader. */
    void entryPoint() override;

    const Net::Socket& GetSocket() const { return m_Socket; }

  private:
    static void WaitPollInterval();

    int SendFrame(MessageHeader& header, BinarySerializer& body);
    void ReceiveFrame();
    void FileFrame(const MessageHeader& header, std::unique_ptr<BinarySerializer> body);

    int m_NextMessageId = 0;  ///< guarded by m_SendLock
    Net::Socket m_Socket;
    CriticalSection
        m_SendLock;  ///< held for the whole of one frame; no two of the three locks are held together
    CriticalSection m_ReplyLock;  ///< guards m_Replies
    std::map<int, std::unique_ptr<BinarySerializer>> m_Replies;
    std::atomic<bool> m_NeedStop{false};
    std::queue<Event> m_Events;
    CriticalSection m_EventLock;  ///< guards m_Events
};

template <class Request>
int LLNC_ClientConnection::SendMessage(const Request& message, int moduleId) {
    const CriticalSectionLock lock(m_SendLock, CriticalSection::Forever);
    MessageHeader header;
    header.moduleId = moduleId;
    header.messageType = Request::MessageType;
    BinarySerializer body;
    return message.SerializeTo(body) ? SendFrame(header, body) : 0;
}

template <class Reply>
bool LLNC_ClientConnection::WaitReply(int messageId, Reply& reply) {
    for (;;) {
        if (const std::unique_ptr<BinarySerializer> body = GetReply(messageId)) {
            return reply.UnserializeFrom(*body);
        }
        WaitPollInterval();
    }
}

template <class Request, class Reply>
bool LLNC_ClientConnection::SendMessage(const Request& request, Reply& reply, int moduleId) {
    const int messageId = SendMessage(request, moduleId);
    return messageId >= 0 && WaitReply(messageId, reply);
}
