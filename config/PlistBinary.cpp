// SPDX-License-Identifier: GPL-3.0-or-later
// "bplist00", the objects, a table with the offset of each, 32 bytes of trailer. Integers are big-endian.
#include "config/PlistBinary.h"

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace config {

namespace {

constexpr std::string_view magic = "bplist0";
constexpr std::size_t headerSize = 8;
constexpr std::size_t trailerSize = 32;
constexpr std::size_t maxDepth = 256;
constexpr std::size_t maxExpandedBytes = std::size_t{64} << 20U;
constexpr std::size_t nodeBytes = 128;  // what libplist takes for a value beside its contents, rounded up

/** Follows the references of a file without making anything of its values. */
class Outline {
  public:
    explicit Outline(std::string_view file) : m_File(file) {}

    bool isSound() {
        if (m_File.size() < headerSize + trailerSize) {
            return false;
        }
        const std::size_t trailer = m_File.size() - trailerSize;
        m_OffsetSize = *number(trailer + 6, 1);
        m_ReferenceSize = *number(trailer + 7, 1);
        const std::uint64_t count = *number(trailer + 8, 8);
        const std::uint64_t top = *number(trailer + 16, 8);
        m_Table = *number(trailer + 24, 8);
        const auto isSize = [](std::uint64_t size) { return size >= 1 && size <= 8; };
        if (!isSize(m_OffsetSize) || !isSize(m_ReferenceSize) || m_Table < headerSize || m_Table > trailer ||
            count > (trailer - m_Table) / m_OffsetSize) {
            return false;
        }
        m_ExpandedBytes.assign(count, unknown);
        return expandedBytes(top, 0).has_value();
    }

  private:
    static constexpr std::size_t unknown = 0;
    static constexpr std::size_t underWay = 1;

    /** Nothing outside the file. */
    std::optional<std::uint64_t> number(std::uint64_t at, std::uint64_t size) const {
        if (at > m_File.size() || size > m_File.size() - at) {
            return std::nullopt;
        }
        std::uint64_t value = 0;
        for (const char byte : m_File.substr(at, size)) {
            value = value << 8U | static_cast<unsigned char>(byte);
        }
        return value;
    }

    /** Memory for the object and all that it refers to; nothing when it is unsound. */
    std::optional<std::size_t> expandedBytes(std::uint64_t object, std::size_t depth) {
        if (object >= m_ExpandedBytes.size() || depth > maxDepth || m_ExpandedBytes[object] == underWay) {
            return std::nullopt;
        }
        if (m_ExpandedBytes[object] == unknown) {
            m_ExpandedBytes[object] = underWay;
            const auto bytes = measure(*number(m_Table + object * m_OffsetSize, m_OffsetSize), depth);
            if (!bytes) {
                return std::nullopt;
            }
            m_ExpandedBytes[object] = *bytes;
        }
        return m_ExpandedBytes[object];
    }

    std::optional<std::size_t> measure(std::uint64_t at, std::size_t depth) {
        if (at < headerSize || at >= m_Table) {
            return std::nullopt;
        }
        const auto marker = static_cast<unsigned char>(m_File[at]);
        std::uint64_t length = marker & 15U;
        switch (marker >> 4U) {
            case 0x0:
                return marker == 0x08 || marker == 0x09 ? std::optional(nodeBytes) : std::nullopt;
            case 0x1:
            case 0x2:
            case 0x3:
                return length <= 4 ? contents(at + 1, std::uint64_t{1} << length, 1) : std::nullopt;
            case 0x8:
                return contents(at + 1, length + 1, 1);
            case 0x4:
                return takeLength(at, length) ? contents(at, length, 1) : std::nullopt;
            case 0x5:
                return takeLength(at, length) && isText(at, length, 1) ? contents(at, length, 1)
                                                                       : std::nullopt;
            case 0x6:
                return takeLength(at, length) && isText(at, length, 2) ? contents(at, length, 2)
                                                                       : std::nullopt;
            case 0xA:
                return takeLength(at, length) ? references(at, length, depth) : std::nullopt;
            case 0xD:
                return takeLength(at, length) && areKeys(at, length) ? references(at, 2 * length, depth)
                                                                     : std::nullopt;
            default:
                return std::nullopt;
        }
    }

    /** Moves from a marker to the contents; 15 means that the length follows as an integer of its own. */
    bool takeLength(std::uint64_t& at, std::uint64_t& length) const {
        ++at;
        if (length < 15) {
            return true;
        }
        const std::uint64_t marker = number(at, 1).value_or(0);
        const std::uint64_t size = std::uint64_t{1} << (marker & 15U);
        const auto explicitLength = number(at + 1, size);
        if (marker >> 4U != 1 || size > 8 || !explicitLength || *explicitLength > m_File.size()) {
            return false;
        }
        at += 1 + size;
        length = *explicitLength;
        return true;
    }

    std::optional<std::size_t> contents(std::uint64_t at, std::uint64_t count, std::size_t size) const {
        const bool isInside = at <= m_Table && count * size <= m_Table - at;
        return isInside ? std::optional(nodeBytes + 2 * count * size) : std::nullopt;
    }

    /** ASCII, or UTF-16; a zero in it would make libplist end the process. */
    bool isText(std::uint64_t at, std::uint64_t length, std::size_t unitSize) const {
        for (std::uint64_t i = 0; i < length; ++i) {
            const auto unit = number(at + i * unitSize, unitSize).value_or(0);
            if (unit == 0 || (unitSize == 1 && unit > 127)) {
                return false;
            }
        }
        return true;
    }

    bool areKeys(std::uint64_t at, std::uint64_t count) const {
        for (std::uint64_t i = 0; i < count; ++i) {
            const auto key = number(at + i * m_ReferenceSize, m_ReferenceSize);
            const auto offset = key && *key < m_ExpandedBytes.size()
                                    ? number(m_Table + *key * m_OffsetSize, m_OffsetSize)
                                    : std::nullopt;
            const std::uint64_t kind = offset ? number(*offset, 1).value_or(0) >> 4U : 0;
            if (kind != 5 && kind != 6) {
                return false;
            }
        }
        return true;
    }

    std::optional<std::size_t> references(std::uint64_t at, std::uint64_t count, std::size_t depth) {
        std::optional<std::size_t> sum = contents(at, count, m_ReferenceSize);
        for (std::uint64_t i = 0; sum && i < count; ++i) {
            const auto bytes = expandedBytes(*number(at + i * m_ReferenceSize, m_ReferenceSize), depth + 1);
            sum = bytes && *bytes <= maxExpandedBytes - *sum ? std::optional(*sum + *bytes) : std::nullopt;
        }
        return sum;
    }

    std::string_view m_File;
    std::uint64_t m_OffsetSize = 0;
    std::uint64_t m_ReferenceSize = 0;
    std::uint64_t m_Table = 0;
    std::vector<std::size_t> m_ExpandedBytes;  ///< of each object, or `unknown` or `underWay`
};

bool repeatsKeys(plist_t node);

bool dictionaryRepeatsKeys(plist_t dictionary) {
    std::set<std::string> keys;
    bool isRepeated = false;
    void* iterator = nullptr;
    plist_dict_new_iter(dictionary, &iterator);
    for (std::uint32_t i = plist_dict_get_size(dictionary); i > 0 && !isRepeated; --i) {
        char* key = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(dictionary, iterator, &key, &value);
        isRepeated = key == nullptr || !keys.insert(key).second || repeatsKeys(value);
        std::free(key);
    }
    std::free(iterator);
    return isRepeated;
}

/** libplist keeps a key as often as the file has it, and finds the first; other readers find the last. */
bool repeatsKeys(plist_t node) {
    switch (plist_get_node_type(node)) {
        case PLIST_DICT:
            return dictionaryRepeatsKeys(node);
        case PLIST_ARRAY:
            for (std::uint32_t i = 0; i < plist_array_get_size(node); ++i) {
                if (repeatsKeys(plist_array_get_item(node, i))) {
                    return true;
                }
            }
            return false;
        default:
            return false;
    }
}

}  // namespace

bool isPlistBinary(std::string_view file) {
    return file.starts_with(magic);
}

PlistNode readPlistBinary(std::string_view file) {
    plist_t parsed = nullptr;
    if (Outline(file).isSound()) {
        plist_from_bin(file.data(), static_cast<std::uint32_t>(file.size()), &parsed);
    }
    PlistNode node(parsed);
    return node != nullptr && !repeatsKeys(node.get()) ? std::move(node) : nullptr;
}

}  // namespace config
