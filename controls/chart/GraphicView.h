// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QPixmap>
#include <QWidget>
#include <memory>

#include "controls/chart/GraphicScene.h"

class GraphicLayout;
class GraphicPlot;
class GraphicReadOut;
class GraphicViewLegend;

/**
 * A chart of lines over a common X axis in seconds. Coordinates are single precision; lines are counted from 0 and
 * axes are 0 for X and 1 for Y. Calls for a line that does not exist change nothing.
 *
 * Changes are drawn together, when the event loop comes to it and the chart can be seen; `display` draws at once.
 * The pointer, or Left and Right with the focus, reads out the nearest point. The context menu saves and copies the
 * picture and exports the points. Legends are its children. Main thread.
 */
class GraphicView : public QWidget {
    Q_OBJECT

  public:
    explicit GraphicView(QWidget* parent = nullptr);
    ~GraphicView() override;

    /** Where texts come from: it must outlive the view or be taken back with null. */
    void setDelegate(GraphicViewDelegate* delegate);

    void appendLine();
    unsigned lineCount() const;
    void setLineColor(unsigned line, const QColor& color);
    QColor lineColor(unsigned line) const;  ///< the user may have changed it; invalid for no line

    /** 1: with a faint fill down to zero; anything else: the line alone. */
    void setLineStyle(unsigned line, int style);
    void setLineDropShadow(unsigned line, bool dropShadow);

    /** The text of the legend's item that is bound to `line`, or "Line 1". */
    QString lineName(unsigned line) const;

    /** Points are kept in the order of X; one that is not finite is left out. */
    void addPointToLine(unsigned line, const QPointF& point);
    void clearLine(unsigned line);

    /** Drops the points left of the viewport (direction 0) or right of it (1). */
    void removeInvisiblePoints(unsigned line, int direction);

    /** The visible part: x and y are the lower left point, width and height the spans. */
    QRectF viewport() const { return m_Scene.viewport; }
    void setViewport(const QRectF& viewport);

    /**
     * Fits the viewport's height to all points: from zero, or the lowest, to a quarter of a grid row above the highest,
     * and at least one row. From then on legends that the user has not moved keep off the lines where they can; in a
     * chart that moves they would never come to rest.
     */
    void recalcVisibleHeight();

    /** The grid's steps in data units; 0 for no grid along that axis. */
    QSizeF meshCellSize() const { return m_Scene.meshCellSize; }
    void setMeshCellSize(const QSizeF& size);

    void setXAxeDescription(const QString& description);
    void setYAxeDescription(const QString& description);

    /** A hairline, and on X a mark on each line that has a point there. */
    void setSelectionForAxe(int axe, float point);

    /** A shaded stretch, in either order; it stays visible however short it is. */
    void setSelectionForAxe(int axe, float from, float to);
    void clearSelection();

    /** Between true and false nothing is drawn anew, whatever happens: the view keeps its last picture. */
    void setUpdatesDisabled(bool isDisabled);

    /** Draws what has changed before it returns. */
    void display();

    /** Opacity of the background, 0 to 1. */
    void setBGAlpha(float alpha);

    /** What is shown, in a sentence or two, for those who cannot see it. */
    QString summary() const;

    const GraphicScene& scene() const { return m_Scene; }
    QList<GraphicViewLegend*> legends() const;

    /** After the view's size or one of them has changed. */
    void placeLegends();

    /** Draws chart and legends as they are on `device`, opaque, in logical pixels of this widget's size. */
    void drawOn(QPaintDevice& device);

    /** The pointer is on something else. */
    void dismissReadOut();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  signals:
    void lineColorChanged(unsigned line);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

  private:
    GraphicScene::Line* lineAt(unsigned line);
    void changed();
    void redraw();
    QList<GraphicViewLegend*> legendsToPlace() const;

    GraphicScene m_Scene;
    std::unique_ptr<GraphicPlot> m_Plot;
    GraphicReadOut* m_ReadOut;
    QPixmap m_Picture;  ///< as it was drawn the last time
    float m_BackgroundAlpha = 1;
    bool m_AreLegendsKeptClear = false;  ///< of the lines, which stay where they are from now on
    bool m_AreLegendsInDoubt = false;    ///< they may cover lines where they need not
    bool m_IsStale = true;               ///< the picture no longer shows what it should
    bool m_AreUpdatesDisabled = false;
};
