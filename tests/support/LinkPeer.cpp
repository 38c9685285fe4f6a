// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/LinkPeer.h"

#include <poll.h>

#include <chrono>

#include "protocol/EventMessage.h"

using namespace std::chrono_literals;

namespace {

std::string take(BinarySerializer& data) {
    std::string bytes(data.GetCurrentDataSize(), '\0');
    data.Read(bytes.data(), static_cast<long>(bytes.size()));
    return bytes;
}

}  // namespace

LinkPeer::LinkPeer(Answer answer, unsigned short port)
    : m_Answer(std::move(answer)), m_Listener(port), m_Thread(&LinkPeer::serve, this) {}

LinkPeer::~LinkPeer() {
    m_IsStopping = true;
    m_Listener.wakeAccept();
    shutdown(m_Connection, SHUT_RDWR);
    m_Thread.join();
    close(m_Connection);
}

bool LinkPeer::readExactly(char* data, std::size_t count) const {
    for (std::size_t done = 0; done < count;) {
        const ssize_t result = ::read(m_Connection, data + done, count - done);
        if (result < 1) {
            return false;
        }
        done += result;
    }
    return true;
}

void LinkPeer::serve() {
    m_Connection = m_Listener.accept();
    char headerBytes[20];
    while (!m_IsStopping && readExactly(headerBytes, sizeof headerBytes)) {
        BinarySerializer data;
        data.WriteCopy(headerBytes, sizeof headerBytes);
        Request request;
        request.header.UnserializeFrom(data);
        request.body.resize(request.header.dataSize);
        if (!readExactly(request.body.data(), request.body.size())) {
            return;
        }
        {
            const std::lock_guard lock(m_Mutex);
            m_Requests.push_back(request);
        }
        BinarySerializer body;
        if (m_Answer && m_Answer(request, body)) {
            sendFrame(request.header.messageId, 1, body);
        }
    }
}

int LinkPeer::connection() const {
    for (int i = 0; m_Connection == -1 && i < 5000; ++i) {
        std::this_thread::sleep_for(1ms);
    }
    return m_Connection;
}

void LinkPeer::send(const std::string& bytes) {
    [[maybe_unused]] const auto sent = ::send(connection(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
}

void LinkPeer::sendFrame(int replyToId, int messageType, BinarySerializer& body) {
    MessageHeader header;
    header.replyToId = replyToId;
    header.messageType = messageType;
    header.dataSize = body.GetCurrentDataSize();
    BinarySerializer frame;
    header.SerializeTo(frame);
    send(take(frame) + take(body));
}

void LinkPeer::sendEvent(int eventId, int param, int moduleId) {
    MessageHeader header;
    header.moduleId = moduleId;
    header.messageType = EventMessage::MessageType;
    header.dataSize = 8;
    EventMessage event;
    event.eventId = eventId;
    event.param = param;
    BinarySerializer frame;
    header.SerializeTo(frame);
    event.SerializeTo(frame);
    send(take(frame));
}

std::vector<LinkPeer::Request> LinkPeer::waitForRequests(std::size_t count) {
    for (int i = 0; i < 5000; ++i) {
        {
            const std::lock_guard lock(m_Mutex);
            if (m_Requests.size() >= count) {
                return m_Requests;
            }
        }
        std::this_thread::sleep_for(1ms);
    }
    const std::lock_guard lock(m_Mutex);
    return m_Requests;
}

std::vector<LinkPeer::Request> LinkPeer::newRequests() {
    std::this_thread::sleep_for(20ms);  // one that nobody waits for may still be under way
    const std::lock_guard lock(m_Mutex);
    const auto first = m_Requests.begin() + static_cast<std::ptrdiff_t>(m_Seen);
    m_Seen = m_Requests.size();
    return {first, m_Requests.end()};
}

void LinkPeer::die() {
    const linger atOnce{1, 0};
    setsockopt(connection(), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    shutdown(m_Connection, SHUT_RD);  // ends the serving thread's read without sending anything
    m_Thread.join();
    close(m_Connection.exchange(-1));
    m_Thread = std::thread([] {});
}
