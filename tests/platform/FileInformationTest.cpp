// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/FileInformation.h"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QSignalSpy>
#include <QUrl>

#include "tests/support/PrivateBus.h"

/** Stands in for the file manager. */
class FileManager : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

  public slots:
    void ShowItemProperties(const QStringList& uris, const QString& startupId) {
        emit asked(uris, startupId);
    }

  signals:
    void asked(const QStringList& uris, const QString& startupId);
};

namespace {

TEST(FileInformation, AsksTheFileManagerWithAProperUriAndTheTokenOnce) {
    if (PrivateBus::address().isEmpty()) {
        GTEST_SKIP() << "no dbus-daemon here";
    }
    FileInformation::showForFile("/nobody/hears/this");

    FileManager manager;
    QSignalSpy questions(&manager, &FileManager::asked);
    QDBusConnection bus = QDBusConnection::connectToBus(PrivateBus::address(), "manager");
    ASSERT_TRUE(
        bus.registerObject("/org/freedesktop/FileManager1", &manager, QDBusConnection::ExportAllSlots));
    ASSERT_TRUE(bus.registerService("org.freedesktop.FileManager1"));
    qputenv("XDG_ACTIVATION_TOKEN", "token");
    const QString path = QString::fromUtf8("/opt/50% größer/#1 ?;%20");
    FileInformation::showForFile(path);
    FileInformation::showForFile("/usr/bin/env");
    while (questions.size() < 2 && questions.wait()) {
    }
    ASSERT_EQ(questions.size(), 2);
    const QStringList uris = questions[0][0].toStringList();
    EXPECT_EQ(uris, QStringList("file:///opt/50%25%20gr%C3%B6%C3%9Fer/%231%20%3F;%2520"));
    EXPECT_EQ(QUrl(uris.value(0)).toLocalFile(), path);
    EXPECT_EQ(questions[0][1].toString(), "token");
    EXPECT_EQ(questions[1][1].toString(), "");

    QDBusConnection::disconnectFromBus("manager");
}

TEST(FileInformation, TheFinderScriptHoldsThePathAsALiteral) {
    EXPECT_TRUE(FileInformation::finderScript("/Applications/%1 \\ \"quoted\".app")
                    .contains("\"/Applications/%1 \\\\ \\\"quoted\\\".app\"\n"));
}

}  // namespace

#include "FileInformationTest.moc"
