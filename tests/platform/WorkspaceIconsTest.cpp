// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/WorkspaceIcons.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>

#include "platform/TileIcon.h"

namespace {

TEST(WorkspaceIcons, NothingIsEverBlankEvenWithoutAnIconTheme) {
    QIcon::setThemeSearchPaths({});
    QIcon::setFallbackSearchPaths({});
    for (const QString path : {"/bin/sh", "/usr", "/no/such/program", ""}) {
        EXPECT_FALSE(WorkspaceIcons::iconForFile(path).pixmap(16).isNull()) << path.toStdString();
    }
    for (const QString type : {"bundle", "no-such-type", ""}) {
        EXPECT_FALSE(WorkspaceIcons::iconForFileType(type).pixmap(16).isNull()) << type.toStdString();
    }
}

TEST(WorkspaceIcons, TheKernelAndTheFolderOfApplicationsHaveIconsOfTheirOwn) {
    const auto picture = [](const QIcon& icon) { return icon.pixmap(16).toImage(); };
    const QTemporaryDir data;
    qputenv("XDG_DATA_HOME", data.path().toUtf8());
    ASSERT_TRUE(QDir(data.path()).mkdir("applications"));
    const QIcon folder = WorkspaceIcons::iconForFile(data.filePath("applications"));
    EXPECT_EQ(picture(folder), picture(TileIcon::allApplications()));
    EXPECT_EQ(picture(WorkspaceIcons::iconForFileType("bundle")), picture(TileIcon::kernel()));
}

TEST(WorkspaceIcons, ManyPathsDoNotPileUp) {
    const QString path = QStringLiteral("/no/such/program%1");
    const qint64 first = WorkspaceIcons::iconForFile(path.arg(0)).cacheKey();
    EXPECT_EQ(WorkspaceIcons::iconForFile(path.arg(0)).cacheKey(), first);
    for (int i = 1; i < 5000; ++i) {
        WorkspaceIcons::iconForFile(path.arg(i));
    }
    EXPECT_NE(WorkspaceIcons::iconForFile(path.arg(0)).cacheKey(), first);
}

}  // namespace
