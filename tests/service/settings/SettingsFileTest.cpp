// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/settings/SettingsFile.h"

#include <gtest/gtest.h>

#include <climits>
#include <filesystem>
#include <fstream>
#include <future>
#include <optional>
#include <stop_token>
#include <thread>
#include <vector>

#include "service/settings/SettingsFollower.h"
#include "tests/support/TemporaryFolder.h"

using namespace service;
namespace fs = std::filesystem;

namespace {

struct SettingsFileTest : testing::Test {
    void write(const std::string& content) const { m_Folder.write("settings.plist", content); }
    void writeDictionary(const std::string& content) const {
        write("<plist version=\"1.0\"><dict>" + content + "</dict></plist>");
    }

    TemporaryFolder m_Folder;
    fs::path folder = m_Folder.path();
    fs::path path = folder / "settings.plist";
};

std::string months(const std::string& value) {
    return "<key>CaptureInterval</key>" + value;
}

Settings keeping(int months) {
    Settings settings;
    settings.months = months;
    return settings;
}

std::string list(const std::string& mode, const std::string& elements) {
    return "<key>AllowDenyAppsMode</key>" + mode + "<key>AllowDenyApps</key><array>" + elements + "</array>";
}

}  // namespace

TEST_F(SettingsFileTest, WhatIsAbsentOrMakesNoSenseIsTheDefault) {
    const std::string two = "<string>/a</string><string>/b</string>";
    struct Case {
        std::string content, words;
    };
    for (const auto& [content, words] :
         {Case{"", "records all applications, keeps 12 months"},
          Case{months("<string>3</string>") + list("<true/>", two),
               "records only 2 applications, keeps 12 months"},
          Case{months("<real>1.9</real>") + list("<integer>2</integer>", two),
               "records all applications but 2, keeps 1 month"},
          Case{list("<integer>0</integer>", two), "records all applications, keeps 12 months"},
          Case{list("<integer>2</integer>", two + "<integer>1</integer>"),
               "records all applications, keeps 12 months"},
          Case{list("<integer>1</integer>", ""), "records no application, keeps 12 months"},
          Case{list("<string>1</string>", two), "records all applications, keeps 12 months"},
          Case{months("<integer>0</integer>") + list("<integer>7</integer>", two),
               "records all applications (there is no mode 7), keeps everything (months to keep: 0)"}}) {
        writeDictionary(content);
        EXPECT_EQ(SettingsFile(path).read().inWords(), words) << content;
    }
}

TEST_F(SettingsFileTest, AFileThatCannotBeReadChangesNothingAndOneThatIsGoneEverything) {
    SettingsFile file(path);
    const std::vector<std::string> broken{"", "<plist version=\"1.0\"><dict>", "bplist00",
                                          "<plist version=\"1.0\"><array/></plist>",
                                          "<plist version=\"1.0\"><string>a</string></plist>"};
    for (const std::string& content : broken) {
        write(content);
        EXPECT_EQ(file.read().retention(), std::nullopt)
            << "what was dropped does not come back: " << content;
    }
    fs::remove(path);
    const std::string defaults = file.read().inWords();
    writeDictionary(months("<integer>3</integer>"));
    EXPECT_EQ(file.read().months, 3);
    for (const std::string& content : broken) {
        write(content);
        EXPECT_EQ(file.read().months, 3) << content;
    }
    fs::remove(path);
    fs::create_directory(path);
    EXPECT_EQ(file.read().months, 3) << "a folder";
    fs::remove(path);
    EXPECT_EQ(file.read().inWords(), defaults);
}

TEST_F(SettingsFileTest, ListedPathsLeadWhereTheirLinksLead) {
    const fs::path real = fs::canonical(folder);
    fs::create_directories(real / "lib/Web-2");
    std::ofstream(real / "lib/browser-esr") << "";
    fs::create_symlink("lib/browser-esr", folder / "browser");
    fs::create_symlink("lib", folder / "bin");
    fs::create_symlink(real / "lib/Web-2", folder / "Web.app");
    const Settings settings{
        .months = 12,
        .mode = 1,
        .listed = {folder / "browser", folder / "bin/not-there-now", folder / "Web.app/", "(unknown)"}};
    const RecordingRule rule = settings.rule();
    for (const fs::path& executable :
         {real / "lib/browser-esr", real / "lib/not-there-now", real / "lib/Web-2/web"}) {
        EXPECT_TRUE(rule.records(executable)) << executable;
    }
    EXPECT_TRUE(rule.records("(unknown)"));
    EXPECT_FALSE(rule.records(real / "lib/other"));
}

TEST_F(SettingsFileTest, ListsOfLongPathsAreQuicklyReadAndStopWhenAsked) {
    std::string path = folder;
    for (int i = 0; i < 1900; ++i) {
        path += "/.";
    }
    const std::string beyond(PATH_MAX, '/');
    Settings settings{.months = 12, .mode = 1, .listed = std::vector<std::string>(1000, path + "/missing")};
    settings.listed.push_back(beyond + "a");
    const auto begin = std::chrono::steady_clock::now();
    const RecordingRule rule = settings.rule();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(3));
    EXPECT_TRUE(rule.records(fs::canonical(folder) / "missing"));
    EXPECT_TRUE(rule.records(beyond + "a"));

    std::stop_source stop;
    stop.request_stop();
    EXPECT_FALSE(settings.rule(stop.get_token()).records(beyond + "a"));
}

TEST_F(SettingsFileTest, TheEndOfTheFollowerStopsWhatAppliesASetting) {
    std::promise<void> applying;
    bool isStopped = false;
    std::optional<SettingsFollower> follower;
    SettingsFile file(path);
    follower.emplace(file, [&](const Settings&, const std::stop_token& stop) {
        applying.set_value();
        for (int i = 0; i < 3000 && !stop.stop_requested(); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        isStopped = stop.stop_requested();
    });
    follower->noteChange();
    applying.get_future().wait();
    follower.reset();
    EXPECT_TRUE(isStopped);
}

TEST_F(SettingsFileTest, MonthsAreThirtyDaysAndWithoutEndBelowOne) {
    EXPECT_EQ(keeping(2).retention(), std::chrono::days{60});
    EXPECT_EQ(keeping(INT_MAX).retention(), std::chrono::days{30LL * INT_MAX});
    EXPECT_EQ(keeping(0).retention(), std::nullopt);
}
