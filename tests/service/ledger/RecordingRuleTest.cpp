// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/ledger/RecordingRule.h"

#include <gtest/gtest.h>

using namespace service;
using enum RecordingRule::Mode;

TEST(RecordingRule, KnowsListedApplicationsByExecutableBundleAndLink) {
    struct Case {
        const char* executable;
        bool isListed;
    };
    for (const auto& [executable, isListed] :
         {Case{"/usr/bin/curl", true}, Case{"/usr/bin/curl2", false}, Case{"/usr/bin/cur", false},
          Case{"/usr/bin/dash", true}, Case{"/A/Mail.app/MacOS/Mail", true},
          Case{"/A/Mail.app/Helpers/Sync.app/sync", true}, Case{"/A/Mail.appendix/x", false},
          Case{"/B/A/Mail.app/x", false}, Case{"/opt/web-1.2/bin/web", true},
          Case{"/opt/web-1.20/web", false}, Case{"/L/Core.framework/core", true},
          Case{"/L/Audio.bundle/audio", true}, Case{"/usr/lib/sshd", false}, Case{"", true},
          Case{"(unknown)", false}}) {
        for (const auto mode : {All, OnlyListed, AllButListed}) {
            RecordingRule rule(mode);
            rule.list("/bin/sh", "/usr/bin/dash");
            rule.list("/opt/Web.app", "/opt/web-1.2");
            for (const char* path : {"/usr/bin/curl", "/A/Mail.app", "/L/Core.framework", "/L/Audio.bundle",
                                     "/usr/lib", "/mach_kernel"}) {
                rule.list(path, path);
            }
            EXPECT_EQ(rule.records(executable), mode == All || isListed == (mode == OnlyListed))
                << executable << " in mode " << static_cast<int>(mode);
        }
    }
}
