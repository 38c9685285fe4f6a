// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <unicode/uversion.h>

#include <memory>
#include <string>

U_NAMESPACE_BEGIN
class Collator;
U_NAMESPACE_END

namespace service {

/**
 * The order in which a person expects text: without regard to case, accents beside their letters, "app 9"
 * before "app 10". The same in every locale, since the daemon does not know its clients' languages.
 */
class TextOrder {
  public:
    TextOrder();
    ~TextOrder();

    /** A string of bytes that compares as the UTF-8 text does in this order. */
    std::string sortKey(const std::string& text) const;

  private:
    std::unique_ptr<icu::Collator>
        m_Collator;  ///< null where ICU lacks its data: texts then compare by their bytes
};

}  // namespace service
