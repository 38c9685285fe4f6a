// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/AnimatedTabView.h"

#include <gtest/gtest.h>

#include <QLabel>
#include <QTest>

#include "controls/ToolWindow.h"

namespace {

TEST(AnimatedTabView, QuickSwitchesEndOnTheLastPageThatWasAskedFor) {
    AnimatedTabView tabs;
    for (const char* text : {"chart", "range"}) {
        tabs.addWidget(new QLabel(text));
    }
    tabs.resize(300, 200);
    tabs.show();
    QCoreApplication::processEvents();
    for (int i = 0; i < 7; ++i) {
        i % 2 == 0 ? tabs.selectLastTabViewItem() : tabs.selectFirstTabViewItem();
        EXPECT_EQ(tabs.currentIndex(), 1 - i % 2);
        QTest::qWait(i * 10);
    }
    EXPECT_TRUE(tabs.isSliding());
    ASSERT_TRUE(QTest::qWaitFor([&] { return !tabs.isSliding(); }));
    EXPECT_TRUE(tabs.widget(1)->isVisible());
    EXPECT_FALSE(tabs.widget(0)->isVisible());
    const QImage settled = tabs.grab().toImage();
    tabs.selectTabViewItem(5);
    EXPECT_EQ(tabs.grab().toImage(), settled);
    tabs.setTransitionType(AnimatedTabView::NoTransition);
    tabs.selectFirstTabViewItem();
    EXPECT_FALSE(tabs.isSliding());
}

TEST(ToolWindow, StaysShownWhenItBecomesStickyAndReportsItsClosingOnce) {
    ToolWindow window;
    int closed = 0;
    QObject::connect(&window, &ToolWindow::willClose, &window, [&] { ++closed; });
    window.show();
    window.setStickied(true);
    EXPECT_TRUE(window.isVisible());
    EXPECT_TRUE(window.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    EXPECT_EQ(closed, 0);
    window.close();
    EXPECT_EQ(closed, 1);
}

}  // namespace
