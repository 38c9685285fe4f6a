// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/ConfigStorage.h"

#include <gtest/gtest.h>

#include "daemon/DaemonConnection.h"
#include "tests/support/DaemonTest.h"
#include "tests/support/TemporaryFolder.h"

namespace {

class ConfigStorageTest : public DaemonTest {
  protected:
    ConfigStorage open() const { return {m_Folder.file("system"), m_Folder.file("user")}; }

    TemporaryFolder m_Folder;
};

TEST_F(ConfigStorageTest, ReadsDefaultsWhereThereIsNothingAndWritesNothing) {
    ConfigStorage config = open();
    EXPECT_EQ(config.maxStorageTimeInMonths(), 12);
    EXPECT_EQ(config.allowDenyAppsMode(), 0);
    EXPECT_EQ(config.allowDenyAppsList(), std::nullopt);
    EXPECT_TRUE(config.isAutostarted());
    config.setMaxStorageTimeInMonths(12);
    EXPECT_FALSE(config.isModified());
    EXPECT_EQ(m_Folder.count(), 0U);
    config.setAllowDenyAppsList({});
    EXPECT_TRUE(config.isModified()) << "an empty list is not none";
    EXPECT_TRUE(config.isSystemConfigWritable());
    EXPECT_FALSE(ConfigStorage(m_Folder.file("none/system"), m_Folder.file("user")).isSystemConfigWritable());
}

TEST_F(ConfigStorageTest, AnnouncesEachSaveOfAChangedSystemSettingOnce) {
    LinkPeer daemon({}, daemonPort);
    ASSERT_TRUE(DaemonConnection::sharedConnection()->isValid());
    ConfigStorage config = open();
    config.setAutostarted(false);
    config.save();
    EXPECT_EQ(m_Folder.count(), 1U) << "the user's file only";
    config.setMaxStorageTimeInMonths(6);
    config.save();
    config.save();
    config.setAllowDenyAppsMode(2);
    config.setAllowDenyAppsList({"/Applications/Äpp.app", "/usr/bin/curl"});
    config.save();
    DaemonConnection::sharedConnection()->startCleanDataBase();  // a mark behind all of them

    std::vector<int> events;
    for (const auto& request : daemon.waitForRequests(3)) {
        events.push_back(intAt(request.body, 0));
    }
    EXPECT_EQ(events, (std::vector<int>{4, 4, 1}));
    const ConfigStorage again = open();
    EXPECT_FALSE(again.isAutostarted());
    EXPECT_EQ(again.maxStorageTimeInMonths(), 6);
    EXPECT_EQ(again.allowDenyAppsMode(), 2);
    EXPECT_EQ(again.allowDenyAppsList(), (QStringList{"/Applications/Äpp.app", "/usr/bin/curl"}));
}

TEST_F(ConfigStorageTest, KeepsWhatItDoesNotUnderstandAndDropsWhatIsNotSaved) {
    m_Folder.write("system",
                   "<plist><dict><key>CaptureInterval</key><string>6</string><key>AllowDenyApps</key>"
                   "<array><string>/a</string><true/></array><key>Other</key><real>2</real></dict></plist>");
    ConfigStorage config = open();
    EXPECT_EQ(config.maxStorageTimeInMonths(), 12);
    EXPECT_EQ(config.allowDenyAppsList(), std::nullopt);
    config.setAllowDenyAppsList({"/a"});
    EXPECT_EQ(config.allowDenyAppsList(), QStringList("/a"));
    config.setAllowDenyAppsMode(1);
    config.save();
    config.setAllowDenyAppsMode(2);
    config.reload();
    EXPECT_EQ(config.allowDenyAppsMode(), 1);
    EXPECT_FALSE(config.isModified());
    EXPECT_NE(m_Folder.read("system").find("<real>2</real>"), std::string::npos);
    EXPECT_NE(m_Folder.read("system").find("<string>6</string>"), std::string::npos);
}

}  // namespace
