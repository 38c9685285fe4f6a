// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/store/connections/ConnectionLister.h"

#include <algorithm>
#include <optional>
#include <span>
#include <tuple>

#include "libs/sqlite/Snapshot.h"
#include "service/store/connections/SortEntries.h"

namespace service {

namespace {

/** Entries that are looked at to find where to cut: parts then are by some percent larger or smaller. */
constexpr std::size_t sampleCount = 40'000;

/** `numberAt(n)` gives the n-th number of the key. The entry's last holds the id in its lower half: none are equal. */
template <class Entry, class NumberAt>
Entry makeEntry(ConnectionId id, std::uint64_t flip, NumberAt numberAt) {
    const auto low = static_cast<std::uint64_t>(id);
    if constexpr (std::tuple_size_v<Entry> == 2) {
        return {numberAt(0) ^ flip, low};
    } else {
        constexpr std::uint64_t used = 0xff'ffff;
        return {numberAt(0) ^ flip, numberAt(1) ^ flip, ((numberAt(2) ^ flip) & used) << 32 | low};
    }
}

std::optional<ConnectionNumber> numberOf(ConnectionSortField field) {
    switch (field) {
        case ConnectionSortField::StartTime:
            return ConnectionNumber::Started;
        case ConnectionSortField::EndTime:
            return ConnectionNumber::Ended;
        case ConnectionSortField::Direction:  // numbered in the alphabetical order of their names
            return ConnectionNumber::Direction;
        case ConnectionSortField::ReceivedBytes:
            return ConnectionNumber::Received;
        case ConnectionSortField::SentBytes:
            return ConnectionNumber::Sent;
        case ConnectionSortField::LocalAddress:
            return ConnectionNumber::Local;
        case ConnectionSortField::RemoteAddress:
            return ConnectionNumber::Remote;
        case ConnectionSortField::None:
            break;
    }
    return std::nullopt;
}

bool isAddress(const ConnectionQuery& query) {
    return query.sortField == ConnectionSortField::LocalAddress ||
           query.sortField == ConnectionSortField::RemoteAddress;
}

}  // namespace

ConnectionLister::SortKey::SortKey(const ConnectionQuery& query) {
    const std::optional<ConnectionNumber> field = numberOf(query.sortField);
    if (!field || query.sortDirection == SortDirection::None) {
        return;
    }
    isSorted = true;
    column = columnOf(*field);
    number = static_cast<std::size_t>(*field) - connectionColumns[column].firstNumber;
    flip = query.sortDirection == SortDirection::Descending ? ~std::uint64_t{0} : 0;
}

ConnectionLister::ConnectionLister(SQLite::Database& database, std::size_t sortMemory)
    : m_Database(database), m_SortMemory(sortMemory), m_Selection(database) {}

bool ConnectionLister::list(const ConnectionQuery& query, std::vector<ConnectionId>& ids,
                            const std::stop_token& stop, const std::function<void(std::size_t)>& onCounted) {
    const SQLite::Snapshot snapshot(m_Database);
    bool worked = m_Selection.select(query, stop);
    if (worked) {
        const std::size_t count = m_Selection.count();
        onCounted(count);
        ids.reserve(count);
        const SortKey key(query);
        if (key.isSorted) {
            worked = isAddress(query) ? sort<3>(key, ids) : sort<2>(key, ids);
        } else {
            listById(ids);
        }
    }
    m_Selection.clear();
    return worked;
}

void ConnectionLister::listById(std::vector<ConnectionId>& ids) const {
    for (const auto& block : m_Selection.blocks()) {
        block.slots.forEach([&](int slot) { ids.push_back(ConnectionBlock::idAt(block.number, slot)); });
    }
    const auto middle = static_cast<std::ptrdiff_t>(ids.size());
    for (const auto& apart : m_Selection.apart()) {
        ids.push_back(apart.id);
    }
    std::sort(ids.begin() + middle, ids.end());
    std::inplace_merge(ids.begin(), ids.begin() + middle, ids.end());
}

/**
 * How many entries are sorted next when `done` of `total` ids are there: the memory of the ids that are still to
 * come is shared by the entries and the ids that become of them.
 */
template <class Entry>
std::size_t ConnectionLister::partSize(std::size_t done, std::size_t total) const {
    const std::size_t memory = (total - done) * sizeof(ConnectionId) + m_SortMemory;
    return std::min(memory / (sizeof(Entry) + sizeof(ConnectionId)), total - done);
}

template <std::size_t size>
bool ConnectionLister::sort(const SortKey& key, std::vector<ConnectionId>& ids) {
    using Entry = SortEntry<size>;
    std::vector<Entry> samples;
    const std::size_t total = m_Selection.count();
    if (partSize<Entry>(0, total) < total &&
        !sample(key, std::max<std::size_t>(total / sampleCount, 1), samples)) {
        return false;
    }
    sortEntries(std::span(samples));
    Entry last;
    last.fill(~std::uint64_t{0});
    for (Entry from{}; from != last;) {
        const std::size_t end = ids.size() + partSize<Entry>(ids.size(), total);
        const std::size_t cut = samples.size() * end / std::max<std::size_t>(total, 1);
        const Entry to = cut < samples.size() ? samples[cut] : last;
        if (!sortPart(key, from, to, ids)) {
            return false;
        }
        from = to;
    }
    return true;
}

/** From `from` on, before `to`. Its memory goes back before the next part comes, which has less to share. */
template <class Entry>
bool ConnectionLister::sortPart(const SortKey& key, const Entry& from, const Entry& to,
                                std::vector<ConnectionId>& ids) {
    std::vector<Entry> part;
    const std::size_t total = ids.capacity();
    part.reserve(partSize<Entry>(ids.size(), total) +
                 total / 16);  // more than chance ever adds, and mostly not used
    if (!gather(key, from, to, part)) {
        return false;
    }
    sortEntries(std::span(part));
    for (const Entry& entry : part) {
        ids.push_back(static_cast<ConnectionId>(entry.back() & 0xffff'ffff));
    }
    return true;
}

/** Every so many of the connections in the blocks. */
template <class Entry>
bool ConnectionLister::sample(const SortKey& key, std::size_t stride, std::vector<Entry>& samples) {
    std::size_t next = 0;
    return m_Selection.forEachBlock(
        key.column, [&](const ConnectionSelection::Block& block, const PackedColumn& column) {
            block.slots.forEach([&](int slot) {
                if (next++ % stride == 0) {
                    samples.push_back(makeEntry<Entry>(
                        ConnectionBlock::idAt(block.number, slot), key.flip,
                        [&](std::size_t n) { return column.numbers[key.number + n][slot]; }));
                }
            });
        });
}

/** All entries from `from` on and before `to`. */
template <class Entry>
bool ConnectionLister::gather(const SortKey& key, const Entry& from, const Entry& to,
                              std::vector<Entry>& entries) {
    const auto add = [&](const Entry& entry) {
        if (entry >= from && entry < to) {
            entries.push_back(entry);
        }
    };
    for (const auto& apart : m_Selection.apart()) {
        const std::size_t first = connectionColumns[key.column].firstNumber + key.number;
        add(makeEntry<Entry>(apart.id, key.flip, [&](std::size_t n) { return apart.numbers[first + n]; }));
    }
    const std::uint64_t range = to[0] - from[0];
    return m_Selection.forEachBlock(key.column, [&](const ConnectionSelection::Block& block,
                                                    const PackedColumn& column) {
        const PackedNumbers& numbers = column.numbers[key.number];
        const auto [least, most] =
            std::minmax({numbers.smallest() ^ key.flip, numbers.greatest() ^ key.flip});
        if (most < from[0] || least > to[0]) {
            return;
        }
        block.slots.forEach([&](int slot) {
            if ((numbers[slot] ^ key.flip) - from[0] <= range) {
                add(makeEntry<Entry>(ConnectionBlock::idAt(block.number, slot), key.flip,
                                     [&](std::size_t n) { return column.numbers[key.number + n][slot]; }));
            }
        });
    });
}

}  // namespace service
