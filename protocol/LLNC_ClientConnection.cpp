// SPDX-License-Identifier: GPL-3.0-or-later
#include "protocol/LLNC_ClientConnection.h"

#include <unistd.h>

#include <algorithm>
#include <array>

#include "protocol/EventMessage.h"
#include "threads/ThreadSignals.h"

namespace {

constexpr int transferSize = 1024;  // bytes a read or write moves at most
constexpr useconds_t pollIntervalMicroseconds = 5000;

}  // namespace

LLNC_ClientConnection::LLNC_ClientConnection(const Net::SocketAddress& address)
    : PosixThread(false), m_Socket(address, Net::Stream) {
    run();
}

LLNC_ClientConnection::~LLNC_ClientConnection() {
    stop();
}

void LLNC_ClientConnection::stop() {
    m_NeedStop = true;
    waitForStop();
}

void LLNC_ClientConnection::WaitPollInterval() {
    usleep(pollIntervalMicroseconds);
}

int LLNC_ClientConnection::SendFrame(MessageHeader& header, BinarySerializer& body) {
    header.messageId = m_NextMessageId;
    header.dataSize = body.GetCurrentDataSize();
    BinarySerializer headerData;
    if (!header.SerializeTo(headerData)) {
        return 0;
    }
    if (!SendData(headerData) || !SendData(body)) {
        return -1;
    }
    return m_NextMessageId++;
}

bool LLNC_ClientConnection::SendEvent(int eventId, int param, int moduleId) {
    EventMessage event;
    event.eventId = eventId;
    event.param = param;
    return SendMessage(event, moduleId) >= 0;
}

bool LLNC_ClientConnection::SendData(BinarySerializer& data) {
    std::array<unsigned char, transferSize> buffer;
    while (data.GetCurrentDataSize() > 0) {
        const int count = std::min(transferSize, data.GetCurrentDataSize());
        data.ReadData(buffer.data(), count);
        for (long done = 0; done < count;) {
            const long written = m_Socket.write(buffer.data() + done, count - done);
            if (written < 1) {
                return false;
            }
            done += written;
        }
    }
    return true;
}

std::unique_ptr<BinarySerializer> LLNC_ClientConnection::GetData(int count) {
    auto data = std::make_unique<BinarySerializer>();
    std::array<unsigned char, transferSize> buffer;
    for (int gathered = 0; gathered < count;) {
        if (m_Socket.isDataAvailable()) {
            const long read = m_Socket.read(buffer.data(), std::min(transferSize, count - gathered));
            if (read < 1 || !data->WriteData(buffer.data(), static_cast<int>(read))) {
                return nullptr;
            }
            gathered += static_cast<int>(read);
        } else if (m_NeedStop) {
            return nullptr;
        } else {
            WaitPollInterval();
        }
    }
    return data;
}

void LLNC_ClientConnection::entryPoint() {
    blockThreadSignals();
    while (!m_NeedStop) {
        ReceiveFrame();
    }
}

void LLNC_ClientConnection::ReceiveFrame() {
    const std::unique_ptr<BinarySerializer> headerData = GetData(MessageHeader::SerializedSize());
    MessageHeader header;
    if (headerData == nullptr || !header.UnserializeFrom(*headerData) || m_NeedStop) {
        return;
    }
    if (std::unique_ptr<BinarySerializer> body = GetData(header.dataSize)) {
        FileFrame(header, std::move(body));
    }
}

void LLNC_ClientConnection::FileFrame(const MessageHeader& header, std::unique_ptr<BinarySerializer> body) {
    if (header.messageType != EventMessage::MessageType) {
        PutReplyToMap(header.replyToId, std::move(body));
        return;
    }
    EventMessage event;
    if (event.UnserializeFrom(*body)) {
        PutNextEventIdToQueue(header.moduleId, event.eventId, event.param);
    }
}

std::unique_ptr<BinarySerializer> LLNC_ClientConnection::GetReply(int messageId) {
    const CriticalSectionLock lock(m_ReplyLock, CriticalSection::Forever);
    const auto reply = m_Replies.extract(messageId);
    return reply.empty() ? nullptr : std::move(reply.mapped());
}

void LLNC_ClientConnection::PutReplyToMap(int messageId, std::unique_ptr<BinarySerializer> body) {
    const CriticalSectionLock lock(m_ReplyLock, CriticalSection::Forever);
    m_Replies[messageId] = std::move(body);
}

void LLNC_ClientConnection::PutNextEventIdToQueue(int moduleId, int eventId, int param) {
    const CriticalSectionLock lock(m_EventLock, CriticalSection::Forever);
    m_Events.push({moduleId, eventId, param});
}

LLNC_ClientConnection::Event LLNC_ClientConnection::GetNextEvent() {
    const CriticalSectionLock lock(m_EventLock, CriticalSection::Forever);
    if (m_Events.empty()) {
        return {0, -1, 0};
    }
    const Event event = m_Events.front();
    m_Events.pop();
    return event;
}

bool LLNC_ClientConnection::IsEventOccured() {
    const CriticalSectionLock lock(m_EventLock, CriticalSection::Forever);
    return !m_Events.empty();
}
