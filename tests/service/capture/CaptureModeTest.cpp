// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/capture/CaptureMode.h"

#include <gtest/gtest.h>

namespace service {
namespace {

TEST(CaptureMode, OffReportsNothing) {
    const auto source = makeCaptureSource(CaptureMode::Off).source;
    ASSERT_NE(source, nullptr);
    EXPECT_EQ(source->name(), "off");
    EXPECT_TRUE(source->poll({}).empty());
}

}  // namespace
}  // namespace service
