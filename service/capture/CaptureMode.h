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

struct CaptureChoice {
    std::unique_ptr<TrafficSource> source;  ///< null where it can't work
    std::string reason;                     ///< for the choice, or for there being none; one line
};

/** Makes the source for a mode and logs which it is. */
CaptureChoice makeCaptureSource(CaptureMode mode);

}  // namespace service
