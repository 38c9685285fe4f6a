// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/TileIcon.h"

#include <gtest/gtest.h>

#include <QImage>
#include <set>

#include "tests/platform/Contrast.h"

namespace {

QImage pictureOf(const QIcon& icon) {
    return icon.pixmap(32).toImage();
}

QColor groundOf(const QIcon& icon) {
    return pictureOf(icon).pixelColor(16, 3);
}

TEST(TileIcon, AWhiteSignReadsOnEveryHue) {
    std::set<QRgb> grounds;
    for (int i = 0; i < 500; ++i) {
        const QColor ground = groundOf(TileIcon::forPath("/usr/bin/" + QString::number(i)));
        EXPECT_GE(contrast(ground, Qt::white), 4.5) << ground.name().toStdString();
        grounds.insert(ground.rgb());
    }
    EXPECT_EQ(grounds.size(), 12);
    EXPECT_GE(contrast(groundOf(TileIcon::kernel()), Qt::white), 4.5);
    EXPECT_GE(contrast(groundOf(TileIcon::allApplications()), Qt::white), 4.5);
}

TEST(TileIcon, ThePathGivesTheHueAndTheNameTheLetterInEveryRun) {
    const QImage picture = pictureOf(TileIcon::forPath("/usr/bin/sshd"));
    EXPECT_EQ(picture, pictureOf(TileIcon::forPath("/usr/bin/sshd")));
    EXPECT_NE(picture, pictureOf(TileIcon::forPath("/usr/bin/curl")));
    EXPECT_EQ(groundOf(TileIcon::forPath("/usr/bin/sshd")), QColor(0x845fb7));
}

}  // namespace
