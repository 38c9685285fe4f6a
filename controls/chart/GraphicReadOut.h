// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPixmap>
#include <QWidget>
#include <optional>
#include <vector>

#include "controls/chart/GraphicLayout.h"

class GraphicView;

/**
 * Lies over a chart and tells the values of the point that is nearest to the pointer: a hairline, a mark on each
 * line and a card of text. The chart below is not drawn anew for it. Main thread.
 */
class GraphicReadOut : public QWidget {
    Q_OBJECT

  public:
    explicit GraphicReadOut(GraphicView* view);

    /** Reads out at a pixel of the view; away from the chart's area it goes. */
    void pointAt(const QPointF& position);

    /** Reads out the next point to the left (-1) or right (1); begins with the last one. */
    void step(int direction);

    void dismiss();
    bool isShown() const { return m_X.has_value(); }

    /** The chart was drawn anew, like this. A pointer that rests reads what is now below it. */
    void follow(const GraphicLayout& layout);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    struct Row {
        unsigned line;
        QPointF position;  ///< of the point, in pixels
        QString name;
        QString value;
    };

    void readAt(std::optional<float> x);
    std::optional<float> nearestX(double x) const;
    std::vector<Row> rows() const;
    QRectF cardRect(const QString& title, const std::vector<Row>& rows) const;
    void drawCard(QPainter& painter, const QString& title, const std::vector<Row>& rows) const;

    GraphicView& m_View;
    GraphicLayout m_Layout;
    std::optional<QPointF> m_Pointer;  ///< nothing while the keyboard leads
    std::optional<float> m_X;          ///< what is read out
};
