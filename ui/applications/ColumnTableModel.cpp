// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/applications/ColumnTableModel.h"

#include <cstddef>

int ColumnTableModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_Headers.size());
}

QVariant ColumnTableModel::alignment(int column) const {
    return QVariant(m_Headers[static_cast<std::size_t>(column)].side | Qt::AlignVCenter);
}

QVariant ColumnTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || section < 0 || section >= columnCount()) {
        return {};
    }
    const ColumnHeader& header = m_Headers[static_cast<std::size_t>(section)];
    switch (role) {
        case Qt::DisplayRole:
            return QString(header.text);
        case Qt::TextAlignmentRole:
            return alignment(section);
        case Qt::AccessibleTextRole:
            return QString(header.accessibleText != nullptr ? header.accessibleText : header.text);
        default:
            return {};
    }
}
