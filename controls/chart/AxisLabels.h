// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFontMetricsF>
#include <QRectF>
#include <QString>
#include <functional>
#include <vector>

/**
 * Chooses which lines of a grid get a label and where it goes. No label overlaps another one or is clipped: they
 * are thinned out, wrapped and, when even one alone has no room, elided. Which ones remain depends on their
 * values only, so that labels do not flicker while a chart scrolls.
 */
class AxisLabels {
  public:
    struct Label {
        double value;
        QRectF rect;   ///< of the text, in pixels
        QString text;  ///< lines separated by \n
    };

    /** A piece of an axis and the pixels that it is drawn on; along Y `begin` is greater than `end`. */
    struct Axis {
        double from;
        double to;
        double cell;  ///< of the grid
        qreal begin;
        qreal end;

        qreal pixel(double value) const { return begin + (value - from) / (to - from) * (end - begin); }
        double valuesPerPixel() const { return (to - from) / std::abs(end - begin); }
    };

    using Text = std::function<QString(double)>;

    AxisLabels(const QFontMetricsF& metrics, Text text);

    /**
     * Labels centred below the lines of an X axis, with their upper edge at 0, between two pixels, in as few
     * lines of text as show a good part of them and at most `maximumLines`.
     */
    std::vector<Label> horizontal(const Axis& axis, qreal left, qreal right, int maximumLines) const;

    /**
     * Labels beside the lines of a Y axis, with their right edge at 0 and at most `width` wide; between the lines, too,
     * where there would be but two.
     */
    std::vector<Label> vertical(const Axis& axis, qreal width) const;

    /** `text` in at most `lines` lines, narrow, broken after a comma rather than elsewhere. */
    QString wrapped(const QString& text, int lines) const;

  private:
    std::vector<Label> withLines(const Axis& axis, qreal left, qreal right, int lines) const;
    std::vector<Label> placed(const Axis& axis, double step, qreal left, qreal right, int lines) const;
    Label label(double value, int lines, qreal width) const;
    qreal textWidth(const QString& text) const;

    QFontMetricsF m_Metrics;
    Text m_Text;
};
