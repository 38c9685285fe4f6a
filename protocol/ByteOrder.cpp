// SPDX-License-Identifier: GPL-3.0-or-later
#include "protocol/ByteOrder.h"

#include <bit>

namespace {

constexpr bool isHostLittleEndian = std::endian::native == std::endian::little;

int bigEndian(int value) {
    return isHostLittleEndian ? static_cast<int>(__builtin_bswap32(value)) : value;
}

long long bigEndian(long long value) {
    return isHostLittleEndian ? static_cast<long long>(__builtin_bswap64(value)) : value;
}

}  // namespace

int PrepareToSendInt(int value) {
    return bigEndian(value);
}
long PrepareToSendLong(long value) {
    return bigEndian(static_cast<int>(value));
}
long long PrepareToSendLongLong(long long value) {
    return bigEndian(value);
}
int PrepareFromSendInt(int value) {
    return bigEndian(value);
}
long PrepareFromSendLong(long value) {
    return bigEndian(static_cast<int>(value));
}
long long PrepareFromSendLongLong(long long value) {
    return bigEndian(value);
}
