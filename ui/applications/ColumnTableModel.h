// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractTableModel>
#include <span>

/** A table whose columns are listed once: what their headers say, and on which side header and cells stand. */
class ColumnTableModel : public QAbstractTableModel {
  public:
    struct ColumnHeader {
        const char* text;
        Qt::Alignment side = Qt::AlignLeft;
        const char* accessibleText = nullptr;  ///< of a header without a text
    };

    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  protected:
    /** `headers` outlive the model; a column's number is its place among them. */
    ColumnTableModel(std::span<const ColumnHeader> headers, QObject* parent)
        : QAbstractTableModel(parent), m_Headers(headers) {}

    /** What header and cells have in `Qt::TextAlignmentRole`. */
    QVariant alignment(int column) const;

  private:
    const std::span<const ColumnHeader> m_Headers;
};
