// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/main/ApplicationsTableModel.h"

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QIcon>
#include <QPersistentModelIndex>
#include <QSignalSpy>
#include <utility>


namespace {

using Model = ApplicationsTableModel;
using Asked = std::vector<std::pair<int, int>>;

constexpr std::int64_t mebibyte = 1 << 20;

std::shared_ptr<const TotalStatisticInfo> totals(std::int64_t received, std::int64_t sent) {
    return TotalStatisticInfo::statisticInfoWithTotalReceivedBytes(received, sent, 0, 0, 0, 0, QDateTime());
}

/** A model over a cursor whose application at index i is called "App i"; `m_Missing` cannot be fetched. */
class ApplicationsTableModelTest : public testing::Test {
  protected:
    std::vector<std::shared_ptr<const ApplicationInfo>> fetch(int first, int count) {
        m_Asked.emplace_back(first, count);
        std::vector<std::shared_ptr<const ApplicationInfo>> rows;
        for (int i = first; i < first + count; ++i) {
            rows.push_back(i == m_Missing ? nullptr : application(i));
        }
        return rows;
    }

    std::shared_ptr<const ApplicationInfo> application(int i) const {
        return ApplicationInfo::appInfoWithId(i, QString("App %1").arg(i), "/opt/Foo.app/bin/foo",
                                              i * mebibyte, mebibyte / 2, 0, 0, 0, 0, m_Seen, m_Seen);
    }

    QString text(int row, int column) const { return m_Model.index(row, column).data().toString(); }

    QStringList texts(int row) const {
        QStringList all;
        for (int column = 0; column < Model::ColumnCount; ++column) {
            all.append(text(row, column));
        }
        return all;
    }

    const QDateTime m_Seen{QDate(2026, 7, 26), QTime(10, 0)};
    int m_Missing = -1;
    Asked m_Asked;
    Model m_Model{[this](auto first, auto count) { return fetch(first, count); }};
    QAbstractItemModelTester m_Tester{&m_Model, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

TEST_F(ApplicationsTableModelTest, EveryRowHasAnIconTheWholePathAndItsShareOfTheTotals) {
    m_Model.refresh(12, totals(10 * mebibyte, mebibyte));
    m_Model.fetchRows(0, 12);
    for (const int row : {0, 12}) {
        const auto icon = m_Model.index(row, Model::IconColumn).data(Qt::DecorationRole).value<QIcon>();
        EXPECT_FALSE(icon.pixmap(16).isNull());
    }
    EXPECT_EQ(m_Model.index(12, Model::PathColumn).data(Qt::ToolTipRole), "/opt/Foo.app/bin/foo");
    EXPECT_EQ(m_Model.index(6, Model::ReceivedColumn).data(Model::ShareRole), 0.5);
    EXPECT_EQ(m_Model.index(12, Model::ReceivedColumn).data(Model::ShareRole), 1.0);  // totals lag behind
}

TEST_F(ApplicationsTableModelTest, AsksForEachVisibleRowOnceARefresh) {
    m_Model.refresh(1000, nullptr);
    EXPECT_EQ(m_Asked, Asked());
    m_Model.fetchRows(0, 20);
    m_Model.fetchRows(5, 30);  // scrolled down
    m_Model.fetchRows(0, 20);  // and back
    EXPECT_EQ(m_Asked, (Asked{{0, 20}, {20, 10}}));

    m_Model.fetchRows(50, 50);
    m_Model.fetchRows(40, 60);
    EXPECT_EQ(m_Asked, (Asked{{0, 20}, {20, 10}, {49, 1}, {39, 10}, {50, 10}}));

    m_Asked.clear();
    m_Model.refresh(1000, nullptr);
    m_Model.fetchRows(990, 1100);
    EXPECT_EQ(m_Asked, (Asked{{989, 11}}));
    EXPECT_NE(texts(5), QStringList(Model::ColumnCount, ""));  // for who types its name
    m_Model.orderChanged();
    EXPECT_EQ(texts(5), QStringList(Model::ColumnCount, ""));  // what it showed is elsewhere now
}

TEST_F(ApplicationsTableModelTest, RowsComeAndGoAtTheEndOnly) {
    QSignalSpy resets(&m_Model, &QAbstractItemModel::modelReset);
    QSignalSpy insertions(&m_Model, &QAbstractItemModel::rowsInserted);
    QSignalSpy removals(&m_Model, &QAbstractItemModel::rowsRemoved);
    m_Model.refresh(10, nullptr);
    const QPersistentModelIndex chosen = m_Model.index(7, 0);
    m_Model.refresh(12, nullptr);
    m_Model.refresh(8, nullptr);
    EXPECT_EQ(chosen.row(), 7);
    m_Model.refresh(8, nullptr);
    m_Model.refresh(3, nullptr);
    EXPECT_FALSE(chosen.isValid());
    ASSERT_EQ(insertions.size(), 2);
    EXPECT_EQ(insertions[1].mid(1), (QVariantList{11, 12}));
    ASSERT_EQ(removals.size(), 2);
    EXPECT_EQ(removals[0].mid(1), (QVariantList{9, 12}));
    EXPECT_TRUE(resets.isEmpty());
}

TEST_F(ApplicationsTableModelTest, ARowThatCannotBeFetchedIsEmptyAndNotAskedForAgain) {
    m_Missing = 1;
    m_Model.refresh(3, nullptr);
    m_Model.fetchRows(0, 3);
    EXPECT_EQ(texts(2), QStringList(Model::ColumnCount, ""));
    EXPECT_EQ(text(3, Model::NameColumn), "App 2");
    m_Model.fetchRows(0, 3);
    EXPECT_EQ(m_Model.applicationForRow(2), nullptr);
    EXPECT_EQ(m_Asked, (Asked{{0, 3}}));
}

TEST_F(ApplicationsTableModelTest, AChosenRowOutOfSightIsFetchedAlone) {
    m_Model.refresh(100, nullptr);
    EXPECT_EQ(m_Model.applicationForRow(80)->name(), "App 79");
    EXPECT_EQ(m_Asked, (Asked{{79, 1}}));
    EXPECT_EQ(m_Model.applicationForRow(0), nullptr);
    EXPECT_EQ(m_Model.applicationForRow(-1), nullptr);
    EXPECT_EQ(m_Model.applicationForRow(101), nullptr);
}

TEST_F(ApplicationsTableModelTest, FailuresLeaveTheTotalsRowAtZeroOrNoRowAtAll) {
    m_Model.refresh(5, totals(mebibyte, mebibyte));
    m_Model.refresh(0, nullptr);  // the count could not be asked for
    EXPECT_EQ(m_Model.rowCount(), 1);
    EXPECT_EQ(text(0, Model::ReceivedColumn), "0.000");
    EXPECT_EQ(text(0, Model::SentColumn), "0.000");
    EXPECT_NE(text(0, Model::LastActivityColumn), "");
    m_Model.refresh(-1, nullptr);  // there is no link
    EXPECT_EQ(m_Model.rowCount(), 0);
}

}  // namespace
