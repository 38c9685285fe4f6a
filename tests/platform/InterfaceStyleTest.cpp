// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/InterfaceStyle.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QImage>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QSlider>
#include <QSpinBox>
#include <QTest>
#include <QToolButton>
#include <string>

#include "platform/IconTheme.h"
#include "platform/style/InterfacePalette.h"
#include "tests/platform/Contrast.h"

namespace {

using Role = QPalette::ColorRole;

constexpr double textContrast = 4.5;
constexpr double controlContrast = 3;

class InterfaceStyleTest : public testing::TestWithParam<std::string> {
  protected:
    static void SetUpTestSuite() { QApplication::setStyle(new InterfaceStyle); }
    void SetUp() override { QApplication::setPalette(palette()); }

    static QPalette palette() {
        return GetParam() == "dark" ? InterfacePalette::dark() : InterfacePalette::light();
    }

    static QImage pictureOf(QWidget& widget) {
        widget.resize(widget.sizeHint());
        QImage image(widget.size(), QImage::Format_RGB32);
        image.fill(palette().color(Role::Window));
        widget.render(&image, {}, {}, QWidget::DrawChildren);
        return image;
    }

    /** The strongest contrast to the window in the first `depth` pixels of the line through the middle. */
    static double edgeContrast(QWidget& widget, int depth) {
        const QImage image = pictureOf(widget);
        const QColor ground = palette().color(Role::Window);
        double strongest = 1;
        for (int x = 0; x < depth; ++x) {
            strongest = std::max(strongest, contrast(image.pixelColor(x, image.height() / 2), ground));
        }
        return strongest;
    }
};

TEST_P(InterfaceStyleTest, TextReadsOnWhateverItStandsOn) {
    struct Pair {
        Role text, ground;
    };
    const std::initializer_list<Pair> pairs{
        Pair{Role::WindowText, Role::Window},         Pair{Role::Text, Role::Base},
        Pair{Role::Text, Role::AlternateBase},        Pair{Role::ButtonText, Role::Button},
        Pair{Role::PlaceholderText, Role::Window},    Pair{Role::PlaceholderText, Role::AlternateBase},
        Pair{Role::PlaceholderText, Role::Base},      Pair{Role::ToolTipText, Role::ToolTipBase},
        Pair{Role::HighlightedText, Role::Highlight}, Pair{Role::Link, Role::Window},
        Pair{Role::LinkVisited, Role::Window},        Pair{Role::BrightText, Role::Window}};
    const QPalette palette = InterfaceStyleTest::palette();
    for (const auto group : {QPalette::Active, QPalette::Inactive}) {
        for (const auto& [text, ground] : pairs) {
            EXPECT_GE(contrast(palette.color(group, text), palette.color(group, ground)), textContrast)
                << group << ' ' << text << " on " << ground;
        }
        EXPECT_GE(contrast(palette.color(group, Role::Text), InterfacePalette::tint(palette)), textContrast);
    }
}

TEST_P(InterfaceStyleTest, TheOutlineOfEveryControlCanBeSeen) {
    QLineEdit line;
    QSpinBox number;
    QDateTimeEdit date;
    QDateTimeEdit calendar;
    calendar.setCalendarPopup(true);
    QComboBox choice;
    QPushButton button("Press");
    QToolButton tool;
    tool.setText("Press");
    for (QWidget* widget :
         std::initializer_list<QWidget*>{&line, &number, &date, &calendar, &choice, &button, &tool}) {
        EXPECT_GE(edgeContrast(*widget, 1), controlContrast) << widget->metaObject()->className();
    }
    QCheckBox box("Choose");
    QRadioButton radio("Choose");
    QSlider slider(Qt::Horizontal);
    for (QAbstractButton* widget : std::initializer_list<QAbstractButton*>{&box, &radio}) {
        EXPECT_GE(edgeContrast(*widget, 5), controlContrast) << widget->metaObject()->className();
        widget->setChecked(true);
        EXPECT_GE(edgeContrast(*widget, 5), controlContrast) << widget->metaObject()->className();
    }
    EXPECT_GE(edgeContrast(slider, 5), controlContrast);
}

TEST_P(InterfaceStyleTest, AScrollBarsHandleReachesBothEndsAndStaysLargeEnoughToHold) {
    QScrollBar bar(Qt::Vertical);
    bar.setRange(0, 1'000'000'000);
    bar.setPageStep(10);
    bar.resize(bar.sizeHint().width(), 200);
    const auto handle = [&bar](int value) {
        bar.setValue(value);
        QStyleOptionSlider option;
        option.initFrom(&bar);
        option.orientation = Qt::Vertical;
        option.maximum = bar.maximum();
        option.pageStep = bar.pageStep();
        option.sliderPosition = value;
        return bar.style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, &bar);
    };
    EXPECT_EQ(handle(0).top(), 0);
    EXPECT_EQ(handle(bar.maximum()).bottom(), 199);
    EXPECT_GE(handle(bar.maximum() / 2).height(), 24);
}

TEST_P(InterfaceStyleTest, AnIndeterminateBarMovesByItself) {
    QProgressBar bar;
    bar.setRange(0, 0);
    bar.setTextVisible(false);
    bar.show();
    const QImage before = bar.grab().toImage();
    EXPECT_TRUE(QTest::qWaitFor([&] { return bar.grab().toImage() != before; }));
}

INSTANTIATE_TEST_SUITE_P(Palettes, InterfaceStyleTest, testing::Values("light", "dark"));

TEST(IconTheme, IconsInUseFollowTheDesktop) {
    IconTheme::install();
    IconTheme::follow(false);
    const QIcon icon = QIcon::fromTheme("configure");
    if (icon.isNull()) {
        GTEST_SKIP() << "no icons are installed here";
    }
    const QImage light = icon.pixmap(16).toImage();
    IconTheme::follow(true);
    EXPECT_NE(icon.pixmap(16).toImage(), light);
}

}  // namespace
