// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>

class GraphicView;

/** A chart as a file. Files are replaced as a whole or not at all. Main thread. */
class GraphicExport {
  public:
    explicit GraphicExport(GraphicView& view) : m_View(view) {}

    /** At twice the size at least, so that it stays crisp. */
    QImage picture() const;

    /** PNG, or SVG or PDF by the suffix. Returns what went wrong, empty for nothing. */
    QString savePicture(const QString& path) const;

    QString savePoints(const QString& path) const;

    /**
     * The visible points by RFC 4180: a header with the values' unit, then one record for each X, in ISO 8601 where X is
     * an instant, with the lines' values as integers; a line without a point there has an empty field.
     */
    QByteArray points() const;

  private:
    QByteArray header() const;

    GraphicView& m_View;
};
