// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "threads/DataQueue.h"

/**
 * A first-in-first-out byte buffer with typed writes at the back and typed reads from the front; every
 * message of the link is built and taken apart in one. Multi-byte values are big-endian:
 *
 *     Byte 1, Short 2, Int 4, Long 4, LongLong 8, Float 4 and Double 8 bytes (IEEE 754 bit patterns),
 *     String: Int length N, then, unless N is 0, N bytes and a terminating zero; Data: the bytes as they are.
 *
 * A write fails when no memory is left or there is nothing to write. A read fails when fewer bytes are queued
 * than it needs; the queue and the caller's variable are then unchanged. Not locked: one thread at a time.
 */
class BinarySerializer : public DataQueue {
  public:
    bool WriteByte(unsigned char value);
    bool WriteShort(short value);
    bool WriteInt(int value);
    bool WriteLong(long value);
    bool WriteLongLong(long long value);
    bool WriteFloat(float value);
    bool WriteDouble(double value);
    bool WriteString(const std::string& value);
    bool WriteData(const unsigned char* data, int count);

    bool ReadByte(unsigned char& value);
    bool ReadShort(short& value);
    bool ReadInt(int& value);
    bool ReadLong(long& value);
    bool ReadLongLong(long long& value);
    bool ReadFloat(float& value);
    bool ReadDouble(double& value);

    /**
     * The text ends at its first zero byte; a length of 0 or below gives the empty text. Fails only when the
     * length itself is missing. A text whose body is not queued in full counts as read, on purpose: it comes
     * out empty, and nothing is allocated for bytes that a peer only announced.
     */
    bool ReadString(std::string& value);
    bool ReadData(unsigned char* data, int count);

    /** Bytes still queued. */
    int GetCurrentDataSize() const { return static_cast<int>(Size()); }
};
