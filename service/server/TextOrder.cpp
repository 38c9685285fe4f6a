// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/TextOrder.h"

#include <unicode/coll.h>
#include <unicode/unistr.h>

#include <algorithm>

namespace service {

TextOrder::TextOrder() {
    UErrorCode status = U_ZERO_ERROR;
    m_Collator.reset(icu::Collator::createInstance(icu::Locale::getRoot(), status));
    if (U_FAILURE(status) || m_Collator == nullptr) {
        m_Collator.reset();
        return;
    }
    m_Collator->setStrength(icu::Collator::SECONDARY);  // letters and accents count, case does not
    m_Collator->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
}

TextOrder::~TextOrder() = default;

std::string TextOrder::sortKey(const std::string& text) const {
    if (m_Collator == nullptr) {
        return text;
    }
    const icu::UnicodeString unicode = icu::UnicodeString::fromUTF8(text);
    std::string key(2 * text.size() + 16, '\0');  // long enough for almost every text
    auto* bytes = reinterpret_cast<std::uint8_t*>(key.data());
    const std::int32_t needed = m_Collator->getSortKey(unicode, bytes, static_cast<std::int32_t>(key.size()));
    const bool fitted = needed <= static_cast<std::int32_t>(key.size());
    key.resize(static_cast<std::size_t>(needed));
    if (!fitted) {
        m_Collator->getSortKey(unicode, reinterpret_cast<std::uint8_t*>(key.data()), needed);
    }
    return key;
}

}  // namespace service
