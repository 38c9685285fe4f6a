// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "service/server/ByteBuffer.h"
#include "service/server/ClientSession.h"
#include "service/server/FrameScanner.h"
#include "service/server/Outbox.h"
#include "service/system/FileDescriptor.h"

namespace service {

/**
 * One client's socket: takes its bytes apart into frames, has them served and sends the answers.
 *
 * No peer costs more than its share: a turn reads and serves a bounded amount, requests are read only while
 * few answers wait, and whoever breaks the framing or does not read is over. The owner calls it when the
 * socket is ready and drops it once it `isOver`.
 */
class ClientConnection {
  public:
    static constexpr std::size_t maxReadPerTurn = 16'384;          ///< bytes
    static constexpr std::chrono::milliseconds maxServeTime{20};   ///< per turn
    static constexpr std::size_t manyWaitingBytes = 262'144;       ///< from here on no requests are served
    static constexpr std::size_t tooManyWaitingBytes = 1'048'576;  ///< above it the client is dropped

    /**
     * `number` is the client's name in the log. `wake` is called on another thread when `serve` can go on with a
     * request whose answer took long.
     */
    ClientConnection(FileDescriptor socket, const SessionContext& context, std::uint64_t number,
                     std::function<void()> wake);

    ClientConnection(const ClientConnection&) = delete;
    ClientConnection& operator=(const ClientConnection&) = delete;

    /** Reads what has come, serves it and sends the answers. */
    void readAndServe();

    /** Serves what was read before, then sends; also when there is only something to send. */
    void serve();

    /** Appends an event to what waits; `serve` sends it. */
    void putEvent(DaemonEvent event, std::int32_t param);

    /** Drops the client when bytes have waited for `patience` and none could be sent. */
    void checkProgress(std::chrono::milliseconds patience);

    /** To be called when the socket has failed. */
    void fail() { m_Over = true; }

    bool wantsToRead() const {
        return !m_Over && !m_PeerIsDone && !m_FramesWait && !m_AnswerWaits && !manyWait();
    }
    bool wantsToWrite() const { return !m_Over && m_Outbox.size() > 0; }

    /** Requests wait that only the end of the turn has kept from being served: call `serve` again soon. */
    bool wantsAnotherTurn() const { return !m_Over && m_FramesWait && !manyWait(); }

    /** Everything that has arrived is answered, and the peer's system has acknowledged the answers. */
    bool isSettled() const;

    bool isOver() const { return m_Over; }
    int descriptor() const { return m_Socket.get(); }

  private:
    using SteadyTime = std::chrono::steady_clock::time_point;

    void endRequests();
    void serveFrames(SteadyTime turnEnd);
    bool serveFrame(const ScannedFrame& frame);
    void send();
    void drop(const std::string& reason);
    bool manyWait() const { return m_Outbox.size() >= manyWaitingBytes; }

    FileDescriptor m_Socket;
    ClientSession m_Session;
    const std::uint64_t m_Number;
    ByteBuffer m_Inbox;
    Outbox m_Outbox;
    SteadyTime m_LastProgress;   ///< when bytes were last sent, or began to wait
    bool m_FramesWait = false;   ///< whole frames are in the inbox
    bool m_AnswerWaits = false;  ///< so do the frames in the inbox: answers keep their order
    bool m_PeerIsDone = false;   ///< it asks no more, but may still read
    bool m_HasComplained = false;
    bool m_Over = false;
};

}  // namespace service
