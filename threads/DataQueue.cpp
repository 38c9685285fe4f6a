// SPDX-License-Identifier: GPL-3.0-or-later
#include "threads/DataQueue.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace {

constexpr long maxSize = 0x7FFFFFFF;  // sizes have 32 bits on the link

}  // namespace

DataQueue::~DataQueue() {
    Flush();
}

bool DataQueue::Write(char* data, long length) {
    if (data == nullptr || length < 1 || length > maxSize - m_Size) {
        return false;
    }
    Chunk* chunk = new (std::nothrow) Chunk{data, length, nullptr};
    if (chunk == nullptr) {
        return false;
    }
    (m_Tail == nullptr ? m_Head : m_Tail->next) = chunk;
    m_Tail = chunk;
    m_Size += length;
    return true;
}

bool DataQueue::WriteCopy(const char* data, long length) {
    if (data == nullptr || length < 1) {
        return false;
    }
    char* copy = new (std::nothrow) char[length];
    if (copy == nullptr) {
        return false;
    }
    std::memcpy(copy, data, length);
    if (!Write(copy, length)) {
        delete[] copy;
        return false;
    }
    return true;
}

bool DataQueue::Read(char* out, long length) {
    if (m_Size < length || out == nullptr || length < 1) {
        return false;
    }
    for (long remaining = length; remaining > 0;) {
        const long available = m_Head->length - m_ReadOffset;
        const long taken = std::min(remaining, available);
        std::memcpy(out, m_Head->data + m_ReadOffset, taken);
        out += taken;
        m_Size -= taken;
        m_ReadOffset += taken;
        remaining -= taken;
        if (taken == available) {
            DropHead();
        }
    }
    return true;
}

void DataQueue::Flush() {
    while (m_Head != nullptr) {
        DropHead();
    }
    m_Size = 0;
}

void DataQueue::DropHead() {
    Chunk* head = m_Head;
    m_Head = head->next;
    if (m_Head == nullptr) {
        m_Tail = nullptr;
    }
    m_ReadOffset = 0;
    delete[] head->data;
    delete head;
}
