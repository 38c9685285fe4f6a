// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/style/RangePainter.h"

#include <QStyle>
#include <algorithm>
#include <cmath>

#include "platform/style/Brush.h"
#include "platform/style/InterfacePalette.h"

namespace {

constexpr qreal trackThickness = 4;
constexpr qreal handleDiameter = 16;
constexpr int progressTextGap = 8;
constexpr qreal busyShare = 0.3;  // of an indeterminate bar that is lit
constexpr qreal scrollMargin = 3;
constexpr qreal scrollHoverMargin = 2;
constexpr int scrollHandleLength = 32;  // pixels at least

QColor trackColor(const QPalette& palette) {
    return InterfacePalette::mix(palette.color(QPalette::Window), palette.color(QPalette::WindowText), 0.2);
}

bool isLive(const QStyleOption& option) {
    return option.state.testFlag(QStyle::State_Enabled) && option.state.testFlag(QStyle::State_MouseOver);
}

QRectF progressTrack(const QStyleOptionProgressBar& bar) {
    QRectF track(bar.rect);
    if (bar.textVisible && !bar.text.isEmpty()) {
        const int widest = std::max(bar.fontMetrics.horizontalAdvance(QStringLiteral("100%")),
                                    bar.fontMetrics.horizontalAdvance(bar.text));
        track.setRight(track.right() - widest - progressTextGap);
    }
    const qreal thickness = std::min(trackThickness, track.height());
    track.setTop(track.top() + std::floor((track.height() - thickness) / 2));
    track.setHeight(thickness);
    return track;
}

/** Comes in from the left and leaves to the right. */
QRectF busyPart(const QRectF& track, qreal phase) {
    const qreal width = track.width() * busyShare;
    const qreal left = track.left() - width + (track.width() + width) * phase;
    return QRectF(left, track.top(), width, track.height()).intersected(track);
}

QRectF donePart(const QStyleOptionProgressBar& bar, const QRectF& track) {
    const double range = static_cast<double>(bar.maximum) - bar.minimum;
    const double part = std::clamp((static_cast<double>(bar.progress) - bar.minimum) / range, 0.0, 1.0);
    QRectF done = track;
    done.setWidth(track.width() * part);
    return done;
}

QRectF sliderTrack(const QStyleOptionSlider& slider) {
    const QRectF rect = slider.rect;
    constexpr qreal half = trackThickness / 2;
    const bool isHorizontal = slider.orientation == Qt::Horizontal;
    return isHorizontal ? QRectF(rect.left(), rect.center().y() - half, rect.width(), trackThickness)
                        : QRectF(rect.center().x() - half, rect.top(), trackThickness, rect.height());
}

/** The part of the track from its beginning to the handle; a vertical one begins below. */
QRectF sliderDone(const QStyleOptionSlider& slider, QRectF track, const QPointF& handle) {
    const bool isHorizontal = slider.orientation == Qt::Horizontal;
    if (isHorizontal && slider.upsideDown) {
        track.setLeft(handle.x());
    } else if (isHorizontal) {
        track.setRight(handle.x());
    } else if (slider.upsideDown) {
        track.setTop(handle.y());
    } else {
        track.setBottom(handle.y());
    }
    return track;
}

/** In proportion to the part that is seen, but never too short to hold. */
QRect scrollHandle(const QStyleOptionSlider& bar) {
    const bool isVertical = bar.orientation == Qt::Vertical;
    const int room = isVertical ? bar.rect.height() : bar.rect.width();
    const qint64 range = static_cast<qint64>(bar.maximum) - bar.minimum;
    const qint64 fitting =
        range > 0 ? static_cast<qint64>(room) * bar.pageStep / (range + bar.pageStep) : room;
    const int length =
        static_cast<int>(std::clamp<qint64>(fitting, std::min(scrollHandleLength, room), room));
    const int start = QStyle::sliderPositionFromValue(bar.minimum, bar.maximum, bar.sliderPosition,
                                                      room - length, bar.upsideDown);
    return isVertical ? QRect(bar.rect.left(), bar.rect.top() + start, bar.rect.width(), length)
                      : QRect(bar.rect.left() + start, bar.rect.top(), length, bar.rect.height());
}

/** The room from the track's beginning to the handle, or from the handle to its end. */
QRect scrollPage(const QStyleOptionSlider& bar, bool isBefore) {
    const QRect handle = scrollHandle(bar);
    QRect page = bar.rect;
    if (bar.orientation == Qt::Vertical) {
        isBefore ? page.setBottom(handle.top() - 1) : page.setTop(handle.bottom() + 1);
    } else {
        isBefore ? page.setRight(handle.left() - 1) : page.setLeft(handle.right() + 1);
    }
    return page;
}

}  // namespace

void RangePainter::drawProgress(QPainter& painter, const QStyleOptionProgressBar& bar, qreal phase) {
    const QRectF track = progressTrack(bar);
    const bool isBusy = bar.maximum <= bar.minimum;
    Brush brush(painter);
    brush.panel(track, trackColor(bar.palette), Qt::transparent, trackThickness / 2);
    brush.panel(isBusy ? busyPart(track, phase) : donePart(bar, track),
                bar.palette.color(QPalette::Active, QPalette::Highlight), Qt::transparent,
                trackThickness / 2);
    if (track.width() < bar.rect.width()) {
        painter.setPen(bar.palette.color(QPalette::WindowText));
        painter.drawText(bar.rect, Qt::AlignRight | Qt::AlignVCenter, bar.text);
    }
}

void RangePainter::drawSlider(QPainter& painter, const QStyleOptionSlider& slider, const QRect& handle) {
    const QPalette& palette = slider.palette;
    const QRectF track = sliderTrack(slider);
    const QPointF center = QRectF(handle).center();
    const QPointF half(handleDiameter / 2, handleDiameter / 2);
    const QRectF knob(center - half, center + half);
    Brush brush(painter);
    brush.panel(track, palette.color(QPalette::Dark), Qt::transparent, trackThickness / 2);
    brush.panel(sliderDone(slider, track, center), palette.color(QPalette::Highlight), Qt::transparent,
                trackThickness / 2);
    brush.disc(knob, palette.color(isLive(slider) ? QPalette::Midlight : QPalette::Button),
               palette.color(QPalette::Dark));
    if (slider.state.testFlag(QStyle::State_HasFocus)) {
        brush.focusRing(knob, palette.color(QPalette::Link), handleDiameter / 2);
    }
}

void RangePainter::drawScrollBar(QPainter& painter, const QStyleOptionSlider& bar, const QRect& handle,
                                 const QColor& ground) {
    painter.fillRect(bar.rect, ground);
    if (bar.maximum <= bar.minimum) {
        return;
    }
    const bool isStrong = isLive(bar) || bar.state.testFlag(QStyle::State_Sunken);
    const qreal margin = isStrong ? scrollHoverMargin : scrollMargin;
    const QRectF room = bar.orientation == Qt::Vertical ? QRectF(handle).adjusted(margin, 1, -margin, -1)
                                                        : QRectF(handle).adjusted(1, margin, -1, -margin);
    const QColor outline = bar.palette.color(QPalette::Dark);
    const QColor color =
        isStrong ? InterfacePalette::mix(outline, bar.palette.color(QPalette::Text), 0.25) : outline;
    Brush(painter).panel(room, color, Qt::transparent, std::min(room.width(), room.height()) / 2);
}

QRect RangePainter::scrollBarRoom(const QStyleOptionSlider& bar, QStyle::SubControl part) {
    switch (part) {
        case QStyle::SC_ScrollBarSlider:
            return scrollHandle(bar);
        case QStyle::SC_ScrollBarGroove:
            return bar.rect;
        case QStyle::SC_ScrollBarSubPage:
            return scrollPage(bar, !bar.upsideDown);
        case QStyle::SC_ScrollBarAddPage:
            return scrollPage(bar, bar.upsideDown);
        default:
            return {};
    }
}
