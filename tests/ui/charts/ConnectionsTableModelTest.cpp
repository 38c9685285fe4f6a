// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/charts/ConnectionsTableModel.h"

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <utility>

#include "libs/utils/src/StringUtils.h"
#include "ui/charts/ConnectionText.h"
#include "ui/charts/TrafficFormat.h"

namespace {

using Model = ConnectionsTableModel;
using Asked = std::vector<std::pair<int, int>>;

constexpr std::int64_t mebibyte = 1 << 20;

/** A model over a cursor whose connection at index i received i megabytes; `m_Missing` cannot be fetched. */
class ConnectionsTableModelTest : public testing::Test {
  protected:
    std::vector<std::shared_ptr<const ConnectionInfo>> fetch(int first, int count) {
        m_Asked.emplace_back(first, count);
        std::vector<std::shared_ptr<const ConnectionInfo>> rows;
        for (int i = first; i < first + count; ++i) {
            rows.push_back(i == m_Missing ? nullptr : connection(i));
        }
        return rows;
    }

    std::shared_ptr<const ConnectionInfo> connection(int i) const {
        IpAddress remote = stringToIp("32.1.13.184.0.0.0.0.0.0.0.0.0.0.0.1", IpAddress::IPv6);
        IpAddress local = stringToIp("192.0.2.7", IpAddress::IPv4);
        remote.port = 443;
        local.port = 51234;
        return ConnectionInfo::connectionInfoWithId(i, 1, m_Start, m_Start.addSecs(93784), "Output", 10, 1, 6,
                                                    i * mebibyte, mebibyte / 2, "32.1", "192.0.2.7", remote,
                                                    local);
    }

    QStringList texts(int row) const {
        QStringList all;
        for (int column = 0; column < Model::ColumnCount; ++column) {
            all.append(m_Model.index(row, column).data().toString());
        }
        return all;
    }

    const QDateTime m_Start{QDate(2026, 7, 26), QTime(10, 0)};
    int m_Missing = -1;
    Asked m_Asked;
    Model m_Model{[this](auto first, auto count) { return fetch(first, count); }};
    QAbstractItemModelTester m_Tester{&m_Model, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

TEST_F(ConnectionsTableModelTest, ShowsTheRecordAsItIsAndTheUsualNotationInTheTooltip) {
    m_Missing = 1;
    m_Model.refresh(4);
    m_Model.fetchRows(0, 3);
    const QString start = NSDateToNSString(m_Start);
    const QString end = NSDateToNSString(m_Start.addSecs(93784));
    EXPECT_EQ(texts(3), (QStringList{"4", start, end, "Output", "3.000", "0.500", "192.0.2.7", "32.1"}));
    EXPECT_EQ(texts(1), (QStringList{"2", "", "", "", "", "", "", ""}));
    EXPECT_EQ(m_Model.index(3, Model::EndColumn).data(Qt::ToolTipRole),
              "Protocol: TCP\nLocal: 192.0.2.7:51234\nRemote: [2001:db8::1]:443\nStart: " + start.trimmed() +
                  "\nEnd: " + end.trimmed() + "\nDuration: 1 d 2 h 3 min 4 s");
    EXPECT_TRUE(connectionText(ConnectionInfo()).startsWith("Protocol: -1\nLocal: unknown\nRemote: unknown"));
}

TEST_F(ConnectionsTableModelTest, ItsFirstRowIsTheCursorsFirstAndAnotherOrderForgetsWhatItShowed) {
    m_Model.refresh(1000);
    EXPECT_EQ(m_Model.connectionForRow(500)->id(), 500);
    EXPECT_EQ(m_Model.connectionForRow(1000), nullptr);
    m_Model.fetchRows(995, 1004);
    EXPECT_EQ(m_Asked, (Asked{{500, 1}, {995, 5}}));
    m_Model.orderChanged();
    EXPECT_EQ(texts(500)[1], "");
}

TEST(ConnectionsTable, ItsColumnsHaveTheDaemonsSortFields) {
    std::vector<int> fields;
    for (int column = -1; column <= Model::ColumnCount; ++column) {
        fields.push_back(Model::sortFieldFromColumnId(column));
    }
    EXPECT_EQ(fields, (std::vector<int>{7, 7, 0, 1, 2, 3, 4, 5, 6, 7}));
}

}  // namespace
