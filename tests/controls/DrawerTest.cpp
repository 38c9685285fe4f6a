// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/Drawer.h"

#include <gtest/gtest.h>

#include <QHBoxLayout>
#include <QProxyStyle>
#include <QPushButton>
#include <QTest>

namespace {

class StillStyle : public QProxyStyle {
  public:
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* data) const override {
        return hint == SH_Widget_Animation_Duration ? 0 : QProxyStyle::styleHint(hint, option, widget, data);
    }
};

class DrawerTest : public testing::Test {
  protected:
    DrawerTest() {
        m_Neighbour->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
        m_Inner->setFixedWidth(280);
        m_Drawer->setContentView(m_Inner);
        auto* layout = new QHBoxLayout(&m_Window);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(0);
        layout->addWidget(m_Neighbour);
        layout->addWidget(m_Drawer);
        m_Window.resize(900, 300);
        for (const auto& [signal, name] : {std::pair(&Drawer::willOpen, "willOpen "),
                                           {&Drawer::didOpen, "didOpen "},
                                           {&Drawer::willClose, "willClose "},
                                           {&Drawer::didClose, "didClose "}}) {
            QObject::connect(m_Drawer, signal, &m_Window, [this, name = name] { m_Told += name; });
        }
        m_Window.show();
        QCoreApplication::processEvents();
    }

    bool isAmidSlide() const { return m_Neighbour->width() > 640 && m_Neighbour->width() < 880; }

    QWidget m_Window;
    QPushButton* m_Neighbour = new QPushButton;
    Drawer* m_Drawer = new Drawer;
    QPushButton* m_Inner = new QPushButton;
    std::string m_Told;
};

TEST_F(DrawerTest, SlidesWhileItsContentKeepsItsWidthAndItsNeighbourGivesWaySteadily) {
    EXPECT_FALSE(m_Drawer->isVisible());
    m_Drawer->toggle();
    EXPECT_TRUE(m_Drawer->isOpen());
    int steps = 0;
    for (int last = 900; m_Told != "willOpen didOpen "; QTest::qWait(5)) {
        steps += m_Neighbour->width() < last;
        EXPECT_LE(m_Neighbour->width(), last);
        EXPECT_EQ(m_Neighbour->width() + m_Drawer->width(), 900);
        EXPECT_EQ(m_Inner->width(), 280);
        last = m_Neighbour->width();
        ASSERT_LT(m_Told.size(), 20U) << m_Told;
    }
    EXPECT_GT(steps, 2);
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_Neighbour->width() == 620; }));
}

TEST_F(DrawerTest, TurnsBackHalfWayWithoutSayingThatItArrived) {
    m_Drawer->setOpen(true);
    ASSERT_TRUE(QTest::qWaitFor([&] { return isAmidSlide(); }));
    const int width = m_Neighbour->width();
    m_Drawer->setOpen(false);
    QCoreApplication::processEvents();
    EXPECT_GE(m_Neighbour->width(), width - 40) << "goes on from where it was";
    EXPECT_TRUE(QTest::qWaitFor([&] { return !m_Drawer->isVisible(); }));
    EXPECT_EQ(m_Told, "willOpen willClose didClose ");
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_Neighbour->width() == 900; }));
}

TEST_F(DrawerTest, OpensAndClosesAtOnceWhereAnimationsAreOff) {
    StillStyle style;
    m_Drawer->setStyle(&style);
    m_Drawer->setOpen(true);
    m_Drawer->setOpen(true);
    m_Drawer->setOpen(false);
    EXPECT_EQ(m_Told, "willOpen didOpen willClose didClose ");
    m_Drawer->setStyle(nullptr);
    m_Drawer->setOpenAtOnce(true);
    EXPECT_EQ(m_Told, "willOpen didOpen willClose didClose willOpen didOpen ");
}

TEST_F(DrawerTest, ListenersThatTurnItBackAtOnceAreObeyed) {
    QObject::connect(m_Drawer, &Drawer::willOpen, &m_Window, [this] { m_Drawer->setOpen(false); });
    m_Drawer->setOpen(true);
    EXPECT_FALSE(m_Drawer->isOpen() || m_Drawer->isVisible());
    EXPECT_EQ(m_Told, "willOpen willClose didClose ");
}

TEST_F(DrawerTest, AWindowThatIsClosedAmidSlideHearsNoMoreOfItAndFindsItOpen) {
    m_Drawer->setOpen(true);
    ASSERT_TRUE(QTest::qWaitFor([&] { return isAmidSlide(); }));
    m_Window.close();
    QTest::qWait(250);
    EXPECT_EQ(m_Told, "willOpen ");
    m_Window.show();
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_Neighbour->width() == 620; }));
    EXPECT_TRUE(m_Drawer->isVisible());
}

TEST_F(DrawerTest, TheTabKeyEntersItOnlyWhileItIsOpen) {
    m_Neighbour->setFocus();
    m_Window.activateWindow();
    QTest::keyClick(&m_Window, Qt::Key_Tab);
    EXPECT_EQ(m_Window.focusWidget(), m_Neighbour);
    m_Drawer->setOpenAtOnce(true);
    QTest::keyClick(&m_Window, Qt::Key_Tab);
    EXPECT_EQ(m_Window.focusWidget(), m_Inner);
    m_Drawer->setOpenAtOnce(false);
    EXPECT_EQ(m_Window.focusWidget(), m_Neighbour);
}

}  // namespace
