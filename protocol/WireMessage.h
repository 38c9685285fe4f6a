// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <tuple>

#include "protocol/BinarySerializer.h"

/** One field of a message, by its type: 32-bit integers, 64-bit counters, texts, flags and nested values. */
namespace Wire {

inline bool Write(BinarySerializer& out, std::int32_t value) {
    return out.WriteInt(value);
}
inline bool Write(BinarySerializer& out, std::int64_t value) {
    return out.WriteLongLong(value);
}
inline bool Write(BinarySerializer& out, const std::string& value) {
    return out.WriteString(value);
}
inline bool Write(BinarySerializer& out, bool value) {
    return out.WriteInt(value ? 1 : 0);
}

template <class Value>
bool Write(BinarySerializer& out, const Value& value) {
    return value.SerializeTo(out);
}

inline bool Read(BinarySerializer& in, std::int32_t& value) {
    return in.ReadInt(value);
}
inline bool Read(BinarySerializer& in, std::string& value) {
    return in.ReadString(value);
}

inline bool Read(BinarySerializer& in, std::int64_t& value) {
    long long wide = 0;
    if (!in.ReadLongLong(wide)) {
        return false;
    }
    value = wide;
    return true;
}

/** A flag travels as an Int; whatever is not 0 is true. */
inline bool Read(BinarySerializer& in, bool& value) {
    int wide = 0;
    if (!in.ReadInt(wide)) {
        return false;
    }
    value = wide != 0;
    return true;
}

template <class Value>
bool Read(BinarySerializer& in, Value& value) {
    return value.UnserializeFrom(in);
}

}  // namespace Wire

/**
 * A message whose body is its fields one behind the other. `Message` lists them once, in wire order, in a
 * static template `Fields(self)` that returns a tie, and a message that travels as a body carries its type number as `MessageType`.
 */
template <class Message>
struct WireMessage {
    /** Appends the fields; false at the first that fails, with those before it written. */
    bool SerializeTo(BinarySerializer& out) const {
        const auto write = [&out](const auto&... field) { return (Wire::Write(out, field) && ...); };
        return std::apply(write, Message::Fields(static_cast<const Message&>(*this)));
    }

    /** Reads the fields; false at the first that fails, with those before it changed. Bytes left over stay
     * queued. */
    bool UnserializeFrom(BinarySerializer& in) {
        const auto read = [&in](auto&... field) { return (Wire::Read(in, field) && ...); };
        return std::apply(read, Message::Fields(static_cast<Message&>(*this)));
    }
};
