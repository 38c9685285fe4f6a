// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/settings/Settings.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <system_error>

namespace service {

namespace {

using Mode = RecordingRule::Mode;

constexpr std::chrono::days month{30};

bool isKnownMode(int mode) {
    return mode >= static_cast<int>(Mode::All) && mode <= static_cast<int>(Mode::AllButListed);
}

Mode modeOf(int mode) {
    return isKnownMode(mode) ? static_cast<Mode>(mode) : Mode::All;
}

std::string withoutTrailingSlashes(std::string path) {
    while (path.size() > 1 && path.ends_with('/')) {
        path.pop_back();
    }
    return path;
}

/** Where the links in a full path lead; what of it is not there stays as it is. */
std::string resolved(const std::string& path) {
    if (!path.starts_with('/')) {
        return path;  // no file, such as the name for an owner that is unknown
    }
    std::error_code failure;  // then the path itself will have to do
    const std::string target = std::filesystem::weakly_canonical(path, failure).string();
    return failure ? path : target;
}

std::string counted(std::size_t count, const char* what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::string recordingInWords(int mode, std::size_t listed) {
    if (!isKnownMode(mode)) {
        return "records all applications (there is no mode " + std::to_string(mode) + ")";
    }
    if (modeOf(mode) == Mode::OnlyListed) {
        return listed == 0 ? "records no application" : "records only " + counted(listed, "application");
    }
    const bool leavesOut = modeOf(mode) == Mode::AllButListed && listed > 0;
    return "records all applications" + (leavesOut ? " but " + std::to_string(listed) : "");
}

std::string keepingInWords(int months) {
    return months < 1 ? "keeps everything (months to keep: " + std::to_string(months) + ")"
                      : "keeps " + counted(static_cast<std::size_t>(months), "month");
}

}  // namespace

RecordingRule Settings::rule() const {
    RecordingRule rule(modeOf(mode));
    for (const std::string& entry : listed) {
        const std::string path = withoutTrailingSlashes(entry);
        rule.list(path, resolved(path));
    }
    return rule;
}

std::optional<std::chrono::days> Settings::retention() const {
    return months < 1 ? std::nullopt : std::optional(month * static_cast<std::int64_t>(months));
}

std::string Settings::inWords() const {
    return recordingInWords(mode, listed.size()) + ", " + keepingInWords(months);
}

}  // namespace service
