// SPDX-License-Identifier: GPL-3.0-or-later
// "bplist00", the objects, a table with the offset of each, 32 bytes of trailer. Integers are big-endian.
#include "config/PlistBinary.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>
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
        m_Extents.assign(count, {});
        return extentOf(top, 0).has_value();
    }

  private:
    /** What an object and all that it refers to take. */
    struct Extent {
        std::size_t bytes = unknown;  ///< of memory
        std::size_t height = 0;       ///< how many references follow upon each other
    };

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

    /** Nothing when the object is unsound, or too much is below it for one that stands `depth` deep. */
    std::optional<Extent> extentOf(std::uint64_t object, std::size_t depth) {
        if (object >= m_Extents.size() || depth > maxDepth || m_Extents[object].bytes == underWay) {
            return std::nullopt;
        }
        if (m_Extents[object].bytes == unknown) {
            m_Extents[object].bytes = underWay;
            const auto extent = measure(*number(m_Table + object * m_OffsetSize, m_OffsetSize), depth);
            if (!extent) {
                return std::nullopt;
            }
            m_Extents[object] = *extent;
        }
        return depth + m_Extents[object].height <= maxDepth ? std::optional(m_Extents[object]) : std::nullopt;
    }

    std::optional<Extent> measure(std::uint64_t at, std::size_t depth) {
        if (at < headerSize || at >= m_Table) {
            return std::nullopt;
        }
        const auto marker = static_cast<unsigned char>(m_File[at]);
        std::uint64_t length = marker & 15U;
        switch (marker >> 4U) {
            case 0x0:
                return marker == 0x08 || marker == 0x09 ? std::optional(Extent{nodeBytes}) : std::nullopt;
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

    std::optional<Extent> contents(std::uint64_t at, std::uint64_t count, std::size_t size) const {
        const bool isInside = at <= m_Table && count * size <= m_Table - at;
        return isInside ? std::optional(Extent{nodeBytes + 2 * count * size}) : std::nullopt;
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
            const auto offset = key && *key < m_Extents.size()
                                    ? number(m_Table + *key * m_OffsetSize, m_OffsetSize)
                                    : std::nullopt;
            const std::uint64_t kind = offset ? number(*offset, 1).value_or(0) >> 4U : 0;
            if (kind != 5 && kind != 6) {
                return false;
            }
        }
        return true;
    }

    std::optional<Extent> references(std::uint64_t at, std::uint64_t count, std::size_t depth) {
        std::optional<Extent> sum = contents(at, count, m_ReferenceSize);
        for (std::uint64_t i = 0; sum && i < count; ++i) {
            const auto part = extentOf(*number(at + i * m_ReferenceSize, m_ReferenceSize), depth + 1);
            if (!part || part->bytes > maxExpandedBytes - sum->bytes) {
                return std::nullopt;
            }
            sum = {sum->bytes + part->bytes, std::max(sum->height, part->height + 1)};
        }
        return sum;
    }

    std::string_view m_File;
    std::uint64_t m_OffsetSize = 0;
    std::uint64_t m_ReferenceSize = 0;
    std::uint64_t m_Table = 0;
    std::vector<Extent> m_Extents;  ///< of each object; its bytes may be `unknown` or `underWay`
};

PlistNode rebuilt(plist_t node);

/** Null when a key stands in it twice: libplist keeps both and finds the first, other readers find the last. */
PlistNode rebuiltDictionary(plist_t dictionary) {
    PlistNode result(plist_new_dict());
    void* iterator = nullptr;
    plist_dict_new_iter(dictionary, &iterator);
    for (std::uint32_t i = plist_dict_get_size(dictionary); i > 0 && result != nullptr; --i) {
        char* key = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(dictionary, iterator, &key, &value);
        PlistNode copy = rebuilt(value);
        if (key == nullptr || copy == nullptr || valueOf(result.get(), key) != nullptr) {
            result.reset();
        } else {
            setValue(result.get(), key, std::move(copy));
        }
        std::free(key);
    }
    std::free(iterator);
    return result;
}

PlistNode rebuiltArray(plist_t array) {
    PlistNode result(plist_new_array());
    void* iterator = nullptr;
    plist_array_new_iter(array, &iterator);
    for (std::uint32_t i = plist_array_get_size(array); i > 0 && result != nullptr; --i) {
        plist_t item = nullptr;
        plist_array_next_item(array, iterator, &item);
        PlistNode copy = rebuilt(item);
        if (copy == nullptr) {
            result.reset();
        } else {
            plist_array_append_item(result.get(), copy.release());
        }
    }
    std::free(iterator);
    return result;
}

/** libplist walks to each element of an array that its binary reader made; of one that it built itself it knows them. */
PlistNode rebuilt(plist_t node) {
    switch (plist_get_node_type(node)) {
        case PLIST_DICT:
            return rebuiltDictionary(node);
        case PLIST_ARRAY:
            return rebuiltArray(node);
        default:
            return PlistNode(plist_copy(node));
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
    const PlistNode node(parsed);
    return node != nullptr ? rebuilt(node.get()) : nullptr;
}

}  // namespace config
