// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/settings/SettingsFile.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include "config/QV_ConfigNS.h"
#include "service/log/Log.h"

namespace service {

namespace {

/** None for what is no array; nothing when an element is no string. */
std::optional<std::vector<std::string>> stringArray(plist_t value) {
    std::vector<std::string> texts;
    const std::uint32_t count = config::isArray(value) ? plist_array_get_size(value) : 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        std::optional<std::string> text = config::stringOf(plist_array_get_item(value, i));
        if (!text) {
            return std::nullopt;
        }
        texts.push_back(std::move(*text));
    }
    return texts;
}

bool isDictionary(plist_t value) {
    return value != nullptr && plist_get_node_type(value) == PLIST_DICT;
}

bool isThere(const std::string& path) {
    std::error_code ignored;
    return std::filesystem::status(path, ignored).type() != std::filesystem::file_type::not_found;
}

}  // namespace

std::string defaultSettingsFile() {
    return QV_ConfigNS::defaultAppConfigFileName(config::applicationName, 1);
}

SettingsFile::SettingsFile(std::string path) : m_Path(std::move(path)) {}

const Settings& SettingsFile::read() {
    const std::string found = readInto(m_InForce);
    say(found + ": " + m_InForce.inWords());
    return m_InForce;
}

std::string SettingsFile::readInto(Settings& settings) const {
    const config::PlistNode loaded = QV_ConfigNS::loadConfigFromFile(m_Path);
    plist_t dictionary = loaded.get();
    if (!isDictionary(dictionary) && (loaded || isThere(m_Path))) {
        return "the settings in " + m_Path + " can't be read, so what was in force stays";
    }
    settings = {};
    if (!loaded) {
        return "no settings in " + m_Path;
    }
    const auto number = [&](const char* key, int& setting) {
        setting = config::intOf(config::valueOf(dictionary, key)).value_or(setting);
    };
    number(config::captureIntervalKey, settings.months);
    number(config::allowDenyAppsModeKey, settings.mode);
    if (auto listed = stringArray(config::valueOf(dictionary, config::allowDenyAppsKey))) {
        settings.listed = std::move(*listed);
        return "settings in " + m_Path;
    }
    return "settings in " + m_Path + " with a list that holds more than paths, so it does not count";
}

void SettingsFile::say(const std::string& text) {
    if (text != m_Said) {
        m_Said = text;
        logPeerLine(text);
    }
}

}  // namespace service
