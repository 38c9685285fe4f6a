// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/chart/GraphicViewLineColorLegendItem.h"

#include <QAbstractButton>
#include <QColorDialog>
#include <QFontMetrics>
#include <QPainter>
#include <algorithm>

#include "controls/chart/GraphicPainter.h"
#include "controls/chart/GraphicView.h"
#include "controls/chart/GraphicViewLegend.h"

namespace {

// All in pixels.
constexpr int swatchSize = 20;  // that can be hit
constexpr qreal markRadius = 5;
constexpr int textGap = 4;

/** The swatch's button: the item draws the mark, this the ring around it that says that it can be pressed. */
class Swatch : public QAbstractButton {
  public:
    using QAbstractButton::QAbstractButton;

  protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        if (!isEnabled() || !(underMouse() || hasFocus())) {
            return;
        }
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(
            QPen(palette().color(hasFocus() ? QPalette::Highlight : QPalette::Mid), hasFocus() ? 2 : 1));
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 4, 4);
    }

    void enterEvent(QEnterEvent* /*event*/) override { update(); }
    void leaveEvent(QEvent* /*event*/) override { update(); }
};

}  // namespace

GraphicViewLineColorLegendItem* GraphicViewLineColorLegendItem::itemWithLegend(GraphicViewLegend* legend) {
    return new GraphicViewLineColorLegendItem(legend);
}

GraphicViewLineColorLegendItem::GraphicViewLineColorLegendItem(GraphicViewLegend* legend)
    : GraphicViewLegendItem(legend), m_Swatch(new Swatch(this)) {
    setAllowSelectColor(false);
    connect(m_Swatch, &QAbstractButton::clicked, this, &GraphicViewLineColorLegendItem::selectColor);
    connect(legend->graphic(), &GraphicView::lineColorChanged, this,
            &GraphicViewLineColorLegendItem::takeLineColor);
}

void GraphicViewLineColorLegendItem::setColor(const QColor& color) {
    m_Color = color;
    update();
}

void GraphicViewLineColorLegendItem::setBindedGraphicLine(unsigned line) {
    m_Line = line;
    takeLineColor(line);
}

void GraphicViewLineColorLegendItem::takeLineColor(unsigned line) {
    const QColor color = legend()->graphic()->lineColor(line);
    if (m_Line == line && color.isValid()) {
        setColor(color);
    }
}

void GraphicViewLineColorLegendItem::setText(const QString& text) {
    m_Text = text;
    m_Swatch->setAccessibleName(QStringLiteral("Color of %1").arg(text));
    contentChanged();
}

void GraphicViewLineColorLegendItem::setAllowSelectColor(bool isAllowed) {
    m_Swatch->setEnabled(isAllowed);
    m_Swatch->setFocusPolicy(isAllowed ? Qt::TabFocus : Qt::NoFocus);
    m_Swatch->setToolTip(isAllowed ? QStringLiteral("Change the color") : QString());
    m_Swatch->setAttribute(Qt::WA_TransparentForMouseEvents, !isAllowed);
}

void GraphicViewLineColorLegendItem::selectColor() {
    auto* dialog = new QColorDialog(m_Color, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setOption(QColorDialog::ShowAlphaChannel);
    dialog->setWindowTitle(QStringLiteral("Color of %1").arg(m_Text));
    connect(dialog, &QColorDialog::currentColorChanged, this, &GraphicViewLineColorLegendItem::colorSelected);
    connect(dialog, &QDialog::rejected, this, [this, former = m_Color] { colorSelected(former); });
    dialog->open();
}

void GraphicViewLineColorLegendItem::colorSelected(const QColor& color) {
    setColor(color);
    if (m_Line) {
        legend()->graphic()->setLineColor(*m_Line, color);
    }
}

void GraphicViewLineColorLegendItem::draw(QPainter& painter) const {
    QColor opaque = m_Color;
    opaque.setAlpha(255);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(opaque.darker(130), 1));
    painter.setBrush(opaque);
    GraphicPainter::drawMark(painter, QPointF(swatchSize / 2.0, height() / 2.0), markRadius,
                             m_Line.value_or(0));
    painter.setPen(palette().color(QPalette::WindowText));
    painter.setFont(font());
    const QRect room = rect().adjusted(swatchSize + textGap, 0, 0, 0);
    painter.drawText(room, Qt::AlignLeft | Qt::AlignVCenter,
                     fontMetrics().elidedText(m_Text, Qt::ElideRight, room.width()));
}

QSize GraphicViewLineColorLegendItem::sizeHint() const {
    return {swatchSize + textGap + fontMetrics().horizontalAdvance(m_Text) + 1,
            std::max(swatchSize, fontMetrics().height())};
}

void GraphicViewLineColorLegendItem::resizeEvent(QResizeEvent* event) {
    GraphicViewLegendItem::resizeEvent(event);
    m_Swatch->setGeometry(0, (height() - swatchSize) / 2, swatchSize, swatchSize);
}
