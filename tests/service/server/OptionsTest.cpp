// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/Options.h"

#include <gtest/gtest.h>

namespace service {

TEST(Options, AreTakenInBothForms) {
    const CommandLine line = parseCommandLine(
        {"--database", "/a/b", "--listen=127.0.0.1:0", "--config", "c.plist", "--capture=diag"});
    ASSERT_EQ(line.action, CommandLine::Action::Serve) << line.error;
    EXPECT_FALSE(line.options.demo);
    EXPECT_EQ(line.options.database, "/a/b");
    EXPECT_EQ(line.options.listen.text(), "127.0.0.1:0");
    EXPECT_EQ(line.options.config, "c.plist");
    EXPECT_EQ(line.options.capture, CaptureMode::Diag);
    EXPECT_EQ(parseCommandLine({}).options.listen.text(), "127.0.0.1:10023");
    EXPECT_TRUE(parseCommandLine({"--demo"}).options.demo);
}

TEST(Options, StatusIsAskedOfTheHistorysDaemon) {
    const CommandLine line = parseCommandLine({"--status", "--database", "/a/b"});
    EXPECT_EQ(line.action, CommandLine::Action::ShowStatus);
    EXPECT_EQ(line.options.database, "/a/b");
}

TEST(Options, WrongOnesAreNamed) {
    struct Case {
        std::vector<std::string> arguments;
        const char* mentioned;
    };
    for (const Case& wrong :
         {Case{{"--demon"}, "'--demon'"}, Case{{"file"}, "'file'"}, Case{{"--database"}, "--database needs"},
          Case{{"--database="}, "--database needs"}, Case{{"--database", "--demo"}, "--database needs"},
          Case{{"--demo=1"}, "'--demo=1'"}, Case{{"--listen", "localhost:1"}, "'localhost:1'"},
          Case{{"--listen", "127.0.0.1"}, "'127.0.0.1'"},
          Case{{"--listen", "127.0.0.1:65536"}, "127.0.0.1:65536"}, Case{{"--listen", "127.0.0.1:1x"}, "1x"},
          Case{{"--listen", "127.0.0.1:"}, "--listen"}, Case{{"--capture", "pcap"}, "'pcap'"},
          Case{{"--demo", "--capture", "auto"}, "exclude"}, Case{{"--demo", "--status"}, "--database"}}) {
        const CommandLine line = parseCommandLine(wrong.arguments);
        EXPECT_EQ(line.action, CommandLine::Action::ShowError) << wrong.mentioned;
        EXPECT_NE(line.error.find(wrong.mentioned), std::string::npos) << line.error;
    }
}

}  // namespace service
