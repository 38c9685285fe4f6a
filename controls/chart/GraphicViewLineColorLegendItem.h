// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <optional>

#include "controls/chart/GraphicViewLegendItem.h"

class QAbstractButton;

/**
 * What a line's colour stands for: a swatch and a text. Where the user may choose the color, the swatch is a button
 * that opens a dialog; line and swatch follow while it is open, and go back when it is cancelled.
 */
class GraphicViewLineColorLegendItem : public GraphicViewLegendItem {
    Q_OBJECT

  public:
    /** The legend owns the item. */
    static GraphicViewLineColorLegendItem* itemWithLegend(GraphicViewLegend* legend);

    void setColor(const QColor& color);
    QColor color() const { return m_Color; }

    /** From then on the swatch has the line's color, and the line has this item's text for a name. */
    void setBindedGraphicLine(unsigned line);
    std::optional<unsigned> bindedGraphicLine() const { return m_Line; }

    void setText(const QString& text);
    QString text() const { return m_Text; }

    void setAllowSelectColor(bool isAllowed);

    void draw(QPainter& painter) const override;
    QSize sizeHint() const override;

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    explicit GraphicViewLineColorLegendItem(GraphicViewLegend* legend);
    void selectColor();
    void colorSelected(const QColor& color);
    void takeLineColor(unsigned line);

    QColor m_Color = Qt::gray;
    std::optional<unsigned> m_Line;
    QString m_Text;
    QAbstractButton* m_Swatch;
};
