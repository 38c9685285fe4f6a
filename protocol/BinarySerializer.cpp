// SPDX-License-Identifier: GPL-3.0-or-later
#include "protocol/BinarySerializer.h"

#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <utility>

#include "protocol/ByteOrder.h"

namespace {

static_assert(sizeof(float) == 4 && std::numeric_limits<float>::is_iec559);
static_assert(sizeof(double) == 8 && std::numeric_limits<double>::is_iec559);

template <class Value>
bool writeBytes(DataQueue& queue, const Value& value) {
    char bytes[sizeof value];
    std::memcpy(bytes, &value, sizeof value);
    return queue.WriteCopy(bytes, sizeof value);
}

template <class Value>
bool readBytes(DataQueue& queue, Value& value) {
    char bytes[sizeof value];
    if (!queue.Read(bytes, sizeof value)) {
        return false;
    }
    std::memcpy(&value, bytes, sizeof value);
    return true;
}

short bigEndian(short value) {
    return std::endian::native == std::endian::little ? static_cast<short>(__builtin_bswap16(value)) : value;
}

}  // namespace

bool BinarySerializer::WriteByte(unsigned char value) {
    return writeBytes(*this, value);
}

bool BinarySerializer::WriteShort(short value) {
    return writeBytes(*this, bigEndian(value));
}

bool BinarySerializer::WriteInt(int value) {
    return writeBytes(*this, PrepareToSendInt(value));
}

bool BinarySerializer::WriteLong(long value) {
    return writeBytes(*this, static_cast<std::int32_t>(PrepareToSendLong(value)));
}

bool BinarySerializer::WriteLongLong(long long value) {
    return writeBytes(*this, PrepareToSendLongLong(value));
}

bool BinarySerializer::WriteFloat(float value) {
    return WriteInt(std::bit_cast<int>(value));
}

bool BinarySerializer::WriteDouble(double value) {
    return WriteLongLong(std::bit_cast<long long>(value));
}

bool BinarySerializer::WriteString(const std::string& value) {
    if (value.size() >= static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        return false;
    }
    if (!WriteInt(static_cast<int>(value.size()))) {
        return false;
    }
    return value.empty() || WriteCopy(value.c_str(), static_cast<long>(value.size()) + 1);
}

bool BinarySerializer::WriteData(const unsigned char* data, int count) {
    return WriteCopy(reinterpret_cast<const char*>(data), count);
}

bool BinarySerializer::ReadByte(unsigned char& value) {
    return readBytes(*this, value);
}

bool BinarySerializer::ReadShort(short& value) {
    if (!readBytes(*this, value)) {
        return false;
    }
    value = bigEndian(value);
    return true;
}

bool BinarySerializer::ReadInt(int& value) {
    if (!readBytes(*this, value)) {
        return false;
    }
    value = PrepareFromSendInt(value);
    return true;
}

bool BinarySerializer::ReadLong(long& value) {
    std::int32_t wire = 0;
    if (!readBytes(*this, wire)) {
        return false;
    }
    value = PrepareFromSendLong(wire);
    return true;
}

bool BinarySerializer::ReadLongLong(long long& value) {
    if (!readBytes(*this, value)) {
        return false;
    }
    value = PrepareFromSendLongLong(value);
    return true;
}

bool BinarySerializer::ReadFloat(float& value) {
    int bits = 0;
    if (!ReadInt(bits)) {
        return false;
    }
    value = std::bit_cast<float>(bits);
    return true;
}

bool BinarySerializer::ReadDouble(double& value) {
    long long bits = 0;
    if (!ReadLongLong(bits)) {
        return false;
    }
    value = std::bit_cast<double>(bits);
    return true;
}

bool BinarySerializer::ReadString(std::string& value) {
    int length = 0;
    if (!ReadInt(length)) {
        return false;
    }
    std::string text;
    if (length > 0 && length < Size()) {
        text.resize(static_cast<std::size_t>(length) + 1);  // with the terminating zero
        Read(text.data(), length + 1L);
        text.resize(strnlen(text.data(), length));
    }
    value = std::move(text);
    return true;
}

bool BinarySerializer::ReadData(unsigned char* data, int count) {
    return Read(reinterpret_cast<char*>(data), count);
}
