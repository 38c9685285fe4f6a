// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/QV_Config.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <memory>

#include "config/QV_ConfigNS.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using Handle = std::unique_ptr<QV_Config, decltype(&QV_CloseConfig)>;

Handle openConfig(const std::string& path, int createIfNotExist) {
    return {QV_OpenConfig(path.c_str(), createIfNotExist), QV_CloseConfig};
}

const std::string mixed =
    "<plist><dict><key>mixed</key><array><integer>1</integer><string>x</string><integer>3</integer></array>"
    "<key>word</key><string>abcdef</string></dict></plist>";

TEST(QV_Config, NamesBothDefaultFiles) {
    setenv("HOME", "/Users/a", 1);
    EXPECT_STREQ(QV_GetDefaultAppConfigFileName("Nevtora Meter", 0), "/Users/a/.Nevtora Meter.conf.plist");
    EXPECT_STREQ(QV_GetDefaultAppConfigFileName("Nevtora Meter", 1),
                 "/Library/Preferences/com.qv.Nevtora Meter.plist");
    EXPECT_EQ(strlen(QV_GetDefaultAppConfigFileName(std::string(2000, 'x').c_str(), 1)), 1024U);
    unsetenv("HOME");
    EXPECT_EQ(QV_GetDefaultAppConfigFileName("A", 0),
              std::string(getpwuid(getuid())->pw_dir) + "/.A.conf.plist");
}

TEST(QV_Config, OpensAnEmptyStoreOnlyWhereNothingCanBeRead) {
    const TemporaryFolder folder;
    EXPECT_EQ(openConfig(folder.file("none"), 0), nullptr);
    const Handle created = openConfig(folder.file("none"), 1);
    EXPECT_EQ(folder.count(), 0U) << "nothing before it is saved";
    EXPECT_EQ(QV_SaveConfig(created.get()), 1);
    EXPECT_NE(openConfig(folder.file("none"), 0), nullptr);

    const std::string text = folder.write("text", "no property list");
    EXPECT_EQ(openConfig(text, 1), nullptr);
    EXPECT_EQ(QV_ConfigNS::configWithFileName(text, false, false), nullptr);
    EXPECT_NE(QV_ConfigNS::configWithFileName(text, true, false), nullptr)
        << "the object face takes its place";
    const Handle array = openConfig(folder.write("array", "<plist><array><true/></array></plist>"), 0);
    EXPECT_EQ(QV_SetIntParam(array.get(), "a", 1), 0) << "no dictionary";
    EXPECT_EQ(QV_SaveConfig(array.get()), 1) << "kept as it is";
}

TEST(QV_Config, FailsOnTheWrongTypeAndOnNull) {
    const TemporaryFolder folder;
    const Handle config = openConfig(folder.write("f", mixed), 0);
    int values[] = {8, 8, 8};
    EXPECT_EQ(QV_GetIntParam(config.get(), "word", values), 0);
    EXPECT_EQ(values[0], 8);
    EXPECT_EQ(QV_GetIntArrayParam(config.get(), "mixed", values), 0);
    EXPECT_EQ(values[0], 1) << "the elements before the wrong one";
    EXPECT_EQ(values[1], 8);
    EXPECT_EQ(QV_GetArrayParamSize(config.get(), "word"), -1);
    char* buffers[] = {nullptr, nullptr, nullptr};
    EXPECT_EQ(QV_GetStringArrayParam(config.get(), "mixed", buffers), 0);
    QV_SetStringArrayParam(config.get(), "none", nullptr, 0);
    EXPECT_EQ(QV_GetStringArrayParam(config.get(), "none", nullptr), 1);
    EXPECT_EQ(QV_OpenConfig(nullptr, 1), nullptr);
    EXPECT_EQ(QV_ReloadConfig(nullptr) + QV_SaveConfig(nullptr) + QV_SetIntParam(nullptr, "a", 1), 0);
    EXPECT_EQ(QV_GetStringArrayParamStringSize(nullptr, "a", 0), -1);
    QV_CloseConfig(nullptr);
}

TEST(QV_Config, CopiesTextUpToTheMaximumAndTerminatesIt) {
    const TemporaryFolder folder;
    const Handle config = openConfig(folder.write("f", mixed), 0);
    std::string buffer = "........";
    EXPECT_EQ(QV_GetStringParam(config.get(), "word", buffer.data(), 3), 1);
    EXPECT_EQ(buffer, std::string("abc\0....", 8));
    EXPECT_EQ(QV_GetStringParam(config.get(), "word", buffer.data(), 100), 1);
    EXPECT_EQ(buffer, std::string("abcdef\0.", 8));
    EXPECT_EQ(QV_GetStringParam(config.get(), "word", buffer.data(), -1), 0);
}

TEST(QV_Config, KeepsContentsThatAReloadOrASaveCannotChange) {
    const TemporaryFolder folder;
    const std::string path = folder.write("f", mixed);
    const Handle config = openConfig(path, 0);
    QV_SetIntParam(config.get(), "new", 1);
    folder.write("f", "<plist><dict/></plist>trailing");
    EXPECT_EQ(QV_ReloadConfig(config.get()), 0);
    EXPECT_EQ(QV_IsParamExits(config.get(), "new"), 1);
    for (const std::string& unreadable : {std::string("\x01"), std::string(5 << 20, 'x')}) {
        QV_SetStringParam(config.get(), "new", unreadable.c_str());
        EXPECT_EQ(QV_SaveConfig(config.get()), 0);
    }
    EXPECT_EQ(folder.read("f"), "<plist><dict/></plist>trailing");
    folder.write("f", mixed);
    EXPECT_EQ(QV_ReloadConfig(config.get()), 1);
    EXPECT_EQ(QV_IsParamExits(config.get(), "new"), 0);
}

TEST(QV_ConfigNS, SavesWhenDestroyedOnlyIfToldTo) {
    const TemporaryFolder folder;
    for (const bool autoSave : {false, true}) {
        const auto store = QV_ConfigNS::configWithFileName(folder.file("f"), true, autoSave);
        config::setValue(store->loadedConfig(), "a", config::newInteger(1));
        EXPECT_EQ(folder.count(), 0U);
    }
    const auto saved = QV_ConfigNS::configWithFileName(folder.file("f"), false, false);
    ASSERT_NE(saved, nullptr);
    EXPECT_EQ(config::intOf(config::valueOf(saved->loadedConfig(), "a")), 1);
    EXPECT_FALSE(QV_ConfigNS().save());
    EXPECT_FALSE(QV_ConfigNS::saveConfigToFile(folder.file("g"), nullptr));
}

}  // namespace
