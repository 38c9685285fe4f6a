// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/main/MainController.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QTest>
#include <QToolButton>
#include <atomic>

#include "controls/TableView.h"
#include "daemon/DaemonConnection.h"
#include "protocol/DaemonApplicationInfo.h"
#include "protocol/DaemonTotalStatisticInfo.h"
#include "tests/support/DaemonTest.h"
#include "ui/charts/ConnectionsGraphicController.h"
#include "ui/charts/RealtimeGraphic.h"

namespace {

using Model = ApplicationsTableModel;

/** A window on a scripted daemon that names an application by the order that it was told and by its index. */
class MainControllerTest : public DaemonTest {
  protected:
    void begin() override {
        m_Controller = std::make_unique<MainController>();
        for (QWidget* window : QApplication::topLevelWidgets()) {
            m_Window = window->objectName() == "m_Window" ? window : m_Window;
        }
        ASSERT_NE(m_Window, nullptr);
        m_Table = m_Window->findChild<TableView*>();
    }

    bool answer(const LinkPeer::Request& request, BinarySerializer& body) {
        switch (request.header.messageType) {
            case 11:
                return totals().SerializeTo(body);
            case 3:
            case 5:
            case 7:
            case 9:
                m_Protocol = intAt(request.body, request.body.size() - 4);
                body.WriteLongLong(0);
                return true;
            case 13:
            case 20:
                body.WriteInt(7);
                return true;
            case 23:
            case 27:
                body.WriteInt(0);
                return true;
            case 15:
                m_Order = intAt(request.body, 8) * 10 + intAt(request.body, 4);
                return false;
            case 16:
                body.WriteInt(m_Count);
                return true;
            case 12:
                return describe(intAt(request.body, 0) - 100).SerializeTo(body);
            case 18:
                return describe(intAt(request.body, 4)).SerializeTo(body);
            default:
                return false;
        }
    }

    static DaemonTotalStatisticInfo totals() {
        DaemonTotalStatisticInfo info;
        info.totalReceivedBytes = 100 << 20;
        info.totalSendedBytes = 10 << 20;
        info.tcpSendedBytes = 7 << 20;
        info.udpSendedBytes = 2 << 20;
        return info;
    }

    DaemonApplicationInfo describe(int index) const {
        DaemonApplicationInfo info;
        info.id = 100 + index;
        info.name = std::to_string(m_Order) + "/" + std::to_string(index);
        info.fullPath = "/usr/bin/app";
        info.totalReceivedBytes = 60 << 20;
        return info;
    }

    template <class Widget = QLabel>
    Widget* outlet(const char* name, const char* panel = "m_Window") const {
        const QWidget* root =
            m_Window->objectName() == panel ? m_Window : m_Window->findChild<QWidget*>(panel);
        return root->findChild<Widget*>(name);
    }

    QString text(int row, int column) const { return m_Table->model()->index(row, column).data().toString(); }

    /** What the daemon was asked since the last call, by message type. */
    std::vector<int> newRequests() {
        QTest::qWait(20);
        std::vector<int> types;
        for (const auto& request : m_Peer.newRequests()) {
            types.push_back(request.header.messageType);
        }
        return types;
    }

    void clickHeader(int column) {
        QHeaderView* header = m_Table->horizontalHeader();
        const QPoint middle(header->sectionViewportPosition(column) + header->sectionSize(column) / 2,
                            header->height() / 2);
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, middle);
    }

    std::atomic<int> m_Order{52};
    std::atomic<int> m_Count{12};
    std::atomic<int> m_Protocol{0};  ///< that a total was last asked for
    LinkPeer m_Peer{[this](const auto& request, auto& body) { return answer(request, body); }, daemonPort};
    std::unique_ptr<MainController> m_Controller;
    QWidget* m_Window = nullptr;
    TableView* m_Table = nullptr;
};

TEST_F(MainControllerTest, FillsTheTableAtOnceWithARequestForEachRow) {
    m_Table->grab();
    std::vector<int> expected{13, 11, 11, 11, 16};  // the cursor, the totals thrice, the count
    expected.insert(expected.end(), 12, 18);
    expected.push_back(27);  // whether it is cleaning, once there is an event loop
    EXPECT_EQ(newRequests(), expected);
}

TEST_F(MainControllerTest, TheSelectionStaysOnItsRowAndTheDrawerFollowsIt) {
    const auto* shown = outlet("m_ApplicationName", "m_Drawer");
    m_Table->selectRow(0);
    EXPECT_EQ(m_Controller->selectedApplication(), nullptr);
    m_Table->selectRow(3);
    EXPECT_EQ(m_Controller->selectedApplication()->name(), "52/2");
    EXPECT_EQ(shown->text(), "52/2");
    clickHeader(Model::NameColumn);
    EXPECT_EQ(m_Table->horizontalHeader()->sortIndicatorSection(), Model::NameColumn);
    EXPECT_EQ(shown->text(), "1/2");
    auto* toggle = outlet<QAbstractButton>("m_AdditionalInfoToggleBtn");
    EXPECT_TRUE(toggle->isChecked());
    emit m_Table->doubleClicked(m_Table->model()->index(0, 0));
    EXPECT_FALSE(toggle->isChecked());
    m_Count = 1;
    m_Controller->updateAllInformation();
    EXPECT_EQ(m_Controller->selectedApplication(), nullptr);
    EXPECT_EQ(shown->text(), "Please, select application.");
}

TEST_F(MainControllerTest, ScrollingFetchesTheRowsThatComeIntoSight) {
    m_Count = 1000;
    m_Controller->updateAllInformation();
    newRequests();
    m_Table->scrollTo(m_Table->model()->index(500, 0), QAbstractItemView::PositionAtTop);
    EXPECT_EQ(text(500, Model::NameColumn), "52/499");
    EXPECT_EQ(text(400, Model::NameColumn), "");
    const std::size_t visible = m_Table->visibleRows().last - m_Table->visibleRows().first + 1;
    EXPECT_EQ(newRequests(), std::vector<int>(visible, 18));
    m_Table->grab();
    m_Table->scrollTo(m_Table->model()->index(500, 0), QAbstractItemView::PositionAtTop);
    EXPECT_EQ(newRequests(), std::vector<int>());
}

TEST_F(MainControllerTest, LiveChartsAreOpenedOncePerApplicationAndEndWithTheProgram) {
    const auto applications = [] {
        QMenu* found = nullptr;
        for (QWidget* window : QApplication::topLevelWidgets()) {
            auto* menu = qobject_cast<QMenu*>(window);
            found = menu != nullptr && menu->title() == "Applications" ? menu : found;
        }
        emit static_cast<QMenu*>(found->parentWidget())->aboutToShow();
        return found->actions();
    };
    m_Table->selectRow(0);
    EXPECT_FALSE(outlet<QAction>("m_LiveChartAction")->isEnabled());
    m_Table->selectRow(3);
    outlet<QToolButton>("m_ShowApplicationLiveChartButton")->click();
    ASSERT_EQ(applications().size(), 12);
    EXPECT_TRUE(applications()[2]->isChecked());
    applications()[2]->trigger();
    applications()[5]->trigger();
    EXPECT_EQ(RealtimeGraphic::graphicsList().size(), 2);
    EXPECT_TRUE(applications()[5]->isChecked());
    m_Controller.reset();
    EXPECT_EQ(RealtimeGraphic::graphicsList().size(), 0);
    EXPECT_EQ(QApplication::topLevelWidgets().size(), 0) << "nothing outlives the application's object";
}

TEST_F(MainControllerTest, HistoryWindowsShowTheSelectedRow) {
    const auto& open = ConnectionsGraphicController::graphicsList();
    const auto expectOpened = [&](std::size_t count, const char* title, int protocol) {
        ASSERT_EQ(open.size(), count);
        EXPECT_EQ(open.back()->window()->windowTitle(), title);
        EXPECT_TRUE(QTest::qWaitFor([&] { return m_Protocol == protocol; }));
    };
    QTest::keyClick(m_Table, Qt::Key_Return);
    EXPECT_TRUE(open.empty());
    m_Table->selectRow(0);
    outlet<QToolButton>("m_ShowApplicationUDPTrafficButton")->click();
    expectOpened(1, "Total Graphic", 17);
    open.back()->close();
    m_Table->selectRow(1);
    outlet<QToolButton>("m_ShowApplicationTCPTrafficButton")->click();
    expectOpened(1, "\"52/0\" Application Graphic", 6);
    open.back()->close();
    m_Window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(m_Window));
    QTest::keyClick(m_Table, Qt::Key_Return);
    expectOpened(1, "\"52/0\" Application Graphic", -1);
    m_Controller.reset();
    EXPECT_TRUE(open.empty());
    EXPECT_TRUE(DaemonConnection::sharedConnection()->connectionsIterators().empty());
}

TEST_F(MainControllerTest, ThePreferencesAreOneSheetOverTheWindow) {
    QTest::keyClick(m_Window, Qt::Key_Comma, Qt::ControlModifier);
    outlet<QAction>("m_PreferencesAction")->trigger();
    const auto sheets = m_Window->findChildren<QDialog*>();
    ASSERT_EQ(sheets.size(), 1);
    EXPECT_TRUE(sheets.first()->isVisible());
    EXPECT_EQ(sheets.first()->windowModality(), Qt::WindowModal);
    m_Window->hide();
    for (const QWidget* menu : QApplication::topLevelWidgets()) {
        for (QAction* item : menu->actions()) {
            if (item->text() == "&Preferences" && item != outlet<QAction>("m_PreferencesAction")) {
                item->trigger();  // in the tray's menu
            }
        }
    }
    EXPECT_TRUE(m_Window->isVisible());
    delete sheets.first();  // not ended, which would save: these are this machine's own settings
}

TEST_F(MainControllerTest, SaysThatNothingIsKnownButNotThatTheDaemonIsLost) {
    EXPECT_EQ(m_Table->emptyText(), "");
    m_Count = 0;
    m_Controller->updateAllInformation();
    EXPECT_EQ(m_Table->emptyText(), "No application has used the network yet.");
    EXPECT_EQ(outlet("m_OtherSendedData", "m_TotalsPanel")->text(), "1.000");
    m_Count = 12;
    m_Peer.die();
    m_Controller->updateAllInformation();
    EXPECT_EQ(m_Table->model()->rowCount(), 1);
    EXPECT_EQ(text(0, Model::ReceivedColumn), "0.000");
    EXPECT_EQ(outlet("m_OtherSendedData", "m_TotalsPanel")->text(), "1.000")
        << "as long as nothing newer is known";
    EXPECT_EQ(m_Table->emptyText(), "");
}

}  // namespace
