// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>
#include <memory>
#include <optional>
#include <string>

#include "config/QV_ConfigNS.h"

/**
 * The monitor's settings: the system-wide file, which the daemon shares, and the user's own. Changes live in memory
 * until `save`. docs/settings.md tells what each setting means. Main thread.
 */
class ConfigStorage {
  public:
    /** The settings of this system and user; they live until the program ends. */
    static ConfigStorage* sharedConfig();

    /** Settings in other files. What cannot be read is taken for empty. */
    ConfigStorage(const std::string& systemFile, const std::string& userFile);

    /** Months of history that the daemon is to keep. */
    int maxStorageTimeInMonths() const;
    int allowDenyAppsMode() const;

    /** Nothing when there is no list, which an empty one is not, or one with anything but strings in it. */
    std::optional<QStringList> allowDenyAppsList() const;
    bool isAutostarted() const;

    /** True when a setting of the system-wide file was changed since the last `save` or `reload`. */
    bool isModified() const { return m_IsModified; }

    /**
     * Whether `save` can be expected to write the system-wide file. An ordinary user's often cannot, and `save`
     * does not tell: ask before anybody changes what will not last.
     */
    bool isSystemConfigWritable() const;

    /** The path of the system-wide file. */
    const std::string& systemFile() const { return m_SystemFile; }

    /** A setting that already says so, be it by its default, is left alone. */
    void setMaxStorageTimeInMonths(int months);
    void setAllowDenyAppsMode(int mode);
    void setAllowDenyAppsList(const QStringList& paths);

    /** Of the user's file: never makes `isModified` true. */
    void setAutostarted(bool isAutostarted);

    /**
     * Writes the user's file and, when a setting of the system-wide one was changed, that file, and then tells the
     * daemon. What cannot be written stays changed in memory only.
     */
    void save();

    /** Reads both files again, dropping unsaved changes; a file that cannot be read leaves its settings as they were. */
    void reload();

  private:
    int systemInteger(const char* key, int defaultValue) const;
    void setSystemValue(const char* key, config::PlistNode value);

    std::string m_SystemFile;
    std::unique_ptr<QV_ConfigNS> m_Config;
    std::unique_ptr<QV_ConfigNS> m_UserConfig;
    bool m_IsModified = false;
};
