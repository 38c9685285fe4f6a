// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/LoginItem.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace {

class LoginItemTest : public testing::Test {
  protected:
    void SetUp() override {
        for (const auto& [variable, folder] :
             {std::pair("XDG_CONFIG_HOME", "own"), {"XDG_CONFIG_DIRS", "system"}}) {
            m_Before.append(qgetenv(variable));
            qputenv(variable, m_Folder.filePath(folder).toUtf8());
        }
    }

    void TearDown() override {
        qputenv("XDG_CONFIG_HOME", m_Before[0]);
        m_Before[1].isEmpty() ? qunsetenv("XDG_CONFIG_DIRS") : qputenv("XDG_CONFIG_DIRS", m_Before[1]);
    }

    QString path(const QString& folder) const {
        return m_Folder.filePath(folder + "/autostart/nevtora-meter.desktop");
    }

    QString read(const QString& folder) const {
        QFile file(path(folder));
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

    void write(const QString& folder, const QByteArray& keys) const {
        QDir().mkpath(QFileInfo(path(folder)).path());
        QFile file(path(folder));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("[Desktop Entry]\nType=Application\n" + keys);
    }

    QTemporaryDir m_Folder;
    QByteArrayList m_Before;
};

TEST_F(LoginItemTest, WithoutAnEntryOfTheSystemsTheUserHasOneOrNone) {
    EXPECT_FALSE(LoginItem::isEnabled());
    EXPECT_TRUE(LoginItem::setEnabled(true));
    EXPECT_TRUE(LoginItem::isEnabled());
    EXPECT_TRUE(read("own").contains("\nExec=\"" + QCoreApplication::applicationFilePath() + "\"\n"))
        << qPrintable(read("own"));
    EXPECT_TRUE(LoginItem::setEnabled(false));
    EXPECT_FALSE(QFile::exists(path("own")));
}

TEST_F(LoginItemTest, TheSystemsEntryIsHiddenAndShownAgain) {
    write("system", "Exec=sh\nTryExec=sh\n[Desktop Action other]\nHidden=true\n");
    EXPECT_TRUE(LoginItem::isEnabled());
    EXPECT_TRUE(LoginItem::setEnabled(false));
    EXPECT_FALSE(LoginItem::isEnabled());
    EXPECT_TRUE(read("own").contains("\nHidden=true\n"));
    EXPECT_TRUE(LoginItem::setEnabled(true));
    EXPECT_TRUE(LoginItem::isEnabled());
    EXPECT_FALSE(QFile::exists(path("own")));
}

TEST_F(LoginItemTest, AnEntryThatTheUserEditedStaysWhileItDoesWhatIsWanted) {
    write("own", "Exec=sh\nX-Delay=10\n");
    EXPECT_TRUE(LoginItem::setEnabled(true));
    EXPECT_TRUE(read("own").contains("X-Delay"));
    write("own", "Exec=sh\nX-GNOME-Autostart-enabled=false\n");
    EXPECT_FALSE(LoginItem::isEnabled());
    write("own", "Exec=/nowhere/meter\nTryExec=/nowhere/meter\n");
    EXPECT_FALSE(LoginItem::isEnabled()) << "a program that has been removed";
    EXPECT_TRUE(LoginItem::setEnabled(true));
    EXPECT_TRUE(LoginItem::isEnabled());
}

TEST_F(LoginItemTest, SaysThatAnEntryCannotBeWritten) {
    QFile inTheWay(m_Folder.filePath("own"));
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    EXPECT_FALSE(LoginItem::setEnabled(true));
}

}  // namespace
