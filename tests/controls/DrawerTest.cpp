// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/Drawer.h"

#include <gtest/gtest.h>

#include <QHBoxLayout>
#include <QPushButton>
#include <QTest>

namespace {

class DrawerTest : public testing::Test {
  protected:
    DrawerTest() {
        m_Neighbour->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
        m_Inner->setFixedWidth(280);
        m_Drawer->setContentView(m_Inner);
        auto* layout = new QHBoxLayout(&m_Window);
        layout->setContentsMargins({});
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

    QWidget m_Window;
    QPushButton* m_Neighbour = new QPushButton;
    Drawer* m_Drawer = new Drawer;
    QPushButton* m_Inner = new QPushButton;
    std::string m_Told;
};

TEST_F(DrawerTest, SlidesWhileItsContentKeepsItsWidthAndItsNeighbourGivesWaySteadily) {
    m_Drawer->toggle();
    EXPECT_EQ(m_Neighbour->width(), 900) << "no room is made before the first step";
    for (int last = 900; m_Neighbour->width() > 620 || m_Told != "willOpen didOpen "; QTest::qWait(5)) {
        ASSERT_LE(m_Neighbour->width(), last);
        ASSERT_EQ(m_Neighbour->width() + (m_Drawer->isVisible() ? m_Drawer->width() : 0), 900);
        ASSERT_EQ(m_Inner->width(), 280);
        last = m_Neighbour->width();
    }
}

TEST_F(DrawerTest, TurnsBackWithoutSayingThatItArrived) {
    m_Drawer->setOpen(true);
    m_Drawer->setOpen(false);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !m_Drawer->isVisible(); }));
    EXPECT_EQ(m_Told, "willOpen willClose didClose ");
}

TEST_F(DrawerTest, ListenersThatTurnItBackAtOnceAreObeyed) {
    QObject::connect(m_Drawer, &Drawer::willOpen, &m_Window, [this] { m_Drawer->setOpen(false); });
    m_Drawer->setOpen(true);
    EXPECT_FALSE(m_Drawer->isOpen() || m_Drawer->isVisible());
    EXPECT_EQ(m_Told, "willOpen willClose didClose ");
}

TEST_F(DrawerTest, AWindowThatIsClosedAmidSlideHearsNoMoreOfItAndFindsItOpen) {
    m_Drawer->setOpen(true);
    m_Window.close();
    QTest::qWait(250);
    EXPECT_EQ(m_Told, "willOpen ");
    m_Window.show();
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_Neighbour->width() == 620; }));
}

TEST_F(DrawerTest, TheTabKeyEntersItOnlyWhileItIsOpen) {
    m_Neighbour->setFocus();
    m_Drawer->setOpenAtOnce(true);
    QTest::keyClick(&m_Window, Qt::Key_Tab);
    EXPECT_EQ(m_Window.focusWidget(), m_Inner);
    m_Drawer->setOpenAtOnce(false);
    QTest::keyClick(&m_Window, Qt::Key_Tab);
    EXPECT_EQ(m_Window.focusWidget(), m_Neighbour);
    EXPECT_EQ(m_Told, "willOpen didOpen willClose didClose ");
}

}  // namespace
