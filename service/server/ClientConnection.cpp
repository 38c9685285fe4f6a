// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/ClientConnection.h"

#include <linux/sockios.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <utility>

#include "service/log/Log.h"
#include "service/server/SocketOptions.h"

namespace service {

namespace {

using std::chrono::steady_clock;

bool isTransient(int error) {
    return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

/** Bytes in one of the kernel's queues of a socket: SIOCINQ not read yet, SIOCOUTQ not acknowledged yet. */
int queuedBytes(int descriptor, unsigned long queue) {
    int bytes = 0;
    return ::ioctl(descriptor, queue, &bytes) == 0 ? bytes : 0;
}

}  // namespace

ClientConnection::ClientConnection(FileDescriptor socket, const SessionContext& context, std::uint64_t number,
                                   std::function<void()> wake)
    : m_Socket(std::move(socket)),
      m_Session(context, std::move(wake)),
      m_Number(number),
      m_LastProgress(steady_clock::now()) {}

void ClientConnection::readAndServe() {
    std::array<std::uint8_t, maxReadPerTurn> chunk;
    const ssize_t count = ::recv(m_Socket.get(), chunk.data(), chunk.size(), 0);
    if (count > 0) {
        m_Inbox.append(std::span(chunk).first(static_cast<std::size_t>(count)));
    } else if (count == 0) {
        endRequests();
    } else if (!isTransient(errno)) {
        fail();
    }
    serve();
}

/** No more is read; who has asked before still gets the answers. */
void ClientConnection::endRequests() {
    m_PeerIsDone = true;
    setResetOnClose(m_Socket.get(), false);
}

void ClientConnection::serve() {
    const SteadyTime turnEnd = steady_clock::now() + maxServeTime;
    if (m_Outbox.size() == 0) {
        m_LastProgress = steady_clock::now();
    }
    do {
        serveFrames(turnEnd);
        send();
    } while (wantsAnotherTurn() && steady_clock::now() < turnEnd);
    if (m_PeerIsDone && !m_FramesWait && !m_AnswerWaits && m_Outbox.size() == 0) {
        m_Over = true;
    }
}

/** Serves frames until none is whole, one takes long, the turn ends or many answers wait. */
void ClientConnection::serveFrames(SteadyTime turnEnd) {
    m_FramesWait = false;
    m_AnswerWaits = false;
    while (!m_Over) {
        const ScannedFrame frame = scanFrame(m_Inbox.bytes());
        if (frame.kind == ScannedFrame::Kind::Incomplete) {
            return;
        }
        if (frame.kind == ScannedFrame::Kind::Bad) {
            logPeerLine("client ", m_Number, ": dropped, it announced a body of ", frame.header.dataSize,
                        " bytes");
            m_Inbox.take(m_Inbox.size());
            endRequests();
            return;
        }
        if (manyWait() || steady_clock::now() >= turnEnd) {
            m_FramesWait = true;
            return;
        }
        if (!serveFrame(frame)) {
            m_AnswerWaits = true;
            return;
        }
        m_Inbox.take(frame.consumed);
    }
}

/** False when its answer is not there yet. */
bool ClientConnection::serveFrame(const ScannedFrame& frame) {
    const RequestRouter::Outcome outcome = m_Session.serve(frame.header, frame.body, m_Outbox);
    if (outcome == RequestRouter::Outcome::NotYet) {
        return false;
    }
    if (outcome == RequestRouter::Outcome::Served || m_HasComplained) {
        return true;
    }
    const bool isUnknown = outcome == RequestRouter::Outcome::UnknownType;
    logPeerLine("client ", m_Number, ": ",
                isUnknown ? "unknown request type " : "too short a body for request type ",
                frame.header.messageType, "; further faults of this client are not logged");
    m_HasComplained = true;
    return true;
}

void ClientConnection::send() {
    ByteBuffer& waiting = m_Outbox.buffer();
    while (!m_Over && !waiting.empty()) {
        const ssize_t count = ::send(m_Socket.get(), waiting.bytes().data(), waiting.size(), MSG_NOSIGNAL);
        if (count > 0) {
            waiting.take(static_cast<std::size_t>(count));
            m_LastProgress = steady_clock::now();
        } else if (isTransient(errno)) {
            break;
        } else {
            fail();
        }
    }
    if (!m_Over && waiting.size() > tooManyWaitingBytes) {
        drop(std::to_string(waiting.size()) + " bytes wait that it does not read");
    }
}

void ClientConnection::putEvent(DaemonEvent event, std::int32_t param) {
    if (m_Outbox.size() == 0) {
        m_LastProgress = steady_clock::now();
    }
    m_Outbox.putEvent(event, param);
}

void ClientConnection::checkProgress(std::chrono::milliseconds patience) {
    if (wantsToWrite() && steady_clock::now() - m_LastProgress > patience) {
        drop("it has read nothing for " + std::to_string(patience.count()) + " ms");
    }
}

bool ClientConnection::isSettled() const {
    return m_Over ||
           (!m_FramesWait && !m_AnswerWaits && m_Outbox.size() == 0 &&
            queuedBytes(m_Socket.get(), SIOCINQ) == 0 && queuedBytes(m_Socket.get(), SIOCOUTQ) == 0);
}

void ClientConnection::drop(const std::string& reason) {
    logPeerLine("client ", m_Number, ": dropped, ", reason);
    m_Over = true;
}

}  // namespace service
