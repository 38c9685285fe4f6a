// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

/**
 * Which icon the desktop gives to an executable: an index of the desktop entries (*.desktop), read once when
 * it is made. Any thread, one at a time.
 */
class DesktopEntries {
  public:
    /** Reads the entries in `folders` and below; where two entries start the same executable, the earlier
     * folder wins. */
    explicit DesktopEntries(const QStringList& folders);

    /**
     * The icon, a theme name or an absolute path, of the entry that starts the executable at `path`; of one
     * that starts an executable of the same name when no entry starts this very file. Empty when there is
     * none.
     */
    QString iconFor(const QString& path) const;

  private:
    struct Claim {
        QString icon;
        bool isPlain = false;
    };

    void addEntry(const QString& file);
    void claim(const QString& key, const Claim& claim);

    QHash<QString, Claim> m_Claims;  ///< by path and by file name
};
