// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cstdlib>

#include "config/PlistFile.h"
#include "config/PlistXml.h"
#include "tests/config/TemporaryFolder.h"
#include "tests/config/store_from_c.h"

namespace {

using config::readPlist;

/** The exit status of Python's own implementation at work. */
int plistlib(const std::string& arguments) {
    return std::system(("/usr/bin/python3 " PLISTLIB_SCRIPT " " + arguments).c_str());
}

std::string inPlist(const std::string& elements) {
    return "<plist version=\"1.0\">" + elements + "</plist>";
}

TEST(Plist, KeepsEveryKindThatPlistlibWroteInBothForms) {
    const TemporaryFolder folder;
    for (const std::string form : {"xml", "binary"}) {
        const std::string theirs = folder.file(form);
        const std::string ours = folder.file(form + " saved");
        ASSERT_EQ(plistlib("write " + form + " " + theirs), 0);
        const auto value = config::loadPlist(theirs);
        ASSERT_NE(value, nullptr) << form;
        EXPECT_TRUE(config::savePlist(ours, value.get()));
        EXPECT_EQ(plistlib("check '" + ours + "'"), 0) << form;
        EXPECT_EQ(config::intOf(config::valueOf(value.get(), "real")), 6);
        EXPECT_EQ(config::intOf(config::valueOf(value.get(), "negative")), std::numeric_limits<int>::min());
        EXPECT_EQ(config::boolOf(config::valueOf(value.get(), "integer")), true);
        EXPECT_EQ(config::doubleOf(config::valueOf(value.get(), "third")), 1.0 / 3);
        EXPECT_EQ(config::intOf(config::valueOf(value.get(), "text")), std::nullopt);
    }
}

TEST(Plist, IsReadRightByPlistlibWhenCWroteIt) {
    const TemporaryFolder folder;
    EXPECT_EQ(store_every_kind(folder.file("c").c_str()), 0);
    EXPECT_EQ(plistlib("check-stored " + folder.file("c")), 0);
    EXPECT_EQ(read_every_kind(folder.file("c").c_str()), 0);
}

TEST(Plist, RefusesXmlThatIsNone) {
    for (const std::string& document :
         {std::string(),
          std::string("text"),
          std::string("<dict/>"),
          std::string("<plist/>"),
          inPlist("<dict/>") + "x",
          inPlist("<dict/>") + "<plist/>",
          inPlist("<dict/><dict/>"),
          inPlist("<dict/>text"),
          inPlist("<dict>"),
          std::string("<plist><dict/>"),
          inPlist("<dict><key>a</key></dict>"),
          inPlist("<dict><true/></dict>"),
          inPlist("<dict><key>a</key><key>b</key><true/></dict>"),
          inPlist("<array><key>a</key></array>"),
          inPlist("<key>a</key>"),
          inPlist("<foo/>"),
          inPlist("<plist><true/></plist>"),
          inPlist("<true>x</true>"),
          inPlist("<string>a<b/></string>"),
          inPlist("<integer>abc</integer>"),
          inPlist("<integer/>"),
          inPlist("<integer>1 2</integer>"),
          inPlist("<integer>--1</integer>"),
          inPlist("<integer>1.5</integer>"),
          inPlist("<integer>18446744073709551616</integer>"),
          inPlist("<integer>-9223372036854775809</integer>"),
          inPlist("<real>1,5</real>"),
          inPlist("<real/>"),
          inPlist("<real>+-1</real>"),
          inPlist("<date>soon</date>"),
          inPlist("<date>2023-02-29T00:00:00Z</date>"),
          inPlist("<date>2023-02-28T24:00:00Z</date>"),
          inPlist("<data>AQI</data>"),
          inPlist("<data>A=ID</data>"),
          inPlist("<data>A===</data>"),
          inPlist("<data>*QID</data>"),
          inPlist("<string>\x01</string>"),
          inPlist("<string>\xff</string>"),
          inPlist("<string>&unknown;</string>"),
          "<!DOCTYPE plist [<!ENTITY e 'x'>]>" + inPlist("<string>&e;</string>")}) {
        EXPECT_EQ(readPlist(document), nullptr) << document;
    }
}

TEST(Plist, ReadsWhatEditorsMakeOfXml) {
    const auto stringIn = [](const std::string& document) {
        return config::stringOf(readPlist(document).get());
    };
    EXPECT_EQ(stringIn("\xef\xbb\xbf" + inPlist("<string>a</string>")), "a") << "a byte-order mark";
    EXPECT_EQ(stringIn("<?xml version='1.0' encoding='ISO-8859-1'?>" + inPlist("<string>\xc4</string>")),
              "\xc3\x84");
    EXPECT_EQ(stringIn(inPlist("\n <!-- c --> <string> a&amp;<!-- c --><![CDATA[<b>]]>&#x41;</string>\r\n")),
              " a&<b>A");
    EXPECT_EQ(config::intOf(readPlist(inPlist("<integer>\n +010 </integer>")).get()), 10) << "not octal";
    EXPECT_EQ(config::intOf(readPlist(inPlist("<integer>0x10</integer>")).get()), 16);
    EXPECT_EQ(config::intOf(readPlist(inPlist("<real>-infinity</real>")).get()),
              std::numeric_limits<int>::min());
    const auto repeated =
        readPlist(inPlist("<dict><key>a</key><true/><key>a</key><integer>2</integer></dict>"));
    EXPECT_EQ(config::intOf(config::valueOf(repeated.get(), "a")), 2);
}

TEST(Plist, RefusesDeepNestingAndLongFiles) {
    const auto nested = [](int depth) {
        std::string document;
        for (int i = 0; i < depth; ++i) {
            document = "<array>" + document + "</array>";
        }
        return inPlist(document);
    };
    EXPECT_NE(readPlist(nested(200)), nullptr);
    EXPECT_EQ(readPlist(nested(300)), nullptr);
    EXPECT_EQ(readPlist(inPlist("<string>" + std::string(5 << 20, 'x') + "</string>")), nullptr);
}

/** A binary property list of objects up to 255 bytes in all, the first of which is the top. */
std::string binaryOf(const std::vector<std::string>& objects) {
    std::string file = "bplist00";
    std::string table;
    for (const std::string& object : objects) {
        table += static_cast<char>(file.size());
        file += object;
    }
    const auto trailerNumber = [](std::size_t number) {
        return std::string(7, '\0') + static_cast<char>(number);
    };
    const std::size_t tableOffset = file.size();
    return file + table + std::string(6, '\0') + "\x01\x01" + trailerNumber(objects.size()) +
           trailerNumber(0) + trailerNumber(tableOffset);
}

TEST(Plist, RefusesBinariesThatGoOutOfBoundsOrGrowWithoutMeasure) {
    EXPECT_EQ(config::stringOf(readPlist(binaryOf({"\x53"
                                                   "abc"}))
                                   .get()),
              "abc");
    EXPECT_EQ(readPlist(binaryOf({"\x54"
                                  "abc"})),
              nullptr)
        << "into the table";
    EXPECT_EQ(readPlist(binaryOf({"\x51\xff"})), nullptr) << "no ASCII";
    EXPECT_EQ(readPlist(binaryOf({"\xa1\x01"})), nullptr) << "no such object";
    EXPECT_EQ(readPlist(binaryOf({std::string("\xa1\0", 2)})), nullptr) << "contains itself";
    EXPECT_EQ(readPlist(binaryOf({"\xd1\x01\x01", "\x09"})), nullptr) << "the key is no string";
    std::vector<std::string> doubling;
    for (char next = 1; next <= 40; ++next) {
        doubling.push_back(std::string("\xa2") + next + next);
    }
    doubling.push_back("\x09");
    EXPECT_EQ(readPlist(binaryOf(doubling)), nullptr) << "2^40 values";
    const std::string sound = binaryOf({"\xd1\x01\x02",
                                        "\x51"
                                        "a",
                                        "\x10\x07"});
    EXPECT_EQ(config::intOf(config::valueOf(readPlist(sound).get(), "a")), 7);
    for (std::size_t length = 0; length < sound.size(); ++length) {
        EXPECT_EQ(readPlist(sound.substr(0, length)), nullptr) << length;
    }
}

TEST(Plist, IsNotWrittenWithTextThatNoParserWouldReadBack) {
    for (const char* text : {"\x01", "\xff", "\xed\xa0\x80", "\xef\xbf\xbf", "a\x1b[0m"}) {
        const config::PlistNode value(plist_new_string(text));
        EXPECT_EQ(config::writePlistXml(value.get()), std::nullopt);
        const config::PlistNode dictionary(plist_new_dict());
        config::setValue(dictionary.get(), text, config::newInteger(1));
        EXPECT_EQ(config::writePlistXml(dictionary.get()), std::nullopt) << "as a key";
    }
}

}  // namespace
