// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <utility>

namespace service {

/** One client's cursors of one kind, by the ids that it was told. Ids start at 1 and are never used again. */
template <class Cursor>
class CursorTable {
  public:
    static constexpr std::int32_t noCursor = -1;
    static constexpr std::size_t maxCursors = 1024;

    /** Makes a cursor from the arguments and returns its id; `noCursor` when the client has too many. */
    template <class... Arguments>
    std::int32_t create(Arguments&&... arguments) {
        if (m_Cursors.size() >= maxCursors || m_LastId == std::numeric_limits<std::int32_t>::max()) {
            return noCursor;
        }
        m_Cursors.try_emplace(++m_LastId, std::forward<Arguments>(arguments)...);
        return m_LastId;
    }

    /** The cursor of that id, the table's own; null when there is none. */
    Cursor* find(std::int32_t id) {
        const auto found = m_Cursors.find(id);
        return found == m_Cursors.end() ? nullptr : &found->second;
    }

    void erase(std::int32_t id) { m_Cursors.erase(id); }

  private:
    std::map<std::int32_t, Cursor> m_Cursors;
    std::int32_t m_LastId = 0;
};

}  // namespace service
