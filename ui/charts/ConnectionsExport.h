// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QObject>
#include <QSaveFile>
#include <QTimer>
#include <cstdint>

#include "daemon/ConnectionInfo.h"
#include "ui/charts/ConnectionsTableModel.h"

/**
 * Writes all rows of a connections cursor to a file, by RFC 4180: a slice of rows at a turn of the event loop, so that
 * windows go on living meanwhile. The cursor's filter stays as it is until the end. The file takes the place of another
 * only when all of it is written; destroying the export before that leaves nothing behind. Main thread.
 */
class ConnectionsExport : public QObject {
    Q_OBJECT

  public:
    using Fetch = ConnectionsTableModel::Fetch;

    /** `connections` rows, from index 0 on. */
    ConnectionsExport(Fetch fetch, std::int32_t connections, QObject* parent = nullptr);

    /** Exactly one of `finished` and `failed` follows, the latter perhaps before this returns. */
    void start(const QString& path);

    /** The names of the fields that `record` gives. */
    static QByteArray header();

    /**
     * Dates in ISO 8601, local with their distance from UTC; bytes as integers; addresses in the usual notation. Texts
     * are quoted where they need it and else as they are: none of them comes from outside, so that none is a formula.
     */
    static QByteArray record(const ConnectionInfo& connection);

  signals:
    void progressed(int connections);
    void finished();

    /** `error` is a sentence for the user. */
    void failed(const QString& error);

  private:
    void writeSlice();
    void fail(const QString& error);

    Fetch m_Fetch;
    std::int32_t m_Count;
    std::int32_t m_Written = 0;
    QSaveFile m_File;
    QTimer m_Turn;
};
