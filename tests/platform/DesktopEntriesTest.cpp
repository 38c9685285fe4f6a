// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DesktopEntries.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace {

class DesktopEntriesTest : public testing::Test {
  protected:
    void add(const QString& folder, const QString& command, const QString& icon) {
        QDir(m_Folder.path()).mkpath(folder);
        write(folder + QString("/%1.desktop").arg(++m_Count),
              "[Desktop Entry]\nType=Application\nExec=" + command + "\nIcon=" + icon +
                  "\n[Desktop Action new]\nExec=/usr/bin/courier\nIcon=wrong\n");
    }

    QString write(const QString& name, const QString& text = {}) {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text.toUtf8());
        return path(name);
    }

    QString path(const QString& name) const { return m_Folder.filePath(name); }
    DesktopEntries entries() const { return DesktopEntries({path("own"), path("system")}); }

    QTemporaryDir m_Folder;
    int m_Count = 0;
};

TEST_F(DesktopEntriesTest, FindsTheProgramThatAnEntryStarts) {
    add("system", "firefox %u", "firefox");
    add("system/nested", "/opt/player/player --kiosk %F", "/opt/player/player.png");
    add("system", "env LANG=C DEBUG= /usr/bin/mail", "mail");
    add("system", "\"/opt/My Game/game\" %U", "game");
    const DesktopEntries found = entries();
    EXPECT_EQ(found.iconFor("/usr/lib/firefox/firefox"), "firefox");
    EXPECT_EQ(found.iconFor("/opt/player/player"), "/opt/player/player.png");
    EXPECT_EQ(found.iconFor("/usr/bin/mail"), "mail");
    EXPECT_EQ(found.iconFor("/opt/My Game/game"), "game");
    EXPECT_EQ(found.iconFor("/usr/bin/env"), "");
    EXPECT_EQ(found.iconFor("/usr/bin/courier"), "");
    EXPECT_EQ(found.iconFor(""), "");
}

TEST_F(DesktopEntriesTest, FollowsALinkToWhatRuns) {
    QFile target(write("editor.basic"));
    target.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
    ASSERT_TRUE(QFile::link(target.fileName(), path("editor")));
    add("system", path("editor"), "editor");
    EXPECT_EQ(entries().iconFor(target.fileName()), "editor");
}

TEST_F(DesktopEntriesTest, AProgramThatStartsOthersIsNotOneOfThem) {
    add("system", "python3 /usr/share/tool/tool.py", "tool");
    add("system", "sh -c 'exec tool'", "tool");
    add("system", "flatpak run org.example.Tool", "tool");
    for (const QString name : {"/usr/bin/python3", "/usr/bin/sh", "/usr/bin/flatpak"}) {
        EXPECT_EQ(entries().iconFor(name), "");
    }
}

TEST_F(DesktopEntriesTest, TheExactPathThenThePlainCommandThenTheEarlierFolderWins) {
    add("system", "office --writer", "writer");
    add("system", "office %U", "office");
    add("system", "/opt/new/office", "new-office");
    add("own", "browser", "own-browser");
    add("system", "browser", "browser");
    const DesktopEntries found = entries();
    EXPECT_EQ(found.iconFor("/usr/bin/office"), "office");
    EXPECT_EQ(found.iconFor("/opt/new/office"), "new-office");
    EXPECT_EQ(found.iconFor("/usr/bin/browser"), "own-browser");
}

}  // namespace
