// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/capture/CaptureMode.h"

#include <gtest/gtest.h>

namespace service {
namespace {

TEST(CaptureMode, WhatCannotWorkSaysWhy) {
    std::string error;
    EXPECT_EQ(makeCaptureSource(CaptureMode::Bpf, error), nullptr);
    EXPECT_NE(error.find("bpf"), std::string::npos) << error;
}

TEST(CaptureMode, OffReportsNothing) {
    std::string error;
    const auto source = makeCaptureSource(CaptureMode::Off, error);
    ASSERT_NE(source, nullptr);
    EXPECT_EQ(source->name(), "off");
    EXPECT_TRUE(source->poll({}).empty());
}

}  // namespace
}  // namespace service
