// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/style/FramePainter.h"

#include <QStyle>

#include "platform/style/Brush.h"
#include "platform/style/InterfacePalette.h"

namespace {

constexpr qreal tabMark = 2;  // pixels, the line under the chosen tab
constexpr qreal tabMargin = 8;
constexpr qreal barSeparatorMargin = 4;

/** Between `Mid` and `Dark`: surrounds without asking to be used. */
QColor frameColor(const QPalette& palette) {
    return InterfacePalette::mix(palette.color(QPalette::Mid), palette.color(QPalette::Dark), 0.25);
}

bool has(const QStyleOption& option, QStyle::StateFlag flag) {
    return option.state.testFlag(flag);
}

bool isAtBottom(QTabBar::Shape shape) {
    return shape == QTabBar::RoundedSouth || shape == QTabBar::TriangularSouth;
}

/** A hairline along the lower edge or the upper one. */
void drawEdge(QPainter& painter, const QStyleOption& option, bool isLower) {
    const QRectF rect = option.rect;
    Brush(painter).horizontalHairline(rect.left(), rect.right(), isLower ? rect.bottom() - 1 : rect.top(),
                                      option.palette.color(QPalette::Mid));
}

}  // namespace

void FramePainter::drawFrame(QPainter& painter, const QStyleOption& option) {
    const bool isFocused = has(option, QStyle::State_HasFocus);
    const QColor color = isFocused ? option.palette.color(QPalette::Link) : frameColor(option.palette);
    Brush(painter).panel(option.rect, Qt::transparent, color, 0);
}

void FramePainter::drawToolTip(QPainter& painter, const QStyleOption& option) {
    const QColor ground = option.palette.color(QPalette::ToolTipBase);
    const QColor text = option.palette.color(QPalette::ToolTipText);
    Brush(painter).panel(option.rect, ground, InterfacePalette::mix(ground, text, 0.3), 0);
}

void FramePainter::drawFocus(QPainter& painter, const QStyleOption& option) {
    Brush(painter).focusRing(option.rect, option.palette.color(QPalette::Link), Brush::radius - 1);
}

void FramePainter::drawTab(QPainter& painter, const QStyleOptionTab& tab) {
    const bool isChosen = has(tab, QStyle::State_Selected);
    const QRectF rect = tab.rect;
    Brush brush(painter);
    if (!isChosen && has(tab, QStyle::State_MouseOver) && has(tab, QStyle::State_Enabled)) {
        brush.panel(rect.adjusted(2, 3, -2, -4),
                    InterfacePalette::mix(tab.palette.color(QPalette::Window),
                                          tab.palette.color(QPalette::WindowText), 0.08));
    }
    if (isChosen) {
        const qreal y = isAtBottom(tab.shape) ? rect.top() : rect.bottom() - tabMark;
        brush.panel(QRectF(rect.left() + tabMargin, y, rect.width() - 2 * tabMargin, tabMark),
                    tab.palette.color(QPalette::Active, QPalette::Highlight), Qt::transparent, 1);
    }
}

void FramePainter::drawTabBase(QPainter& painter, const QStyleOptionTabBarBase& base) {
    drawEdge(painter, base, !isAtBottom(base.shape));
}

void FramePainter::drawTabPane(QPainter& painter, const QStyleOptionTabWidgetFrame& pane) {
    drawEdge(painter, pane, isAtBottom(pane.shape));
}

void FramePainter::drawSplitter(QPainter& painter, const QStyleOption& option) {
    const bool isLive = has(option, QStyle::State_MouseOver) || has(option, QStyle::State_Sunken);
    const QColor color =
        isLive ? option.palette.color(QPalette::Active, QPalette::Highlight) : frameColor(option.palette);
    const QRectF rect = option.rect;
    Brush brush(painter);
    if (has(option, QStyle::State_Horizontal)) {
        brush.verticalHairline(rect.center().x(), rect.top(), rect.bottom(), color);
    } else {
        brush.horizontalHairline(rect.left(), rect.right(), rect.center().y(), color);
    }
}

void FramePainter::drawBar(QPainter& painter, const QStyleOption& option) {
    painter.fillRect(option.rect, option.palette.window());
    drawEdge(painter, option, true);
}

void FramePainter::drawBarSeparator(QPainter& painter, const QStyleOption& option) {
    const QRectF rect = option.rect;
    const QColor color = frameColor(option.palette);
    Brush brush(painter);
    if (has(option, QStyle::State_Horizontal)) {
        brush.verticalHairline(rect.center().x(), rect.top() + barSeparatorMargin,
                               rect.bottom() - barSeparatorMargin, color);
    } else {
        brush.horizontalHairline(rect.left() + barSeparatorMargin, rect.right() - barSeparatorMargin,
                                 rect.center().y(), color);
    }
}
