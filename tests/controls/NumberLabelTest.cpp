// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/NumberLabel.h"

#include <gtest/gtest.h>

#include <QImage>

namespace {

/** Where a label's ink is, in its own coordinates. */
QRect ink(QLabel& label) {
    label.resize(120, label.property("tall").toBool() ? 41 : 24);
    QImage image(label.size(), QImage::Format_RGB32);
    image.fill(Qt::white);
    label.render(&image, {}, {}, QWidget::RenderFlags());
    QRect found;
    for (int x = 0; x < image.width(); ++x) {
        for (int y = 0; y < image.height(); ++y) {
            if (image.pixelColor(x, y).lightness() < 250) {
                found |= QRect(x, y, 1, 1);
            }
        }
    }
    return found;
}

TEST(NumberLabel, StandsOnTheBaselineOfALabelBesideIt) {
    for (const int pointSize : {8, 9, 10, 11, 13, 20}) {
        for (const bool isTall : {false, true}) {
            QLabel plain("4");
            NumberLabel number;
            number.setText("4");
            for (QLabel* label : {&plain, static_cast<QLabel*>(&number)}) {
                label->setFont(QFont("Inter", pointSize));
                label->setProperty("tall", isTall);
            }
            EXPECT_EQ(ink(number).bottom(), ink(plain).bottom()) << pointSize << isTall;
            EXPECT_EQ(ink(number).height(), ink(plain).height()) << pointSize << isTall;
        }
    }
}

TEST(NumberLabel, ItsWidthDependsOnThePlacesAloneAndADashStandsAtTheRight) {
    NumberLabel label;
    label.setFont(QFont("Inter", 10));
    label.setText("1111.111");
    const QSize narrow = label.sizeHint();
    EXPECT_GE(ink(label).right(), 112);
    label.setText("4040.404");
    EXPECT_EQ(label.sizeHint(), narrow);
    label.setText("-");
    EXPECT_GE(ink(label).left(), 108);
}

}  // namespace
