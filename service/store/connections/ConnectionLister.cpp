// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/store/connections/ConnectionLister.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <span>
#include <tuple>

#include "service/store/columns/Columns.h"
#include "service/store/connections/SortEntries.h"

namespace service {

namespace {

using SQLite::StepResult;

/** Entries that are looked at to find where to cut: parts then are by some percent larger or smaller. */
constexpr std::size_t sampleCount = 40'000;

constexpr int lifeColumnIndex = 10;

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

/** One state of the database for all that is read in its scope. */
class Snapshot {
  public:
    explicit Snapshot(SQLite::Database& database) : m_Database(database) { database.Execute("BEGIN"); }
    ~Snapshot() { m_Database.Execute("COMMIT"); }

    Snapshot(const Snapshot&) = delete;
    Snapshot& operator=(const Snapshot&) = delete;

  private:
    SQLite::Database& m_Database;
};

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
    : m_Database(database),
      m_SortMemory(sortMemory),
      m_KeptSince(database, "SELECT kept_since FROM counting"),
      m_Heads(database,
              "SELECT block, slots, first_started, last_started, first_ended, last_ended "
              "FROM connection_blocks ORDER BY block"),
      m_Apart(database,
              std::string("SELECT ") + connectionNumberColumns + ", life FROM connections WHERE life >= 33"),
      m_Readers{{{database, 0}, {database, 1}, {database, 2}, {database, 3}, {database, 4}, {database, 5}}} {}

bool ConnectionLister::isValid() const {
    return m_KeptSince.IsValid() && m_Heads.IsValid() && m_Apart.IsValid() &&
           std::ranges::all_of(m_Readers, &BlockReader::isValid);
}

bool ConnectionLister::list(const ConnectionQuery& query, std::vector<ConnectionId>& ids,
                            const std::stop_token& stop, const std::function<void(std::size_t)>& onCounted) {
    m_Stop = stop;
    m_LastError.clear();
    const Snapshot snapshot(m_Database);
    bool worked = select(query);
    if (worked) {
        onCounted(count());
        ids.reserve(count());
        const SortKey key(query);
        if (key.isSorted) {
            worked = isAddress(query) ? sort<3>(key, ids) : sort<2>(key, ids);
        } else {
            listById(ids);
        }
    }
    std::ranges::for_each(m_Readers, &BlockReader::reset);
    m_SelectedBlocks = std::vector<Block>();  // braces alone would keep the memory
    m_SelectedApart = std::vector<Apart>();
    return worked;
}

bool ConnectionLister::select(const ConnectionQuery& query) {
    std::uint64_t since = 0;
    return readSince(query, since) && selectBlocks(query, since) && selectApart(query, since) &&
           checkTimes(since, toNumber(toColumn(query.to))) && checkKinds(query);
}

/** What ended before the history is kept does not belong to it any more, whether it is gone yet or not. */
bool ConnectionLister::readSince(const ConnectionQuery& query, std::uint64_t& since) {
    const StepResult result = m_KeptSince.Step();
    const std::int64_t keptSince = m_KeptSince.GetColumnAsInt64(0);
    m_KeptSince.Reset();
    if (result == StepResult::Failed) {
        return fail(m_Database.GetLastError());
    }
    const std::int64_t from = toColumn(query.from);
    since = toNumber(result == StepResult::Row ? std::max(from, keptSince) : from);
    return true;
}

/** The blocks in which something may have lived in that time, with all that they hold. */
bool ConnectionLister::selectBlocks(const ConnectionQuery& query, std::uint64_t since) {
    const std::int64_t from = fromNumber(since);
    const std::int64_t to = toColumn(query.to);
    StepResult result = m_Heads.Step();
    for (; result == StepResult::Row && !m_Stop.stop_requested(); result = m_Heads.Step()) {
        if (m_Heads.GetColumnAsInt64(2) <= to && m_Heads.GetColumnAsInt64(5) >= from) {
            const bool isAllInTime = m_Heads.GetColumnAsInt64(3) <= to && m_Heads.GetColumnAsInt64(4) >= from;
            m_SelectedBlocks.push_back({.number = m_Heads.GetColumnAsInt(0),
                                        .isAllInTime = isAllInTime,
                                        .slots = Slots::fromBytes(m_Heads.GetColumnBytes(1))});
            limitIds(m_SelectedBlocks.back(), query.newest);
        }
    }
    m_Heads.Reset();
    return result != StepResult::Failed || fail(m_Database.GetLastError());
}

void ConnectionLister::limitIds(Block& block, std::optional<ConnectionId> newest) {
    if (newest && ConnectionBlock::idAt(block.number, Slots::count - 1) > *newest) {
        block.slots.keepIf([&](int slot) { return ConnectionBlock::idAt(block.number, slot) <= *newest; });
    }
}

bool ConnectionLister::selectApart(const ConnectionQuery& query, std::uint64_t since) {
    using enum ConnectionNumber;
    const std::uint64_t until = toNumber(toColumn(query.to));
    StepResult result = m_Apart.Step();
    for (; result == StepResult::Row; result = m_Apart.Step()) {
        Apart apart{.id = m_Apart.GetColumnAsInt(0), .numbers = connectionNumbers(m_Apart)};
        const auto number = [&apart](ConnectionNumber which) -> std::uint64_t& {
            return apart.numbers[static_cast<std::size_t>(which)];
        };
        if (m_Apart.GetColumnAsInt(lifeColumnIndex) == openLife) {
            number(Ended) = toNumber(std::numeric_limits<std::int64_t>::max());
        }
        removeFromBlock(apart.id);
        const bool passes = number(Started) <= until && number(Ended) >= since &&
                            (!query.newest || apart.id <= *query.newest) &&
                            (!query.application || number(Application) == toNumber(*query.application)) &&
                            (!query.socketProtocol || number(Protocol) == toNumber(*query.socketProtocol));
        if (passes) {
            m_SelectedApart.push_back(apart);
        }
    }
    m_Apart.Reset();
    return result == StepResult::Done || fail(m_Database.GetLastError());
}

/** A connection that was written anew after it had been closed counts as its row says. */
void ConnectionLister::removeFromBlock(ConnectionId id) {
    const std::int32_t number = ConnectionBlock::blockOf(id);
    const auto block = std::ranges::lower_bound(m_SelectedBlocks, number, {}, &Block::number);
    if (block != m_SelectedBlocks.end() && block->number == number) {
        block->slots.remove(ConnectionBlock::slotOf(id));
    }
}

bool ConnectionLister::checkTimes(std::uint64_t since, std::uint64_t until) {
    return forEachBlock(
        columnOf(ConnectionNumber::Started), [](const Block& block) { return !block.isAllInTime; },
        [=](Block& block, const PackedColumn& times) {
            block.slots.keepIf(
                [&](int slot) { return times.numbers[0][slot] <= until && times.numbers[1][slot] >= since; });
        });
}

bool ConnectionLister::checkKinds(const ConnectionQuery& query) {
    if (!query.application && !query.socketProtocol) {
        return true;
    }
    return forEachBlock(
        columnOf(ConnectionNumber::Application), [](const Block&) { return true; },
        [&query](Block& block, const PackedColumn& kinds) {
            block.slots.keepIf([&](int slot) {
                return (!query.application || kinds.numbers[0][slot] == toNumber(*query.application)) &&
                       (!query.socketProtocol || kinds.numbers[1][slot] == toNumber(*query.socketProtocol));
            });
        });
}

std::size_t ConnectionLister::count() const {
    std::size_t count = m_SelectedApart.size();
    for (const Block& block : m_SelectedBlocks) {
        count += static_cast<std::size_t>(block.slots.size());
    }
    return count;
}

void ConnectionLister::listById(std::vector<ConnectionId>& ids) const {
    for (const Block& block : m_SelectedBlocks) {
        block.slots.forEach([&](int slot) { ids.push_back(ConnectionBlock::idAt(block.number, slot)); });
    }
    const auto middle = static_cast<std::ptrdiff_t>(ids.size());
    for (const Apart& apart : m_SelectedApart) {
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
    const std::size_t total = count();
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
    return forEachBlock(
        key.column, [](const Block&) { return true; },
        [&](Block& block, const PackedColumn& column) {
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
    for (const Apart& apart : m_SelectedApart) {
        const std::size_t first = connectionColumns[key.column].firstNumber + key.number;
        add(makeEntry<Entry>(apart.id, key.flip, [&](std::size_t n) { return apart.numbers[first + n]; }));
    }
    const std::uint64_t range = to[0] - from[0];
    return forEachBlock(
        key.column, [](const Block&) { return true; },
        [&](Block& block, const PackedColumn& column) {
            const PackedNumbers& numbers = column.numbers[key.number];
            const auto [least, most] =
                std::minmax({numbers.smallest() ^ key.flip, numbers.greatest() ^ key.flip});
            if (most < from[0] || least > to[0]) {
                return;
            }
            block.slots.forEach([&](int slot) {
                if ((numbers[slot] ^ key.flip) - from[0] <= range) {
                    add(makeEntry<Entry>(
                        ConnectionBlock::idAt(block.number, slot), key.flip,
                        [&](std::size_t n) { return column.numbers[key.number + n][slot]; }));
                }
            });
        });
}

/** Visits that column of the selected blocks in which something is left and that are wanted. */
template <class IsWanted, class Visit>
bool ConnectionLister::forEachBlock(std::size_t column, IsWanted isWanted, Visit visit) {
    for (Block& block : m_SelectedBlocks) {
        if (m_Stop.stop_requested()) {
            return false;
        }
        if (block.slots.isEmpty() || !isWanted(block)) {
            continue;
        }
        const PackedColumn* numbers = m_Readers[column].find(block.number);
        if (numbers == nullptr) {
            return fail("block " + std::to_string(block.number) + " cannot be read");
        }
        visit(block, *numbers);
    }
    return true;
}

bool ConnectionLister::fail(const std::string& reason) {
    m_LastError = reason;
    return false;
}

}  // namespace service
