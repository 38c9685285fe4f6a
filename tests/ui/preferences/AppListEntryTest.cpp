// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/preferences/AppListEntry.h"

#include <gtest/gtest.h>

namespace {

TEST(AppListEntry, TheNameIsThatOfTheFirstBundleInThePath) {
    const QString cases[][2] = {{"/Applications/Example.app", "Example"},
                                {"/Applications/Example.app/Contents/MacOS/other", "Example"},
                                {"/Library/Frameworks/Sound.framework", "Sound"},
                                {"/a/Plug.bundle/Helper.app", "Helper"},
                                {"/usr/bin/curl", "curl"},
                                {"/usr/bin/", ""}};
    for (const auto& [path, name] : cases) {
        EXPECT_EQ(AppListEntry::nameFromBundlePath(path), name) << path.toStdString();
        EXPECT_FALSE(AppListEntry::nameFromBundlePath(path).isNull());
    }
    for (const QString& path : {QString(), QString("curl"), QString("Example.app")}) {
        EXPECT_TRUE(AppListEntry::nameFromBundlePath(path).isNull()) << path.toStdString();
    }
}

}  // namespace
