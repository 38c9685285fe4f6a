// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/charts/TrafficGraphic.h"

#include <QColor>
#include <QLocale>
#include <algorithm>
#include <array>
#include <cmath>

#include "controls/chart/GraphicView.h"
#include "controls/chart/GraphicViewGraphicTitleLegendItem.h"
#include "controls/chart/GraphicViewLegend.h"
#include "controls/chart/GraphicViewLineColorLegendItem.h"
#include "ui/charts/TrafficFormat.h"

namespace {

constexpr int filledStyle = 1;
constexpr double megabitsPerByte = 8.0 * 9.5367431640625e-07;  // 8 bits, 2^-20

// In pixels.
constexpr int colorLegendMargin = 20;
constexpr int titleMargin = 10;
constexpr int titleWidth = 220;

void addLineItem(GraphicViewLegend* legend, unsigned line, const QString& text) {
    auto* item = GraphicViewLineColorLegendItem::itemWithLegend(legend);
    item->setColor(legend->graphic()->lineColor(line));
    item->setBindedGraphicLine(line);
    item->setText(text);
    item->setAllowSelectColor(true);
}

GraphicViewLegend* addColorLegend(GraphicView& graphic, const QSizeF& size) {
    auto* legend = GraphicViewLegend::legendWithGraphic(&graphic, QRectF({0, 0}, size));
    legend->setAutoresizingMask(GraphicViewLegend::MinXMargin | GraphicViewLegend::MinYMargin);
    legend->setDropShadow(true);
    legend->setMovable(true);
    addLineItem(legend, TrafficGraphic::ReceivedLine, "Received");
    addLineItem(legend, TrafficGraphic::SentLine, "Sent");
    legend->fitToItems();
    const QSizeF fitted = legend->frame().size();
    legend->setFrame(QRectF(QPointF(graphic.width() - fitted.width() - colorLegendMargin,
                                    graphic.height() - fitted.height() - colorLegendMargin),
                            fitted),
                     false);
    return legend;
}

void addTitleLegend(GraphicView& graphic, const QRectF& frame, const QString& title) {
    auto* legend = GraphicViewLegend::legendWithGraphic(&graphic, frame);
    delete legend->items().first();  // the one that every legend begins with
    GraphicViewGraphicTitleLegendItem::itemWithLegend(legend)->setTitle(title);
    legend->setDropShadow(true);
    legend->setAutoresizingMask(GraphicViewLegend::WidthSizable | GraphicViewLegend::MinYMargin);
    legend->fitToItems();
    const qreal height = legend->frame().height();
    legend->setFrame(QRectF((graphic.width() - titleWidth) * 0.5, graphic.height() - height - titleMargin,
                            titleWidth, height),
                     false);
}

}  // namespace

void TrafficGraphic::appendLines(GraphicView& graphic, bool hasDropShadow) {
    constexpr std::array lines{ReceivedLine, SentLine};
    std::ranges::for_each(lines, [&](Line) { graphic.appendLine(); });
    if (hasDropShadow) {
        std::ranges::for_each(lines, [&](Line line) { graphic.setLineDropShadow(line, true); });
    }
    std::ranges::for_each(lines, [&](Line line) { graphic.setLineStyle(line, filledStyle); });
    graphic.setLineColor(ReceivedLine, QColor::fromRgbF(0.1F, 1.0F, 0.1F, 0.7F));
    graphic.setLineColor(SentLine, QColor::fromRgbF(1.0F, 0.1F, 0.1F, 0.7F));
}

void TrafficGraphic::addLegends(GraphicView& graphic, const QSizeF& colorLegendSize, const QString& title) {
    const GraphicViewLegend* colors = addColorLegend(graphic, colorLegendSize);
    addTitleLegend(graphic, colors->frame(), title);
}

QString TrafficGraphic::bytesToMegabitsString(double bytes) {
    return megabytesToNSString(bytes * megabitsPerByte);
}

/** Like every other number of the program, in no particular locale. */
QString TrafficGraphic::bytesToReadableString(double bytes) {
    return QLocale::c()
        .formattedDataSize(std::llround(bytes), 1, QLocale::DataSizeTraditionalFormat)
        .replace("bytes", "B");
}
