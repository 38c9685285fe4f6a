// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/ConfigStorage.h"

#include <utility>

#include "config/FileReplacement.h"
#include "config/SettingsKeys.h"
#include "daemon/DaemonConnection.h"

ConfigStorage* ConfigStorage::sharedConfig() {
    static ConfigStorage shared(QV_ConfigNS::defaultAppConfigFileName(config::applicationName, 1),
                                QV_ConfigNS::defaultAppConfigFileName(config::applicationName, 0));
    return &shared;
}

ConfigStorage::ConfigStorage(const std::string& systemFile, const std::string& userFile)
    : m_SystemFile(systemFile),
      m_Config(QV_ConfigNS::configWithFileName(systemFile, true, false)),
      m_UserConfig(QV_ConfigNS::configWithFileName(userFile, true, false)) {}

int ConfigStorage::systemInteger(const char* key, int defaultValue) const {
    return config::intOf(config::valueOf(m_Config->loadedConfig(), key)).value_or(defaultValue);
}

int ConfigStorage::maxStorageTimeInMonths() const {
    return systemInteger(config::captureIntervalKey, config::defaultCaptureInterval);
}

int ConfigStorage::allowDenyAppsMode() const {
    return systemInteger(config::allowDenyAppsModeKey, config::defaultAllowDenyAppsMode);
}

std::optional<QStringList> ConfigStorage::allowDenyAppsList() const {
    plist_t array = config::valueOf(m_Config->loadedConfig(), config::allowDenyAppsKey);
    if (!config::isArray(array)) {
        return std::nullopt;
    }
    QStringList paths;
    for (std::uint32_t i = 0; i < plist_array_get_size(array); ++i) {
        const auto path = config::stringOf(plist_array_get_item(array, i));
        if (!path) {
            return std::nullopt;
        }
        paths << QString::fromStdString(*path);
    }
    return paths;
}

bool ConfigStorage::isAutostarted() const {
    return config::boolOf(config::valueOf(m_UserConfig->loadedConfig(), config::isAutostartedKey))
        .value_or(config::defaultIsAutostarted);
}

bool ConfigStorage::isSystemConfigWritable() const {
    return config::canReplaceFile(m_SystemFile);
}

void ConfigStorage::setSystemValue(const char* key, config::PlistNode value) {
    if (config::setValue(m_Config->loadedConfig(), key, std::move(value))) {
        m_IsModified = true;
    }
}

void ConfigStorage::setMaxStorageTimeInMonths(int months) {
    if (months != maxStorageTimeInMonths()) {
        setSystemValue(config::captureIntervalKey, config::newInteger(months));
    }
}

void ConfigStorage::setAllowDenyAppsMode(int mode) {
    if (mode != allowDenyAppsMode()) {
        setSystemValue(config::allowDenyAppsModeKey, config::newInteger(mode));
    }
}

void ConfigStorage::setAllowDenyAppsList(const QStringList& paths) {
    if (paths == allowDenyAppsList()) {
        return;
    }
    config::PlistNode array(plist_new_array());
    for (const QString& path : paths) {
        plist_array_append_item(array.get(), plist_new_string(path.toUtf8().constData()));
    }
    setSystemValue(config::allowDenyAppsKey, std::move(array));
}

void ConfigStorage::setAutostarted(bool isAutostarted) {
    config::setValue(m_UserConfig->loadedConfig(), config::isAutostartedKey,
                     config::PlistNode(plist_new_bool(isAutostarted ? 1 : 0)));
}

void ConfigStorage::save() {
    m_UserConfig->save();
    if (m_IsModified) {
        m_Config->save();
        m_IsModified = false;
        DaemonConnection::sharedConnection()->sendConfigChangedEvent();
    }
}

void ConfigStorage::reload() {
    m_UserConfig->reload();
    m_Config->reload();
    m_IsModified = false;
}
