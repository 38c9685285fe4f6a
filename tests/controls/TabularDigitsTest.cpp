// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/TabularDigits.h"

#include <gtest/gtest.h>

#include <QFontMetricsF>
#include <QImage>
#include <QPainter>

namespace {

/** Columns of pixels, from the left, that hold ink. */
QList<int> inkedColumns(const QString& number) {
    QImage image(200, 40, QImage::Format_Grayscale8);
    image.fill(Qt::white);
    QPainter painter(&image);
    const QFont font = painter.font();
    TabularDigits(font).draw(painter, QRectF(0, 0, 190, 40), number);
    painter.end();
    QList<int> columns;
    for (int x = 0; x < image.width(); ++x) {
        for (int y = 0; y < image.height(); ++y) {
            if (image.pixelColor(x, y).lightness() < 200) {
                columns.append(x);
                break;
            }
        }
    }
    return columns;
}

TEST(TabularDigits, NarrowDigitsTakeAsMuchRoomAsWideOnes) {
    const TabularDigits digits{QFont("Inter", 10)};
    EXPECT_DOUBLE_EQ(digits.width("1111.111"), digits.width("8048.604"));
    EXPECT_GE(digits.width("4"), QFontMetricsF(QFont("Inter", 10)).horizontalAdvance("4"));
}

TEST(TabularDigits, ANumberEndsAtTheRightEdgeAndStaysInside) {
    const QList<int> one = inkedColumns("8.125");
    const QList<int> two = inkedColumns("48.125");
    ASSERT_FALSE(one.isEmpty());
    EXPECT_LT(one.last(), 190);
    EXPECT_GT(one.last(), 180);
    EXPECT_EQ(two.mid(two.size() - one.size()), one);  // the same digits on the same pixels
}

}  // namespace
