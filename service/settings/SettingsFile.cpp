// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/settings/SettingsFile.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>

#include "config/QV_Config.h"
#include "service/log/Log.h"

namespace service {

namespace {

struct ConfigCloser {
    void operator()(QV_Config* config) const { QV_CloseConfig(config); }
};
using Config = std::unique_ptr<QV_Config, ConfigCloser>;

/** Nothing when an element is no string. */
std::optional<std::vector<std::string>> stringArray(const QV_Config* config, const char* name) {
    std::vector<std::string> texts;
    std::vector<char*> buffers;
    const int count = QV_GetArrayParamSize(config, name);
    for (int i = 0; i < count; ++i) {
        const int size = QV_GetStringArrayParamStringSize(config, name, i);
        if (size < 0) {
            return std::nullopt;
        }
        texts.emplace_back(static_cast<std::size_t>(size) - 1, '\0');  // its own zero at the end is as good
    }
    for (std::string& text : texts) {
        buffers.push_back(text.data());
    }
    QV_GetStringArrayParam(config, name, buffers.data());
    return texts;
}

}  // namespace

std::string defaultSettingsFile() {
    return QV_GetDefaultAppConfigFileName(config::applicationName, 1);
}

SettingsFile::SettingsFile(std::string path) : m_Path(std::move(path)) {}

const Settings& SettingsFile::read() {
    const std::string found = readInto(m_InForce);
    say(found + ": " + m_InForce.inWords());
    return m_InForce;
}

std::string SettingsFile::readInto(Settings& settings) const {
    const Config config(QV_OpenConfig(m_Path.c_str(), 0));
    std::error_code ignored;
    const bool isThere =
        config || std::filesystem::status(m_Path, ignored).type() != std::filesystem::file_type::not_found;
    if (!config && isThere) {
        return "the settings in " + m_Path + " can't be read, so what was in force stays";
    }
    settings = {};
    if (!isThere) {
        return "no settings in " + m_Path;
    }
    QV_GetIntParam(config.get(), config::captureIntervalKey, &settings.months);
    QV_GetIntParam(config.get(), config::allowDenyAppsModeKey, &settings.mode);
    if (auto listed = stringArray(config.get(), config::allowDenyAppsKey)) {
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
