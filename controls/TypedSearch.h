// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QElapsedTimer>
#include <QString>
#include <functional>

class QAbstractItemModel;

/**
 * Finds rows by the beginning of a column's text as the user types it, key by key. Upper and lower case are
 * the same. Looks at texts that the model has at hand; a row without text is never found.
 */
class TypedSearch {
  public:
    /** The user paused no longer than between the keys of a word. */
    bool isGoingOn() const;

    /**
     * Adds `keys` to what was typed without a pause and returns the first row that begins so, from `current`
     * on and around the end; -1 for none. The first key, and the same one again and again, look behind
     * `current`. A `current` of -1 begins at the first row.
     */
    int find(const QAbstractItemModel& model, int column, int current, const QString& keys);

    /** As above, among `rows` texts. */
    int find(int rows, const std::function<QString(int row)>& textOf, int current, const QString& keys);

  private:
    QString m_Typed;
    QElapsedTimer m_SinceLastKey;
};
