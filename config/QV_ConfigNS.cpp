// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/QV_ConfigNS.h"

#include <utility>

#include "config/PlistFile.h"
#include "config/QV_Config.h"

std::string QV_ConfigNS::defaultAppConfigFileName(const std::string& applicationName, int withSpace) {
    return QV_GetDefaultAppConfigFileName(applicationName.c_str(), withSpace);
}

std::unique_ptr<QV_ConfigNS> QV_ConfigNS::configWithFileName(const std::string& fileName,
                                                             bool createIfNotExist, bool autoSave) {
    config::PlistNode contents = loadConfigFromFile(fileName);
    if (contents == nullptr && !createIfNotExist) {
        return nullptr;
    }
    auto store = std::make_unique<QV_ConfigNS>();
    store->m_LoadedConfig = contents != nullptr ? std::move(contents) : config::PlistNode(plist_new_dict());
    store->m_ConfigFileName = fileName;
    store->m_AutoSave = autoSave;
    return store;
}

config::PlistNode QV_ConfigNS::loadConfigFromFile(const std::string& path) {
    return config::loadPlist(path);
}

bool QV_ConfigNS::saveConfigToFile(const std::string& path, plist_t contents) {
    return config::savePlist(path, contents);
}

QV_ConfigNS::~QV_ConfigNS() {
    if (m_AutoSave) {
        save();
    }
}

bool QV_ConfigNS::save() const {
    return saveConfigToFile(m_ConfigFileName, m_LoadedConfig.get());
}

bool QV_ConfigNS::reload() {
    config::PlistNode contents = loadConfigFromFile(m_ConfigFileName);
    if (contents == nullptr) {
        return false;
    }
    m_LoadedConfig = std::move(contents);
    return true;
}
