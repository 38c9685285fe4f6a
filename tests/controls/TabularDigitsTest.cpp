// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/TabularDigits.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>

namespace {

/** Columns of pixels, from the left, that hold ink. */
QList<int> inkedColumns(const QString& number) {
    QImage image(200, 40, QImage::Format_Grayscale8);
    image.fill(Qt::white);
    QPainter painter(&image);
    TabularDigits(painter.font()).draw(painter, QRectF(0, 0, 190, 40), number);
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

TEST(TabularDigits, TheSamePlacesOfTwoNumbersStandBelowEachOther) {
    const QList<int> narrow = inkedColumns("8.125");
    const QList<int> wide = inkedColumns("41148.125");
    ASSERT_FALSE(narrow.isEmpty());
    EXPECT_EQ(wide.mid(wide.size() - narrow.size()), narrow);
    EXPECT_TRUE(narrow.last() > 180 && narrow.last() < 190) << narrow.last();
    EXPECT_EQ(TabularDigits(QFont("Inter", 10)).width("1.11"),
              TabularDigits(QFont("Inter", 10)).width("8.04"));
}

}  // namespace
