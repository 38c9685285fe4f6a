// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/TypedSearch.h"

#include <QAbstractItemModel>
#include <QApplication>
#include <algorithm>

bool TypedSearch::isGoingOn() const {
    return m_SinceLastKey.isValid() && !m_SinceLastKey.hasExpired(QApplication::keyboardInputInterval());
}

int TypedSearch::find(const QAbstractItemModel& model, int column, int current, const QString& keys) {
    const auto textOf = [&](int row) { return model.index(row, column).data().toString(); };
    return find(model.rowCount(), textOf, current, keys);
}

int TypedSearch::find(int rows, const std::function<QString(int row)>& textOf, int current,
                      const QString& keys) {
    m_Typed = isGoingOn() ? m_Typed + keys : keys;
    m_SinceLastKey.start();
    const bool isOneKey = !m_Typed.isEmpty() && m_Typed.count(m_Typed.front()) == m_Typed.size();
    const QString beginning = isOneKey ? m_Typed.left(1) : m_Typed;
    const int first = isOneKey ? current + 1 : std::max(current, 0);
    for (int step = 0; step < rows && !beginning.isEmpty(); ++step) {
        const int row = (first + step) % rows;
        if (textOf(row).startsWith(beginning, Qt::CaseInsensitive)) {
            return row;
        }
    }
    return -1;
}
