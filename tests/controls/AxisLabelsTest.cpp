// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/chart/AxisLabels.h"

#include <gtest/gtest.h>

#include <QDateTime>
#include <QFont>
#include <QLocale>
#include <cmath>

#include "controls/chart/GraphicMesh.h"

namespace {

constexpr double day = 86400;

QString date(double seconds, QLocale::Language language) {
    const QString format = language == QLocale::Japanese
                               ? QString::fromUtf8("yyyy\u5e74M\u6708d\u65e5dddd H\u6642mm\u5206ss\u79d2 ")
                               : QStringLiteral("dddd, MMMM d, yyyy 'at' h:mm:ss ");
    return QLocale(language).toString(
        QDateTime::fromMSecsSinceEpoch(qint64((1'795'280'000 + seconds) * 1000)), format);
}

TEST(AxisLabels, NeitherOverlapNorLeaveTheViewAndAreNeverMissing) {
    struct Case {
        double span;  // seconds
        double cell;
        int width;  // pixels
        QLocale::Language language;
    };
    for (const auto& [span, cell, width, language] :
         {Case{10, 1, 900, QLocale::English}, Case{3672, 3600, 900, QLocale::German},
          Case{3672, 3600, 300, QLocale::English}, Case{30 * day, 10 * day, 900, QLocale::German},
          Case{30 * day, 10 * day, 420, QLocale::Japanese}, Case{1000 * day, 1, 1600, QLocale::English},
          Case{50'000 * day, 1, 900, QLocale::Japanese}, Case{3540, 600, 130, QLocale::English}}) {
        int asked = 0;
        const AxisLabels labels(QFontMetricsF(QFont()), [&, language = language](double value) {
            ++asked;
            return date(value, language);
        });
        const auto shown = labels.horizontal({0, span, cell, 60, width - 12.0}, 6, width - 6.0, 3);
        EXPECT_FALSE(shown.empty());
        EXPECT_LT(asked, 200);
        double end = 0;
        for (const auto& label : shown) {
            EXPECT_GE(label.rect.left(), end);
            EXPECT_LE(label.rect.right(), width - 5);
            EXPECT_NEAR(std::remainder(label.value, cell), 0, 1e-6);
            end = label.rect.right() + 1;
        }
    }
}

TEST(AxisLabels, LongDatesAreBrokenAfterACommaAndShortTextsStayInOneLine) {
    const AxisLabels labels(QFontMetricsF(QFont()), [](double) { return QString(); });
    EXPECT_EQ(labels.wrapped("Saturday, November 21, 2026 at 17:00:30 ", 2),
              "Saturday, November 21,\n2026 at 17:00:30");
    EXPECT_EQ(labels.wrapped("120", 3), "120");
}

TEST(AxisLabels, AScaleHasThreeFiguresWhereverTheyHaveRoom) {
    const AxisLabels labels(QFontMetricsF(QFont()), [](double value) { return QString::number(value); });
    const auto values = [&](double to, double cell, qreal height) {
        std::vector<double> shown;
        for (const auto& label : labels.vertical({0, to, cell, height, 0}, 100)) {
            shown.push_back(label.value);
        }
        return shown;
    };
    EXPECT_EQ(values(256, 1024, 180), (std::vector<double>{0, 128, 256}));
    EXPECT_EQ(values(1280, 1024, 180), (std::vector<double>{0, 512, 1024}));
    EXPECT_EQ(values(256, 1024, 12), std::vector<double>{0});
}

TEST(AxisLabels, StayWhereTheyAreOnTheDataWhileTheChartScrolls) {
    const AxisLabels labels(QFontMetricsF(QFont()), [](double value) { return QString::number(value); });
    for (int second = 0; second < 60; ++second) {
        for (const auto& label :
             labels.horizontal({double(second), second + 120.0, 10, 60, 300}, 6, 306, 1)) {
            EXPECT_EQ(std::fmod(label.value, 30), 0) << second;
        }
    }
}

TEST(GraphicMesh, CoarsensThroughTheStepsOfTheClockAndNeverDrawsAThousandLines) {
    using Unit = GraphicMesh::Unit;
    EXPECT_EQ(GraphicMesh::coarsened(10, 3, Unit::Seconds), 10);
    EXPECT_EQ(GraphicMesh::coarsened(10, 12, Unit::Seconds), 30) << "15 is no multiple of 10";
    EXPECT_EQ(GraphicMesh::coarsened(1, 30 * day, Unit::Seconds), 50 * day);
    EXPECT_EQ(GraphicMesh::coarsened(8192, 20000, Unit::Values), 32768);
    EXPECT_EQ(GraphicMesh::coarsened(0, 1, Unit::Values), 0);
    EXPECT_EQ(GraphicMesh::lines(-10, 25, 10), (std::vector<double>{-10, 0, 10, 20}));
    EXPECT_TRUE(GraphicMesh::lines(0, 1e9, 1).empty());
    EXPECT_TRUE(GraphicMesh::lines(0, 1, 0).empty());
}

}  // namespace
