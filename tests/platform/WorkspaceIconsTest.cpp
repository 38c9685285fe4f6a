// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/WorkspaceIcons.h"

#include <gtest/gtest.h>

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

}  // namespace
