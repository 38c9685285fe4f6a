// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/CumulativeBytes.h"

#include <utility>

namespace service {

namespace {

constexpr std::int32_t allProtocols = -1;

}  // namespace

CumulativeBytes::CumulativeBytes(const Ledger& ledger, HistoryReader& history, Clock now)
    : m_Ledger(ledger), m_History(history), m_Now(std::move(now)) {}

ByteCount CumulativeBytes::upTo(Moment moment, std::optional<ApplicationId> application,
                                std::int32_t socketProtocol) {
    std::optional<ProtocolClass> protocolClass;
    if (socketProtocol != allProtocols) {
        protocolClass = protocolClassOf(socketProtocol);
        if (protocolClass == ProtocolClass::Other) {
            return {};
        }
    }
    const std::optional<Counters> present = presentCounters(application);
    if (!present) {
        return {};
    }
    if (moment < m_Now()) {
        return m_History.totalUpTo(application, protocolClass, moment);
    }
    return protocolClass ? (*present)[*protocolClass] : present->total();
}

std::optional<Counters> CumulativeBytes::presentCounters(std::optional<ApplicationId> application) const {
    if (!application) {
        return m_Ledger.totals().counters;
    }
    const std::optional<ApplicationRecord> record = m_Ledger.application(*application);
    return record ? std::optional(record->counters) : std::nullopt;
}

}  // namespace service
