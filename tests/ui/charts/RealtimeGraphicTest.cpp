// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/charts/RealtimeGraphic.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QColorDialog>
#include <QPointer>
#include <QTest>
#include <map>
#include <mutex>

#include "controls/ToolWindow.h"
#include "controls/chart/GraphicView.h"
#include "protocol/DaemonApplicationInfo.h"
#include "tests/support/DaemonTest.h"

namespace {

using Points = std::vector<std::pair<float, float>>;

/** Charts on a scripted daemon that knows what `m_Applications` holds. They are polled by hand. */
class RealtimeGraphicTest : public DaemonTest {
  protected:
    void TearDown() override { RealtimeGraphic::closeAllGraphics(); }

    bool answer(const LinkPeer::Request& request, BinarySerializer& body) {
        const std::lock_guard lock(m_Mutex);
        const auto found = m_Applications.find(intAt(request.body, 0));
        if (found != m_Applications.end()) {
            found->second.SerializeTo(body);
        }
        return request.header.messageType == 12;  // with an empty body for an unknown application
    }

    /** What the daemon knows of an application from now on. */
    void know(std::int32_t id, std::int64_t receivedBytes, std::int64_t sendedBytes,
              const std::string& name = "Browser") {
        const std::lock_guard lock(m_Mutex);
        DaemonApplicationInfo& info = m_Applications[id];
        info.id = id;
        info.name = name;
        info.totalReceivedBytes = receivedBytes;
        info.totalSendedBytes = sendedBytes;
    }

    /** The window that is open; one that is shown rather than another. */
    static ToolWindow* window() {
        ToolWindow* found = nullptr;
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            auto* window = qobject_cast<ToolWindow*>(widget);
            found = window != nullptr && (found == nullptr || window->isVisible()) ? window : found;
        }
        return found;
    }

    static GraphicView* view() { return window()->findChild<GraphicView*>("m_Graphic"); }

    static Points points(unsigned line) {
        Points result;
        for (const auto& point : view()->scene().lines[line].data.points()) {
            result.emplace_back(point.x, point.y);
        }
        return result;
    }

    std::mutex m_Mutex;
    std::map<std::int32_t, DaemonApplicationInfo> m_Applications;  ///< guarded by m_Mutex
    LinkPeer m_Peer{[this](const auto& request, auto& body) { return answer(request, body); }, daemonPort};
};

TEST_F(RealtimeGraphicTest, PlotsWhatEachSecondMovedAndItsScaleOnlyGrows) {
    struct Poll {
        std::int64_t received;  // in this second
        std::int64_t sended;
        double cellHeight;
        double viewportHeight;
    };
    const Poll polls[] = {
        {100'000, 50, 16384, 104'096}, {10, 100'001, 16384, 104'097}, {-7, 0, 16384, 104'097}};
    std::int64_t received = 5LL << 30;
    std::int64_t sended = 3LL << 30;
    know(7, received, sended);
    const auto graphic = RealtimeGraphic::graphicWithApplicationId(7);
    EXPECT_EQ(view()->viewport(), QRectF(0, 0, 120, 256)) << "nothing moved, which sets a scale";
    EXPECT_EQ(view()->meshCellSize(), QSizeF(10, 1024));
    Points receivedPoints{{0, 0}};
    Points sendedPoints{{0, 0}};
    for (const auto& poll : polls) {
        know(7, received += poll.received, sended += poll.sended);
        graphic->onTimer();
        const auto x = static_cast<float>(receivedPoints.size());
        receivedPoints.emplace_back(x, poll.received);
        sendedPoints.emplace_back(x, poll.sended);
        EXPECT_EQ(view()->viewport(), QRectF(0, 0, 120, poll.viewportHeight));
        EXPECT_EQ(view()->meshCellSize(), QSizeF(10, poll.cellHeight));
        EXPECT_EQ(view()->scene().selection->from, x);
    }
    EXPECT_EQ(points(0), receivedPoints);
    EXPECT_EQ(points(1), sendedPoints);
    EXPECT_EQ(graphic->axeValueToString(131072, 1), "1.000");
    EXPECT_EQ(graphic->axeValueToString(119.6F, 0), "120");
    EXPECT_EQ(graphic->axeValueToString(1, 2), "");
    EXPECT_EQ(graphic->readOutValueToString(100'000, 1), "97.7 kB/s");
    EXPECT_EQ(graphic->readOutValueToString(-7, 1), "-7 B/s");
}

TEST_F(RealtimeGraphicTest, ScrollsFromThe121stPollOnAndTrimsTheReceivedLineOnly) {
    know(7, 0, 0);
    const auto graphic = RealtimeGraphic::graphicWithApplicationId(7);
    for (int polls = 1; polls < 120; ++polls) {
        graphic->onTimer();
    }
    EXPECT_EQ(view()->viewport().x(), 0);
    graphic->onTimer();
    EXPECT_EQ(view()->viewport().x(), 1);
    graphic->onTimer();
    EXPECT_EQ(view()->viewport(), QRectF(2, 0, 120, 256));
    EXPECT_EQ(points(0).front().first, 2);
    EXPECT_EQ(points(0).size(), 120);
    EXPECT_EQ(points(1).size(), 122);
}

TEST_F(RealtimeGraphicTest, ARecordThatIsLostFallsToZeroAndIsNotAskedForAgain) {
    know(7, 1000, 400);
    const auto graphic = RealtimeGraphic::graphicWithApplicationId(7);
    {
        const std::lock_guard lock(m_Mutex);
        m_Applications.clear();
    }
    graphic->onTimer();
    know(7, 5000, 5000);
    graphic->onTimer();
    EXPECT_EQ(points(0), (Points{{0, 0}, {1, -1000}, {2, 0}}));
    EXPECT_EQ(points(1), (Points{{0, 0}, {1, -400}, {2, 0}}));
    EXPECT_EQ(m_Peer.waitForRequests(3).size(), 3) << "opening, the first poll and the one that failed";
    EXPECT_FALSE(RealtimeGraphic::isGraphicForAplicationIdExist(7));
    EXPECT_EQ(RealtimeGraphic::graphicsList().size(), 1);
}

TEST_F(RealtimeGraphicTest, AnUnknownApplicationHasAChartWithoutAName) {
    RealtimeGraphic::graphicWithApplicationId(7);
    EXPECT_EQ(window()->windowTitle(), "Realtime Traffic Chart");
    EXPECT_EQ(points(0), (Points{{0, 0}}));
    know(8, 0, 0, "a\nb [*] <b>&c");
    RealtimeGraphic::graphicWithApplicationId(8)->show();
    EXPECT_EQ(view()->accessibleName(), "a b [*] <b>&c Realtime Traffic Chart");
    EXPECT_EQ(window()->windowHandle()->title(), "a b [*] <b>&c Realtime Traffic Chart");
}

TEST_F(RealtimeGraphicTest, TheListKeepsChartsInOrderUntilTheyClose) {
    know(7, 0, 0);
    know(8, 0, 0);
    const std::weak_ptr<RealtimeGraphic> first = RealtimeGraphic::graphicWithApplicationId(7);
    const QPointer<ToolWindow> firstWindow = window();
    RealtimeGraphic::graphicWithApplicationId(8);
    RealtimeGraphic::graphicWithApplicationId(7);
    ASSERT_EQ(RealtimeGraphic::graphicsList().size(), 3);
    EXPECT_EQ(RealtimeGraphic::findVisibleGraphicFromApplicationId(7), first.lock());
    first.lock()->show();
    firstWindow->close();
    EXPECT_TRUE(first.expired());
    EXPECT_NE(firstWindow, nullptr) << "it was still in its own close event";
    firstWindow->close();  // again, before it is gone
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(firstWindow, nullptr);
    EXPECT_TRUE(RealtimeGraphic::isGraphicForAplicationIdExist(7)) << "the other one";

    RealtimeGraphic::graphicsList().front()->show();
    auto* dialog = new QColorDialog(window());
    dialog->open();
    RealtimeGraphic::closeAllGraphics();  // one of them shown below a dialog, one never shown
    EXPECT_TRUE(RealtimeGraphic::graphicsList().empty());
    EXPECT_FALSE(RealtimeGraphic::isGraphicForAplicationIdExist(7));
}

TEST_F(RealtimeGraphicTest, PollsOnceASecondUntilItIsClosed) {
    know(7, 0, 0);
    const auto graphic = RealtimeGraphic::graphicWithApplicationId(7);
    ASSERT_TRUE(QTest::qWaitFor([] { return points(0).size() == 3; }));
    graphic->close();
    QTest::qWait(1100);
    EXPECT_EQ(points(0).size(), 3);
}

}  // namespace
