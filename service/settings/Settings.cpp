// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/settings/Settings.h"

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>

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

struct Free {
    void operator()(char* text) const { std::free(text); }
};

/** Where the links in the path of something that is there lead. */
std::optional<std::string> realPath(const std::string& path) {
    const std::unique_ptr<char, Free> target(::realpath(path.c_str(), nullptr));
    return target ? std::optional<std::string>(target.get()) : std::nullopt;
}

/** Where the links in a full path lead, or those in its folder's where it is not there; else the path itself. */
std::string resolved(const std::string& path) {
    if (!path.starts_with('/') || path.size() >= PATH_MAX) {
        return path;  // no file, such as the name for an owner that is unknown
    }
    if (std::optional<std::string> target = realPath(path)) {
        return *target;
    }
    const std::size_t slash = path.rfind('/');
    const std::optional<std::string> folder = realPath(path.substr(0, slash + 1));
    return folder && *folder != "/" ? *folder + path.substr(slash) : path;
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

RecordingRule Settings::rule(const std::stop_token& stop) const {
    RecordingRule rule(modeOf(mode));
    for (const std::string& entry : listed) {
        if (stop.stop_requested()) {
            break;
        }
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
