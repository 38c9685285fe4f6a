// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QIcon>
#include <QString>

/** One row of the list of applications in the preferences. Never changes. Main thread. */
class AppListEntry {
  public:
    /**
     * The file name of the first bundle in a path, without its extension; of a path without a bundle, its last part.
     * Null for a path without a separator.
     */
    static QString nameFromBundlePath(const QString& path);

    static AppListEntry entryWithBundlePath(const QString& path) { return AppListEntry(path); }

    explicit AppListEntry(const QString& bundlePath = {});

    QString name() const { return m_Name; }

    /** Full path of the bundle or, of an application without one, of its executable. */
    QString bundlePath() const { return m_BundlePath; }

    QIcon icon() const;

    /**
     * Whether there still is such an application. The kernel always is, although no file has the path that stands
     * for it, and so is what runs in a container, or what the daemon puts in place of an application that it could
     * not find out.
     */
    bool exists() const;

  private:
    QString m_Name;
    QString m_BundlePath;
};
