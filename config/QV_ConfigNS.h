// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>

#include "config/PlistNode.h"

/**
 * The settings store for C++: a property-list file and what it holds. Changes live in memory until `save` writes all
 * of it, as XML. One thread at a time.
 */
class QV_ConfigNS {
  public:
    /** The path of the system-wide file (`withSpace` not 0) or of the user's, as QV_GetDefaultAppConfigFileName. */
    static std::string defaultAppConfigFileName(const std::string& applicationName, int withSpace);

    /**
     * The store of a file. When the file cannot be read or is no property list: null or, with `createIfNotExist`, an
     * empty dictionary, which takes the file's place when it is saved. `autoSave`: save when destroyed.
     */
    static std::unique_ptr<QV_ConfigNS> configWithFileName(const std::string& fileName, bool createIfNotExist,
                                                           bool autoSave);

    /** Null when the file cannot be read or is no property list. */
    static config::PlistNode loadConfigFromFile(const std::string& path);

    /** Replaces the file as a whole or, on failure, not at all; a null `contents` and text that XML cannot hold fail. */
    static bool saveConfigToFile(const std::string& path, plist_t contents);

    /** A store of nothing: no contents, no file. */
    QV_ConfigNS() = default;
    ~QV_ConfigNS();

    QV_ConfigNS(const QV_ConfigNS&) = delete;
    QV_ConfigNS& operator=(const QV_ConfigNS&) = delete;

    /**
     * The contents, to be read and changed in place until the next `reload`; this object owns them. A dictionary,
     * unless a file has something else at its top.
     */
    plist_t loadedConfig() const { return m_LoadedConfig.get(); }

    bool save() const;

    /** Drops unsaved changes; on failure the contents stay as they were. */
    bool reload();

  private:
    config::PlistNode m_LoadedConfig;
    std::string m_ConfigFileName;
    bool m_AutoSave = false;
};
