// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/DaemonTest.h"

#include "tests/support/PrivateNetwork.h"

namespace {

// Before main: a user without privileges may enter one only while the process has a single thread.
const bool hasPrivateNetwork = enterPrivateNetwork();

}  // namespace

void DaemonTest::SetUp() {
    if (!hasPrivateNetwork) {
        GTEST_SKIP() << "this system does not allow a network namespace";
    }
    begin();
}
