// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/NumberLabel.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QRegion>

namespace {

/** Where a label of this size has ink, in its own coordinates. */
QRect ink(QLabel& label, const QSize& size) {
    label.resize(size);
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::white);
    label.render(&image, {}, {}, QWidget::RenderFlags());
    const QImage mask = image.createMaskFromColor(qRgb(255, 255, 255), Qt::MaskOutColor);
    return QRegion(QBitmap::fromImage(mask)).boundingRect();
}

TEST(NumberLabel, StandsOnTheBaselineOfALabelBesideItAtTheRight) {
    for (const int pointSize : {8, 9, 10, 11, 13, 20}) {
        for (const QSize& size : {QSize(120, 24), QSize(120, 41)}) {
            QLabel plain("4");
            NumberLabel number;
            number.setText("4");
            plain.setFont(QFont("Inter", pointSize));
            number.setFont(plain.font());
            EXPECT_EQ(ink(number, size).bottom(), ink(plain, size).bottom()) << pointSize;
            EXPECT_EQ(ink(number, size).height(), ink(plain, size).height()) << pointSize;
            EXPECT_GE(ink(number, size).right(), 116) << pointSize;
        }
    }
}

}  // namespace
