// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/naming/DesktopEntry.h"

#include <fstream>
#include <map>
#include <string_view>
#include <utility>

namespace service {

namespace {

using Values = std::map<std::string, std::string, std::less<>>;

std::string trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\r");
    return first == std::string_view::npos
               ? ""
               : std::string(text.substr(first, text.find_last_not_of(" \t\r") + 1 - first));
}

/** The values of the group that describes the application itself, not of those of its actions. */
Values readValues(const std::filesystem::path& file) {
    std::ifstream stream(file);
    Values values;
    bool isInside = false;
    for (std::string line; std::getline(stream, line);) {
        const std::size_t equals = line.find('=');
        if (line.starts_with('[')) {
            isInside = trimmed(line) == "[Desktop Entry]";
        } else if (isInside && !line.starts_with('#') && equals != std::string::npos) {
            values.emplace(trimmed(line.substr(0, equals)), trimmed(line.substr(equals + 1)));
        }
    }
    return values;
}

std::string valueOf(const Values& values, std::string_view key) {
    const auto found = values.find(key);
    return found == values.end() ? "" : found->second;
}

/** The text that "\s", "\t", "\n", "\r" and "\\" stand for. */
std::string unescaped(std::string_view text) {
    constexpr std::string_view letters = "stnr\\";
    constexpr std::string_view meanings = " \t\n\r\\";
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::size_t letter =
            text[i] == '\\' && i + 1 < text.size() ? letters.find(text[i + 1]) : std::string_view::npos;
        plain += letter == std::string_view::npos ? text[i] : meanings[letter];
        i += letter == std::string_view::npos ? 0 : 1;
    }
    return plain;
}

/** Words end at blanks outside double quotes; a backslash inside them frees the next character. */
std::vector<std::string> splitCommand(std::string_view command) {
    std::vector<std::string> words;
    bool isQuoted = false;
    bool isInWord = false;
    for (std::size_t i = 0; i < command.size(); ++i) {
        const char c = command[i];
        if (!isQuoted && (c == ' ' || c == '\t')) {
            isInWord = false;
            continue;
        }
        if (!std::exchange(isInWord, true)) {
            words.emplace_back();
        }
        if (c == '"') {
            isQuoted = !isQuoted;
        } else {
            i += isQuoted && c == '\\' && i + 1 < command.size() ? 1 : 0;
            words.back() += command[i];
        }
    }
    return words;
}

std::vector<std::string> commandOf(const std::string& exec) {
    std::vector<std::string> words = splitCommand(unescaped(exec));
    if (!words.empty() && std::filesystem::path(words.front()).filename() == "env") {
        do {
            words.erase(words.begin());
        } while (!words.empty() && words.front().find('=') != std::string::npos);
    }
    return words;
}

std::string nameIn(const Values& values, const std::vector<std::string>& languages) {
    for (const std::string& language : languages) {
        if (const std::string name = valueOf(values, "Name[" + language + "]"); !name.empty()) {
            return unescaped(name);
        }
    }
    return unescaped(valueOf(values, "Name"));
}

}  // namespace

std::optional<DesktopEntry> DesktopEntry::read(const std::filesystem::path& file,
                                               const std::vector<std::string>& languages) {
    const Values values = readValues(file);
    DesktopEntry entry{.name = nameIn(values, languages),
                       .command = commandOf(valueOf(values, "Exec")),
                       .tryProgram = unescaped(valueOf(values, "TryExec")),
                       .flatpak = valueOf(values, "X-Flatpak"),
                       .snap = valueOf(values, "X-SnapInstanceName")};
    const bool isListed = valueOf(values, "Type") == "Application" &&
                          valueOf(values, "NoDisplay") != "true" && valueOf(values, "Hidden") != "true";
    return isListed && !entry.name.empty() ? std::optional(std::move(entry)) : std::nullopt;
}

std::vector<std::string> languagesOf(const std::string& locale) {
    const std::string modifier = locale.find('@') == std::string::npos ? "" : locale.substr(locale.find('@'));
    const std::string country = locale.substr(0, locale.find_first_of(".@"));
    const std::string language = country.substr(0, country.find('_'));
    if (language.empty() || language == "C" || language == "POSIX") {
        return {};
    }
    return {country + modifier, country, language + modifier, language};
}

}  // namespace service
