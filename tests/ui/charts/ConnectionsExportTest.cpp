// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/charts/ConnectionsExport.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QMessageBox>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimeZone>
#include <memory>

#include "libs/utils/src/StringUtils.h"
#include "ui/charts/ConnectionsExportDialog.h"

namespace {

IpAddress endpoint(const char* decimalBytes, std::int32_t family, std::uint16_t port) {
    IpAddress address = stringToIp(decimalBytes, family);
    address.port = port;
    return address;
}

/** Exports from a cursor whose connections have the id of their index; from `m_Lost` on there are none. */
class ConnectionsExportTest : public testing::Test {
  protected:
    std::vector<std::shared_ptr<const ConnectionInfo>> fetch(int first, int count) {
        m_Slices.push_back(count);
        std::vector<std::shared_ptr<const ConnectionInfo>> rows;
        for (int i = first; i < first + count; ++i) {
            rows.push_back(i >= m_Lost ? nullptr
                                       : ConnectionInfo::connectionInfoWithId(i, 1, {}, {}, "Input", 2, 1, 17,
                                                                              i, 0, "", ""));
        }
        return rows;
    }

    ConnectionsExport::Fetch fetcher() {
        return [this](auto first, auto count) { return fetch(first, count); };
    }

    QStringList files() const { return QDir(m_Folder.path()).entryList(QDir::Files | QDir::Hidden); }

    QByteArray contents() const {
        QFile file(m_Path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir m_Folder;
    QString m_Path = m_Folder.filePath("out.csv");
    int m_Lost = 1 << 30;
    std::vector<int> m_Slices;
};

TEST_F(ConnectionsExportTest, ARecordHasLocalTimesIntegersAndTheUsualNotation) {
    const QDateTime start(QDate(2026, 7, 26), QTime(10, 0), QTimeZone("Europe/Berlin"));
    const auto connection = ConnectionInfo::connectionInfoWithId(
        1, 2, start, start.addDays(180), "a \"quoted\", direction", 10, 1, 6, 1LL << 40, 7, "", "",
        endpoint("32.1.13.184.0.0.0.0.0.0.0.0.0.0.0.1", IpAddress::IPv6, 443),
        endpoint("192.0.2.7", IpAddress::IPv4, 51234));
    EXPECT_EQ(ConnectionsExport::record(*connection),
              "2026-07-26T10:00:00+02:00,2027-01-22T10:00:00+01:00,TCP,\"a \"\"quoted\"\", direction\","
              "1099511627776,7,192.0.2.7,51234,2001:db8::1,443\r\n");
    EXPECT_EQ(ConnectionsExport::header().count(','), 9);
}

TEST_F(ConnectionsExportTest, WritesEveryRowInSlicesOfTheEventLoop) {
    ConnectionsExport exported(fetcher(), 1000);
    QSignalSpy progress(&exported, &ConnectionsExport::progressed);
    QSignalSpy finished(&exported, &ConnectionsExport::finished);
    exported.start(m_Path);
    EXPECT_TRUE(m_Slices.empty());
    ASSERT_TRUE(finished.wait());
    EXPECT_EQ(m_Slices.size(), 8U);
    EXPECT_EQ(progress.last().front(), 1000);
    const QByteArray text = contents();
    EXPECT_TRUE(text.startsWith(ConnectionsExport::header() + ",,UDP,Input,0,0,,,,\r\n"));
    EXPECT_TRUE(text.endsWith(",,UDP,Input,999,0,,,,\r\n"));
    EXPECT_EQ(text.count("\r\n"), 1001);
}

TEST_F(ConnectionsExportTest, WhatEndsEarlyLeavesNoFileAndTellsWhy) {
    m_Lost = 300;
    QWidget window;
    for (const QString& path : {m_Path, m_Folder.filePath("no folder/out.csv")}) {
        new ConnectionsExportDialog(&window, path, fetcher(), 1000);
        QTRY_VERIFY(window.findChild<QMessageBox*>() != nullptr);
        auto* box = window.findChild<QMessageBox*>();
        EXPECT_FALSE(box->informativeText().isEmpty());
        EXPECT_EQ(box->informativeText().contains("connection 301 of 1000"), path == m_Path);
        delete box;
        QTRY_VERIFY(window.findChild<ConnectionsExportDialog*>() == nullptr);
        EXPECT_EQ(files(), QStringList());
    }
}

TEST_F(ConnectionsExportTest, CancellingKeepsTheFileThatWasThere) {
    QFile earlier(m_Path);
    ASSERT_TRUE(earlier.open(QIODevice::WriteOnly) && earlier.write("earlier") == 7);
    earlier.close();
    QWidget window;
    auto* dialog = new ConnectionsExportDialog(&window, m_Path, fetcher(), 100'000);
    QTRY_VERIFY(m_Slices.size() > 3);
    QTest::keyClick(dialog, Qt::Key_Escape);
    QTRY_VERIFY(window.findChild<ConnectionsExportDialog*>() == nullptr);
    EXPECT_EQ(files(), QStringList("out.csv"));
    EXPECT_EQ(contents(), "earlier");
    EXPECT_EQ(window.findChild<QMessageBox*>(), nullptr);
}

}  // namespace
