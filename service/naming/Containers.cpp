// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/naming/Containers.h"

#include <pwd.h>

#include <algorithm>
#include <charconv>
#include <fstream>
#include <sstream>
#include <string_view>
#include <system_error>
#include <utility>

namespace service {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t idDigits = 64;
constexpr std::size_t shownDigits = 12;  // as engines show them

/** An engine's file; those that are larger than any engine writes are cut off. */
std::string textOf(const fs::path& file) {
    constexpr std::size_t limitBytes = 4 << 20;
    std::ifstream stream(file, std::ios::binary);
    std::string text(stream ? limitBytes : 0, '\0');
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(stream.gcount()));
    return text;
}

/** What stands between a first `begin` and the `end` behind it; "" when there is no such thing. */
std::string between(std::string_view text, std::string_view begin, std::string_view end) {
    const std::size_t found = text.find(begin);
    if (found == std::string_view::npos) {
        return "";
    }
    const std::string_view behind = text.substr(found + begin.size());
    return std::string(behind.substr(0, std::min(behind.find(end), behind.size())));
}

/** Of "docker-ID.scope", "libpod-ID.scope", "cri-containerd-ID.scope", "ID" and the like the id, else "". */
std::string idIn(std::string_view group) {
    const std::string_view name = group.substr(0, std::min(group.rfind(".scope"), group.size()));
    if (name.size() < idDigits || name.find("conmon") != std::string_view::npos) {  // which watches one
        return "";
    }
    const std::string_view id = name.substr(name.size() - idDigits);
    const bool isAlone = name.size() == idDigits || name[name.size() - idDigits - 1] == '-';
    const bool isHex = id.find_first_not_of("0123456789abcdef") == std::string_view::npos;
    return isAlone && isHex ? std::string(id) : "";
}

/** With the characters that systemd wrote as "\x2d" and the like. */
std::string unescaped(std::string_view text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned code = 0;
        const char* const digits = text.data() + i + 2;
        if (text.substr(i, 2) == "\\x" && i + 4 <= text.size() &&
            std::from_chars(digits, digits + 2, code, 16).ptr == digits + 2) {
            plain += static_cast<char>(code);
            i += 3;
        } else {
            plain += text[i];
        }
    }
    return plain;
}

/** The name that stands in a group's own: "lxc.payload.NAME", "machine-NAME.scope" and the like; else "". */
std::string nameIn(std::string_view group) {
    constexpr std::pair<std::string_view, std::string_view> shapes[] = {
        {"lxc.payload.", ""}, {"machine-", ".scope"}, {"systemd-nspawn@", ".service"}};
    for (const auto& [prefix, suffix] : shapes) {
        if (group.starts_with(prefix) && group.ends_with(suffix)) {
            return unescaped(group.substr(prefix.size(), group.size() - prefix.size() - suffix.size()));
        }
    }
    return "";
}

/** The name that Podman's list of containers has for an id. */
std::string nameInList(const std::string& list, const std::string& id) {
    const std::size_t found = list.find("\"id\":\"" + id + "\"");
    return found == std::string::npos ? ""
                                      : between(std::string_view(list).substr(found), "\"names\":[\"", "\"");
}

/** Of the file that Kubernetes names "POD_NAMESPACE_CONTAINER-ID.log" what stands before the id. */
std::string nameInLogs(const fs::path& folder, const std::string& id) {
    const std::string end = "-" + id + ".log";
    std::error_code failure;
    for (fs::directory_iterator file(folder, failure), last; !failure && file != last;
         file.increment(failure)) {
        const std::string name = file->path().filename();
        if (name.ends_with(end)) {
            return name.substr(0, name.size() - end.size());
        }
    }
    return "";
}

/** The home of the user in whose "user-1000.slice" a group is; empty for one of the system. */
fs::path homeFor(const std::string& group) {
    const std::string digits = between(group, "/user.slice/user-", ".slice");
    uid_t user = 0;
    const bool isNumber =
        std::from_chars(digits.data(), digits.data() + digits.size(), user).ec == std::errc();
    const passwd* const entry = isNumber ? ::getpwuid(user) : nullptr;
    return entry == nullptr ? "" : entry->pw_dir;
}

}  // namespace

Containers::Containers(fs::path processes, fs::path root)
    : m_Processes(std::move(processes)), m_Root(std::move(root)) {}

std::optional<std::string> Containers::nameFor(pid_t process) const {
    std::ifstream groups(m_Processes / std::to_string(process) / "cgroup");
    for (std::string line; std::getline(groups, line);) {
        const std::string group = line.substr(std::min(line.find('/'), line.size()));
        std::istringstream parts(group);
        for (std::string part; std::getline(parts, part, '/');) {  // the outermost container counts
            if (std::string name = nameIn(part); !name.empty()) {
                return name;
            }
            if (const std::string id = idIn(part); !id.empty()) {
                const std::string name = nameOfId(id, group);
                return name.empty() ? id.substr(0, shownDigits) : name;
            }
        }
    }
    return std::nullopt;
}

std::string Containers::nameOfId(const std::string& id, const std::string& group) const {
    const bool isUsers = group.starts_with("/user.slice/");
    const fs::path data =
        isUsers ? m_Root / homeFor(group).relative_path() / ".local/share" : m_Root / "var/lib";
    // Docker writes the name with a slash before it, which no other "Name" in the file has.
    std::string name =
        between(textOf(data / "docker/containers" / id / "config.v2.json"), "\"Name\":\"/", "\"");
    if (name.empty()) {
        name = nameInList(textOf(data / "containers/storage/overlay-containers/containers.json"), id);
    }
    return name.empty() && !isUsers ? nameInLogs(m_Root / "var/log/containers", id) : name;
}

}  // namespace service
