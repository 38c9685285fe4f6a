// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/charts/ConnectionsExport.h"

#include <algorithm>
#include <utility>

#include "controls/CsvRecord.h"
#include "ui/charts/ConnectionText.h"

namespace {

/** Some 20 ms, of which the link's wait for replies takes at least five however few the rows are. */
constexpr std::int32_t rowsPerSlice = 128;

/** The address and the port, both empty for an address of unknown kind. */
QByteArray endpointFields(const IpAddress& endpoint) {
    const QByteArray host = CsvRecord::field(hostText(endpoint));
    return host + ',' + (host.isEmpty() ? QByteArray() : QByteArray::number(endpoint.port));
}

}  // namespace

ConnectionsExport::ConnectionsExport(Fetch fetch, std::int32_t connections, QObject* parent)
    : QObject(parent), m_Fetch(std::move(fetch)), m_Count(connections) {
    connect(&m_Turn, &QTimer::timeout, this, &ConnectionsExport::writeSlice);
}

void ConnectionsExport::start(const QString& path) {
    m_File.setFileName(path);
    const QByteArray names = header();
    if (m_File.open(QIODevice::WriteOnly) && m_File.write(names) == names.size()) {
        m_Turn.start(0);
    } else {
        fail(m_File.errorString());
    }
}

QByteArray ConnectionsExport::header() {
    return CsvRecord::joined({"Start", "End", "Protocol", "Direction", "Received bytes", "Sent bytes",
                              "Local address", "Local port", "Remote address", "Remote port"});
}

QByteArray ConnectionsExport::record(const ConnectionInfo& connection) {
    using Csv = CsvRecord;
    return Csv::joined(
        {Csv::dateField(connection.startTime()), Csv::dateField(connection.endTime()),
         Csv::field(protocolText(connection.socketProtocol())), Csv::field(connection.direction()),
         QByteArray::number(qint64{connection.receivedBytes()}),
         QByteArray::number(qint64{connection.sendedBytes()}), endpointFields(connection.localEndpoint()),
         endpointFields(connection.remoteEndpoint())});
}

void ConnectionsExport::writeSlice() {
    QByteArray text;
    for (const auto& connection : m_Fetch(m_Written, std::min(rowsPerSlice, m_Count - m_Written))) {
        if (connection == nullptr) {
            fail(QString("The daemon did not tell of connection %1 of %2. It may have ended, or its history "
                         "may have been cleaned meanwhile.")
                     .arg(m_Written + 1)
                     .arg(m_Count));
            return;
        }
        text += record(*connection);
        ++m_Written;
    }
    if (m_File.write(text) != text.size() || (m_Written >= m_Count && !m_File.commit())) {
        fail(m_File.errorString());
        return;
    }
    emit progressed(m_Written);
    if (m_Written >= m_Count) {
        m_Turn.stop();
        emit finished();
    }
}

void ConnectionsExport::fail(const QString& error) {
    m_Turn.stop();
    m_File.cancelWriting();
    emit failed(error);
}
