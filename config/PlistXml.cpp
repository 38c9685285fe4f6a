// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/PlistXml.h"

#include <expat.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <vector>

namespace config {

namespace {

constexpr std::size_t maxDepth = 256;
constexpr std::string_view whitespace = " \t\r\n";

bool isBlank(std::string_view text) {
    return text.find_first_not_of(whitespace) == std::string_view::npos;
}

std::string_view trimmed(std::string_view text) {
    const auto first = std::min(text.find_first_not_of(whitespace), text.size());
    const auto last = text.find_last_not_of(whitespace);
    return last == std::string_view::npos ? std::string_view() : text.substr(first, last - first + 1);
}

bool takePrefix(std::string_view& text, std::string_view prefix) {
    const bool isThere = text.starts_with(prefix);
    text.remove_prefix(isThere ? prefix.size() : 0);
    return isThere;
}

/** All of `text` as a number that fits; signs are the caller's. */
template <class Number, class... Format>
std::optional<Number> numberIn(std::string_view text, Format... format) {
    Number number{};
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number, format...);
    return !text.starts_with('-') && error == std::errc() && stop == end ? std::optional(number)
                                                                         : std::nullopt;
}

/** From -2^63 to 2^64 - 1, decimal or, after 0x, hexadecimal. */
PlistNode readInteger(std::string_view text) {
    const bool isNegative = takePrefix(text, "-") || (takePrefix(text, "+") && false);
    const int base = takePrefix(text, "0x") || takePrefix(text, "0X") ? 16 : 10;
    const auto magnitude = numberIn<std::uint64_t>(text, base);
    if (!magnitude || (isNegative && *magnitude > std::uint64_t{1} << 63U)) {
        return nullptr;
    }
    return newScalar("integer", (isNegative ? "-" : "") + std::to_string(*magnitude));
}

/** Whatever the locale, unlike libplist; "nan" and "infinity" are numbers. */
PlistNode readReal(std::string_view text) {
    const bool isNegative = takePrefix(text, "-") || (takePrefix(text, "+") && false);
    const auto magnitude = numberIn<double>(text);
    return PlistNode(magnitude ? plist_new_real(isNegative ? -*magnitude : *magnitude) : nullptr);
}

/** 2008-03-07T09:05:00Z */
PlistNode readDate(std::string_view text) {
    constexpr std::string_view pattern = "dddd-dd-ddTdd:dd:ddZ";
    const auto matches = [](char c, char wanted) {
        return wanted == 'd' ? c >= '0' && c <= '9' : c == wanted;
    };
    if (!std::equal(text.begin(), text.end(), pattern.begin(), pattern.end(), matches)) {
        return nullptr;
    }
    const auto field = [text](std::size_t at, std::size_t digits) {
        return *numberIn<unsigned>(text.substr(at, digits));
    };
    const std::chrono::year_month_day day(std::chrono::year(static_cast<int>(field(0, 4))),
                                          std::chrono::month(field(5, 2)), std::chrono::day(field(8, 2)));
    const bool isMoment = day.ok() && field(11, 2) < 24 && field(14, 2) < 60 && field(17, 2) < 60;
    return isMoment ? newScalar("date", std::string(text)) : nullptr;
}

PlistNode readData(std::string base64) {
    constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::erase_if(base64, [](char c) { return whitespace.find(c) != std::string_view::npos; });
    const auto padding = std::min(base64.find('='), base64.size());
    const bool isBase64 = base64.size() % 4 == 0 && base64.size() - padding <= 2 &&
                          base64.find_first_not_of(digits) >= padding &&
                          base64.find_first_not_of('=', padding) == std::string::npos;
    return isBase64 ? newScalar("data", base64) : nullptr;
}

/** Null when the text is no such value, or when there is no such element. */
PlistNode readLeaf(std::string_view element, const std::string& text) {
    if (element == "string") {
        return PlistNode(plist_new_string(text.c_str()));
    }
    if (element == "integer") {
        return readInteger(trimmed(text));
    }
    if (element == "real") {
        return readReal(trimmed(text));
    }
    if (element == "date") {
        return readDate(trimmed(text));
    }
    if (element == "data") {
        return readData(text);
    }
    const bool isBoolean = (element == "true" || element == "false") && isBlank(text);
    return PlistNode(isBoolean ? plist_new_bool(element == "true") : nullptr);
}

/** Puts a value together from the elements that Expat reports; stops it at the first that is out of place. */
class Reader {
  public:
    Reader() : m_Expat(XML_ParserCreate(nullptr), XML_ParserFree) {
        XML_SetUserData(m_Expat.get(), this);
        XML_SetElementHandler(
            m_Expat.get(), [](void* self, const char* name, const char**) { of(self)->open(name); },
            [](void* self, const char* name) { of(self)->close(name); });
        XML_SetCharacterDataHandler(m_Expat.get(), [](void* self, const char* text, int length) {
            of(self)->read({text, static_cast<std::size_t>(length)});
        });
        XML_SetEntityDeclHandler(m_Expat.get(),
                                 [](void* self, const char*, int, const char*, int, const char*, const char*,
                                    const char*, const char*) { of(self)->refuse(); });
    }

    PlistNode parse(std::string_view document) {
        const auto status =
            XML_Parse(m_Expat.get(), document.data(), static_cast<int>(document.size()), XML_TRUE);
        return status == XML_STATUS_OK && !m_IsRefused ? std::move(m_Root) : nullptr;
    }

  private:
    struct Container {
        PlistNode node;
        bool isDictionary;
        std::optional<std::string> key;  ///< of the value that comes next
    };

    static Reader* of(void* self) { return static_cast<Reader*>(self); }

    void refuse() {
        m_IsRefused = true;
        XML_StopParser(m_Expat.get(), XML_FALSE);
    }

    void open(std::string_view element) {
        if (m_IsInLeaf || m_Open.size() == maxDepth || (element == "plist") == m_IsInPlist) {
            refuse();
        } else if (element == "plist") {
            m_IsInPlist = true;
        } else if (element == "dict") {
            m_Open.push_back({PlistNode(plist_new_dict()), true, {}});
        } else if (element == "array") {
            m_Open.push_back({PlistNode(plist_new_array()), false, {}});
        } else {
            m_IsInLeaf = true;
            m_Text.clear();
        }
    }

    void close(std::string_view element) {
        if (m_IsInLeaf) {
            m_IsInLeaf = false;
            if (element == "key") {
                takeKey();
            } else {
                place(readLeaf(element, m_Text));
            }
        } else if (!m_Open.empty()) {
            Container closed = std::move(m_Open.back());
            m_Open.pop_back();
            place(closed.key ? nullptr : std::move(closed.node));
        }
    }

    void read(std::string_view text) {
        if (m_IsInLeaf) {
            m_Text += text;
        } else if (!isBlank(text)) {
            refuse();
        }
    }

    void takeKey() {
        if (m_Open.empty() || !m_Open.back().isDictionary || m_Open.back().key) {
            refuse();
        } else {
            m_Open.back().key = m_Text;
        }
    }

    /** A null value is refused. */
    void place(PlistNode value) {
        if (value == nullptr ||
            (m_Open.empty() ? m_Root != nullptr
                            : m_Open.back().isDictionary != m_Open.back().key.has_value())) {
            refuse();
        } else if (m_Open.empty()) {
            m_Root = std::move(value);
        } else if (Container& parent = m_Open.back(); parent.isDictionary) {
            plist_dict_set_item(parent.node.get(), parent.key->c_str(), value.release());
            parent.key.reset();
        } else {
            plist_array_append_item(parent.node.get(), value.release());
        }
    }

    std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> m_Expat;
    PlistNode m_Root;
    std::vector<Container> m_Open;  ///< the innermost is the last
    std::string m_Text;             ///< of the leaf
    bool m_IsInPlist = false;
    bool m_IsInLeaf = false;
    bool m_IsRefused = false;
};

/** A bare carriage return would be read back as a line feed; in what libplist writes it stands in texts only. */
std::string keepCarriageReturns(std::string_view document) {
    std::string kept;
    for (const char c : document) {
        if (c == '\r') {
            kept += "&#13;";
        } else {
            kept += c;
        }
    }
    return kept;
}

}  // namespace

PlistNode readPlistXml(std::string_view document) {
    return Reader().parse(document);
}

std::optional<std::string> writePlistXml(plist_t value) {
    char* text = nullptr;
    std::uint32_t length = 0;
    plist_to_xml(value, &text, &length);
    if (text == nullptr) {
        return std::nullopt;
    }
    std::string document = keepCarriageReturns({text, length});
    plist_to_xml_free(text);
    return readPlistXml(document) != nullptr ? std::optional(std::move(document)) : std::nullopt;
}

}  // namespace config
