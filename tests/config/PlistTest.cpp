// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <map>
#include <sstream>
#include <vector>

#include "config/PlistFile.h"
#include "config/PlistXml.h"
#include "tests/support/TemporaryFolder.h"

/** In store_from_c.c. Both give the line of the first step that went wrong; 0 when none did. */
extern "C" int store_every_kind(const char* path);
extern "C" int read_every_kind(const char* path);

namespace {

using config::readPlist;
using namespace std::string_literals;

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
        ASSERT_EQ(plistlib("write-" + form + " " + theirs), 0);
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
    std::vector<std::string> documents{"",
                                       "text",
                                       "<dict/>",
                                       "<plist><dict/>",
                                       inPlist("<dict/>") + "<plist/>",
                                       inPlist("<dict/>") + "x",
                                       inPlist("<string>\x01</string>"),
                                       inPlist("<string>\xff</string>"),
                                       "<!DOCTYPE plist [<!ENTITY e 'x'>]>" + inPlist("<true/>")};
    std::istringstream rows(
        R"(|<dict/><dict/>|<dict/>text|<dict>|<dict><key>a</key></dict>|<dict><true/></dict>|<array><key>a</key></array>
|<dict><key>a</key><key>b</key><true/></dict>|<key>a</key>|<foo/>|<plist><true/></plist>|<true>x</true>
|<string>a<b/></string>|<string>&unknown;</string>|<integer>abc</integer>|<integer/>|<integer>1 2</integer>
|<integer>--1</integer>|<integer>1.5</integer>|<integer>18446744073709551616</integer>|<real/>|<real>+-1</real>
|<integer>-9223372036854775809</integer>|<real>1,5</real>|<date>soon</date>|<date>2023-02-29T00:00:00Z</date>
|<date>2023-02-28T24:00:00Z</date>|<data>AQI</data>|<data>A=ID</data>|<data>A===</data>|<data>*QID</data>)");
    for (std::string elements; std::getline(rows, elements, '|');) {
        documents.push_back(inPlist(elements));
    }
    for (const std::string& document : documents) {
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
}

TEST(Plist, RefusesDeepNestingAndLongFiles) {
    std::string document = "<true/>";
    for (int i = 0; i < 300; ++i) {
        document = "<array>" + document + "</array>";
        EXPECT_EQ(readPlist(inPlist(document)) != nullptr, i < 255) << i;
    }
    EXPECT_EQ(readPlist(inPlist("<string>" + std::string(5 << 20, 'x') + "</string>")), nullptr);
}

std::string twoBytes(std::size_t value) {
    return {static_cast<char>(value >> 8U), static_cast<char>(value & 255U)};
}

/** A binary property list of objects up to 64 KiB in all, the first of which is the top. */
std::string binaryOf(const std::vector<std::string>& objects, char referenceBytes = 1) {
    std::string file = "bplist00";
    std::string table;
    for (const std::string& object : objects) {
        table += twoBytes(file.size());
        file += object;
    }
    const auto number = [](std::size_t value) { return std::string(6, '\0') + twoBytes(value); };
    return file + table + "\0\0\0\0\0\0\2"s + referenceBytes + number(objects.size()) + number(0) +
           number(file.size());
}

TEST(Plist, RefusesBinariesThatGoOutOfBoundsOrGrowWithoutMeasure) {
    std::vector<std::string> doubling;
    for (char next = 1; next <= 40; ++next) {
        doubling.push_back(std::string("\xa2") + next + next);
    }
    doubling.emplace_back("\x09");
    const std::map<std::string, std::vector<std::string>> bad{
        {"into the table", {"Tabc"}},
        {"no ASCII", {"Q\xff"}},
        {"no such object", {"\xa1\x01"}},
        {"contains itself", {"\xa1\0"s}},
        {"key no string", {"\xd1\x01\x01", "\x09"}},
        {"key twice", {"\xd2\x01\x01\x02\x02", "Qa", "\x09"}},
        {"zero in a text", {"Ra\0"s}},
        {"2^40 values", doubling}};
    for (const auto& [fault, objects] : bad) {
        EXPECT_EQ(readPlist(binaryOf(objects)), nullptr) << fault;
    }
    const std::string sound = binaryOf({"\xd1\x01\x02", "Qa", "\x10\x07"});
    EXPECT_EQ(config::intOf(config::valueOf(readPlist(sound).get(), "a")), 7);
    for (std::size_t length = 0; length < sound.size(); ++length) {
        EXPECT_EQ(readPlist(sound.substr(0, length)), nullptr) << length;
    }
}

TEST(Plist, RefusesABinaryThatReusesAShallowValueDeepDown) {
    for (const std::size_t second : {50U, 60U}) {  // a chain of 200 arrays, and another one that leads to it
        std::vector<std::string> objects{"\xa2" + twoBytes(1) + twoBytes(201)};
        for (std::size_t next = 2; next <= 200; ++next) {
            objects.push_back("\xa1" + twoBytes(next));
        }
        objects.emplace_back("\x09");
        for (std::size_t next = 202; next <= 200 + second; ++next) {
            objects.push_back("\xa1" + twoBytes(next));
        }
        objects.push_back("\xa1" + twoBytes(1));
        EXPECT_EQ(readPlist(binaryOf(objects, 2)) != nullptr, second == 50);
    }
}

/** Walking to each element would take minutes. */
TEST(Plist, ReadsALongBinaryArrayAtOnce) {
    constexpr std::uint32_t count = 400'000;
    const config::PlistNode array(plist_new_array());
    const config::PlistNode path(plist_new_string("/usr/bin/curl"));
    for (std::uint32_t i = 0; i < count; ++i) {
        plist_array_append_item(array.get(), plist_copy(path.get()));
    }
    char* file = nullptr;
    std::uint32_t size = 0;
    plist_to_bin(array.get(), &file, &size);
    const auto read = readPlist({file, size});
    std::free(file);
    ASSERT_TRUE(config::isArray(read.get()));
    for (std::uint32_t i = 0; i < count; ++i) {
        ASSERT_EQ(config::stringOf(plist_array_get_item(read.get(), i)), "/usr/bin/curl");
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
