// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "service/traffic/TrafficSource.h"

namespace service {

/** Which of the real traffic sources the daemon uses. */
enum class CaptureMode {
    Auto,  ///< the best that works here
    Bpf,   ///< programs in the kernel
    Diag,  ///< the kernel's socket diagnostics
    Off    ///< none
};

/** Reads "auto", "bpf", "diag" or "off"; nothing for any other text. */
std::optional<CaptureMode> captureModeFromText(std::string_view text);

/** Makes the source for a mode and logs which it is; null with the reason in `error` where it can't work. */
std::unique_ptr<TrafficSource> makeCaptureSource(CaptureMode mode, std::string& error);

}  // namespace service
