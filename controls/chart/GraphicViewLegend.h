// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QRectF>
#include <QWidget>
#include <utility>

class GraphicSkyline;
class GraphicView;
class GraphicViewLegendItem;

/**
 * A box of items on a chart. Its frame is in the view's pixels with the origin at the lower left and y growing
 * upwards. It is always shown inside the view; in a view of which it would cover a good part it is hidden. Main thread.
 */
class GraphicViewLegend : public QWidget {
    Q_OBJECT

  public:
    /** What gives way when the view is resized; a sum of these. The other parts keep their size. */
    enum Autoresizing {
        MinXMargin = 1,    ///< left of the frame
        WidthSizable = 2,  ///< the box then hugs its items, centred in the frame, and makes room for others
        MaxXMargin = 4,    ///< right of it
        MinYMargin = 8,    ///< below it
        HeightSizable = 16,
        MaxYMargin = 32,  ///< above it
    };

    /** The view owns the legend. It begins with one item, which is empty and takes no room. */
    static GraphicViewLegend* legendWithGraphic(GraphicView* view, const QRectF& frame);

    GraphicView* graphic() const { return m_Graphic; }

    /** In the order in which they were added. The legend owns them; whoever deletes one takes it out. */
    QList<GraphicViewLegendItem*> items() const;

    /** Counts from the frame and the view's size of now on: set it when the view has been laid out. */
    void setAutoresizingMask(int mask);
    void setDropShadow(bool dropShadow);
    void setMovable(bool movable) { m_IsMovable = movable; }

    /** Where it wants to be in the view of now; inside a small view it may stand elsewhere. */
    QRectF frame() const;
    void setFrame(const QRectF& frame, bool needRepaint);

    /** Makes the frame as large as the items, with the same lower left corner. */
    void fitToItems();

    /** The text of the item that is bound to `line`, empty for none. */
    QString nameOfLine(unsigned line) const;

    /** Whether it is as wide as its items and stands in the middle of its frame. */
    bool isHugging() const { return (m_Mask & WidthSizable) != 0; }

    /** Goes to its place; the view calls it for all, first for those that others make room for. */
    void place();

    /**
     * Moves to the left or the right, where that takes it off the lines and off the other legends; stays where there is
     * no such place, and where the user has put it.
     */
    void keepClearOf(const GraphicSkyline& skyline);

    /** Draws itself where it stands in the view, if it is visible. */
    void drawOn(QPainter& painter) const;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    bool event(QEvent* event) override;

  private:
    explicit GraphicViewLegend(GraphicView* view);
    QSize itemsSize() const;
    bool isFree(const QRectF& box, const GraphicSkyline& skyline) const;
    std::pair<qreal, qreal> stretchFor(qreal y, qreal height) const;
    void placeItems();
    void drawBox(QPainter& painter) const;

    GraphicView* m_Graphic;
    QRectF m_Frame;     ///< as it was set
    QSizeF m_ViewSize;  ///< that the view had then
    int m_Mask = 0;
    bool m_HasDropShadow = false;
    bool m_IsMovable = false;
    QRect m_Box;            ///< what is painted without the shadow, in the view
    QPoint m_DragPosition;  ///< of the pointer, from the upper left corner, while it drags
    bool m_IsDragging = false;
    bool m_IsPlacedByUser = false;
    qreal m_Shift = 0;  ///< to the right of where the frame is, so that it covers no line
};
