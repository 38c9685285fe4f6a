// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QStringList>

#include "ui/applications/ColumnTableModel.h"
#include "ui/preferences/AppListEntry.h"

/** The list of applications in the preferences, in the order in which it is shown and stored. Main thread. */
class AppsListModel : public ColumnTableModel {
  public:
    /** The numbers are the columns' identifiers. */
    enum Column { IconColumn = 0, NameColumn = 1, BundlePathColumn = 2, ColumnCount };

    explicit AppsListModel(QObject* parent = nullptr);

    /** Takes the place of all rows. */
    void setEntries(const QList<AppListEntry>& entries);
    void append(const AppListEntry& entry);
    void removeAt(int row);

    /** Upper and lower case differ. */
    bool contains(const QString& bundlePath) const;
    QStringList bundlePaths() const;

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

  private:
    QList<AppListEntry> m_Entries;
};
