// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/charts/ConnectionsGraphicController.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDateTimeEdit>
#include <QDialog>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <random>
#include <set>

#include "config/ConfigStorage.h"
#include "controls/AnimatedTabView.h"
#include "controls/DisclosureButton.h"
#include "controls/Drawer.h"
#include "controls/TableView.h"
#include "controls/chart/GraphicView.h"
#include "daemon/DaemonConnection.h"
#include "daemon/DateConversion.h"
#include "protocol/DaemonApplicationReceivedBytesRequest.h"
#include "protocol/DaemonConnectionInfo.h"
#include "protocol/DaemonSetConnectionsIteratorParametersRequest.h"
#include "protocol/DaemonTotalStatisticInfo.h"
#include "tests/support/DaemonTest.h"
#include "ui/charts/HistoryGraphicWorker.h"
#include "ui/charts/TrafficFormat.h"

namespace {

using namespace std::chrono_literals;
using Controller = ConnectionsGraphicController;
using Clock = std::chrono::steady_clock;

constexpr qint64 day = 86400;

/** Bytes up to a moment, as a daemon would know them. */
std::int64_t receivedUpTo(qint64 seconds, int application) {
    return seconds * 1000 + seconds % 977 * 31 * (application + 2);
}
std::int64_t sentUpTo(qint64 seconds, int application) {
    return receivedUpTo(seconds + 7, application) / 3;
}

/** A question for a total. */
struct Query {
    char what;  ///< 'R'eceived or 'S'ent
    int application;
    qint64 seconds;
    int protocol;

    bool operator==(const Query&) const = default;
};

void PrintTo(const Query& query, std::ostream* out) {
    *out << query.what << query.application << '@' << query.seconds << '/' << query.protocol;
}

std::optional<Query> queryOf(const LinkPeer::Request& request) {
    const int type = request.header.messageType;
    if (type != 3 && type != 5 && type != 7 && type != 9) {
        return {};
    }
    LinkPeer::Request ofOne = request;
    ofOne.body.insert(0, type < 7 ? std::string(4, '\xff') : "");  // all applications: -1
    const auto asked = DaemonTest::read<DaemonApplicationReceivedBytesRequest>(ofOne);
    return Query{type == 3 || type == 7 ? 'R' : 'S', asked.applicationId,
                 TimeToNSDate(asked.toTime).toSecsSinceEpoch(), asked.socketProtocol};
}

std::shared_ptr<const ApplicationInfo> application(int id) {
    return ApplicationInfo::appInfoWithId(id, "App " + QString::number(id), "/usr/bin/app", 0, 0, 0, 0, 0, 0,
                                          QDateTime(), QDateTime());
}

/** History windows on a scripted daemon. */
class ConnectionsGraphicControllerTest : public DaemonTest {
  protected:
    void begin() override {
        // Where TZ does not name the zone, the C library makes it anew at every look, under a lock of its own that
        // ThreadSanitizer does not see.
        qputenv("TZ", "UTC");
        ConfigStorage::sharedConfig()->setMaxStorageTimeInMonths(60);  // in memory only
        HistoryGraphicWorker::setStepPause(0ms);
        ASSERT_TRUE(DaemonConnection::sharedConnection()->isValid());
    }

    void TearDown() override {
        Controller::closeAllGraphics();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        EXPECT_TRUE(DaemonConnection::sharedConnection()->connectionsIterators().empty());
    }

    bool answer(const LinkPeer::Request& request, BinarySerializer& body) {
        if (const auto query = queryOf(request)) {
            body.WriteLongLong(query->what == 'R' ? receivedUpTo(query->seconds, query->application)
                                                  : sentUpTo(query->seconds, query->application));
            return true;
        }
        switch (request.header.messageType) {
            case 11: {
                DaemonTotalStatisticInfo totals;
                totals.startTime = NSDateToTime(QDateTime::fromSecsSinceEpoch(m_StatisticsStart));
                return totals.SerializeTo(body);
            }
            case 20:
                body.WriteInt(++m_Cursors);
                return true;
            case 23:
                body.WriteInt(50);
                return true;
            case 25: {
                DaemonConnectionInfo connection;
                connection.startTime = NSDateToTime(QDateTime::fromSecsSinceEpoch(m_StatisticsStart + 100));
                connection.endTime = NSDateToTime(QDateTime::fromSecsSinceEpoch(m_StatisticsStart + 160));
                return connection.SerializeTo(body);
            }
            default:
                return false;
        }
    }

    template <class Widget = QPushButton>
    static Widget* outlet(const Controller* controller, const char* name) {
        return controller->window()->findChild<Widget*>(name);
    }
    static GraphicView* graphicOf(const Controller* controller) {
        return outlet<GraphicView>(controller, "m_Graphic");
    }
    static QString textOf(const Controller* controller, const char* name) {
        return outlet<QLabel>(controller, name)->text();
    }

    /** That is to say, shows its chart. */
    static bool waitUntilDone(const Controller* controller) {
        return QTest::qWaitFor([&] { return !graphicOf(controller)->isHidden(); }, 20000);
    }

    static void choose(Controller* controller, qint64 start, qint64 end) {
        outlet(controller, "m_ChangeRangeButton")->click();
        auto* startTime = outlet<QDateTimeEdit>(controller, "m_StartTime");
        auto* endTime = outlet<QDateTimeEdit>(controller, "m_EndTime");
        startTime->setDateTime(QDateTime::fromSecsSinceEpoch(start));
        endTime->setDateTime(QDateTime::fromSecsSinceEpoch(end));
        outlet(controller, "m_ShowButton")->click();
    }

    std::vector<Query> newQueries() {
        std::vector<Query> queries;
        for (const auto& request : m_Peer.newRequests()) {
            if (const auto query = queryOf(request)) {
                queries.push_back(*query);
            }
        }
        return queries;
    }

    static void expectDaemonsData(const Controller* controller, int application, qint64 start, double step,
                                  std::size_t count) {
        const auto& lines = graphicOf(controller)->scene().lines;
        for (const auto& [line, upTo] : {std::pair(0, &receivedUpTo), {1, &sentUpTo}}) {
            const auto& points = lines[static_cast<std::size_t>(line)].data.points();
            ASSERT_EQ(points.size(), count);
            for (std::size_t i = 0; i < count; ++i) {
                const double x = static_cast<double>(i) * step;
                const qint64 to = start + static_cast<qint64>(x + 0.001);
                const qint64 from = start + static_cast<qint64>(std::floor(x - step + 0.001));
                EXPECT_FLOAT_EQ(points[i].x, static_cast<float>(x));
                EXPECT_EQ(points[i].y, static_cast<float>(upTo(to, application) - upTo(from, application)));
            }
        }
    }

    std::atomic<qint64> m_StatisticsStart{QDateTime::currentSecsSinceEpoch() - 1500 * day};
    std::atomic<int> m_Cursors{0};
    LinkPeer m_Peer{[this](const auto& request, auto& body) { return answer(request, body); }, daemonPort};
};

TEST_F(ConnectionsGraphicControllerTest, AsksForEachStepAndThenForTheCaptionsInOrder) {
    struct Case {
        qint64 span;
        double step;
        std::size_t points;  // as many as sums of the step stay within the limit
        double grid;
    };
    const Case cases[] = {{1, 1, 6, 1},
                          {3540, 35.4, 104, 600},
                          {3600, 36, 105, 3600},
                          {30 * day, 25920, 105, 10.0 * day},
                          {1000 * day, 864000, 105, 1}};
    auto* controller = Controller::graphic(application(5), 17);
    controller->show();
    ASSERT_TRUE(waitUntilDone(controller));
    const qint64 end = QDateTime::currentSecsSinceEpoch() - 10 * day;
    for (const auto& [span, step, points, grid] : cases) {
        const qint64 start = end - span;
        newQueries();
        choose(controller, start, end);
        ASSERT_TRUE(waitUntilDone(controller));
        std::vector<Query> expected;
        for (std::size_t i = 0; i <= points; ++i) {
            const double x = (static_cast<double>(i) - 1) * step;
            const auto time = start + static_cast<qint64>(std::floor(x + 0.001));
            expected.push_back({'S', 5, time, 17});
            expected.push_back({'R', 5, time, 17});
        }
        for (const qint64 time : {start, end}) {
            expected.push_back({'R', 5, time, 17});
            expected.push_back({'S', 5, time, 17});
        }
        EXPECT_EQ(newQueries(), expected) << span;
        expectDaemonsData(controller, 5, start, step, points);
        EXPECT_EQ(graphicOf(controller)->meshCellSize().width(), grid);
        EXPECT_EQ(graphicOf(controller)->viewport().width(), static_cast<double>(span) + 2 * step);
        EXPECT_EQ(textOf(controller, "m_TotalReceivedBytesCaption"),
                  bytesToNSString(receivedUpTo(end, 5) - receivedUpTo(start, 5)));
        EXPECT_EQ(textOf(controller, "m_TotalSendedBytesCaption"),
                  bytesToNSString(sentUpTo(end, 5) - sentUpTo(start, 5)));
        EXPECT_EQ(textOf(controller, "m_StartTimeCaption"),
                  NSDateToNSString(QDateTime::fromSecsSinceEpoch(start)));
    }
}

TEST_F(ConnectionsGraphicControllerTest, OpensOnAllThatTheStatisticsHaveWithinTheLimits) {
    struct Case {
        qint64 age;
        qint64 shown;
    };
    for (const auto& [age, shown] :
         {Case{1, 1}, Case{-5, 0}, Case{400 * day, 400 * day}, Case{9999 * day, 1800 * day}}) {
        const qint64 now = QDateTime::currentSecsSinceEpoch();
        m_StatisticsStart = now - age;
        auto* controller = Controller::graphic();
        controller->show();
        const auto* startTime = outlet<QDateTimeEdit>(controller, "m_StartTime");
        const auto* endTime = outlet<QDateTimeEdit>(controller, "m_EndTime");
        const auto expectAbout = [](qint64 seconds, qint64 expected) {
            EXPECT_LE(std::abs(seconds - expected), 2);
        };
        expectAbout(startTime->dateTime().secsTo(endTime->dateTime()), shown);
        expectAbout(endTime->dateTime().toSecsSinceEpoch(), now);
        expectAbout(startTime->minimumDateTime().toSecsSinceEpoch(), now - 1800 * day);
        EXPECT_EQ(endTime->minimumDateTime(), startTime->dateTime());
        EXPECT_EQ(startTime->maximumDateTime(), endTime->dateTime());
        ASSERT_TRUE(waitUntilDone(controller));
        EXPECT_GE(graphicOf(controller)->scene().lines[0].data.points().size(), shown > 2 ? 104U : 6U);
    }
}

TEST_F(ConnectionsGraphicControllerTest, EveryWindowSaysWhatItShowsAndIsListedUntilItCloses) {
    const Controller* windows[] = {Controller::graphic(), Controller::graphic(6),
                                   Controller::graphic(application(1)),
                                   Controller::graphic(application(2), 17)};
    QStringList titles;
    for (const Controller* window : windows) {
        titles.append(window->window()->windowTitle());
    }
    EXPECT_EQ(titles.join('|'),
              "Total Graphic|Total Graphic|\"App 1\" Application Graphic|\"App 2\" Application Graphic");
    EXPECT_EQ(graphicOf(windows[1])->accessibleName(), "TCP Traffic of All Applications");
    EXPECT_EQ(graphicOf(windows[3])->accessibleName(), "UDP Traffic of App 2")
        << "and so are its files called";
    EXPECT_TRUE(std::equal(std::begin(windows), std::end(windows), Controller::graphicsList().begin(),
                           Controller::graphicsList().end()));
    for (const Controller* window : windows) {
        ASSERT_TRUE(waitUntilDone(window));  // all four compute at once
    }
    std::set<std::pair<int, int>> asked;
    for (const Query& query : newQueries()) {
        asked.emplace(query.application, query.protocol);
    }
    EXPECT_EQ(asked, (std::set<std::pair<int, int>>{{-1, -1}, {-1, 6}, {1, -1}, {2, 17}}));
    windows[1]->window()->close();
    EXPECT_EQ(Controller::graphicsList().size(), 3U);
    windows[0]->window()->show();
    (new QDialog(windows[0]->window()))->open();  // does not hold it back
    Controller::closeAllGraphics();
    EXPECT_TRUE(Controller::graphicsList().empty());
}

TEST_F(ConnectionsGraphicControllerTest, PausesBetweenStepsAndCancelsWithinOne) {
    HistoryGraphicWorker::setStepPause(HistoryGraphicWorker::defaultStepPause);
    auto* controller = Controller::graphic();
    controller->show();
    const auto* progress = outlet<QProgressBar>(controller, "m_UpdateProgressIndicator");
    const auto begin = Clock::now();
    ASSERT_TRUE(QTest::qWaitFor([&] { return progress->value() >= 5; }));
    EXPECT_GE(Clock::now() - begin, 5 * 50ms);
    EXPECT_TRUE(graphicOf(controller)->isHidden());
    EXPECT_TRUE(progress->isVisible());
    const auto cancelled = Clock::now();
    outlet(controller, "m_ChangeRangeButton")->click();
    EXPECT_LT(Clock::now() - cancelled, 2s) << "far from the five that it would take, on a busy machine too";
    const auto asked = newQueries();
    EXPECT_LE(asked.size(), 2U * (1 + 5 + 4));
    QTest::qWait(120);
    EXPECT_TRUE(newQueries().empty());
    EXPECT_FALSE(graphicOf(controller)->isHidden());
    EXPECT_EQ(graphicOf(controller)->scene().lines[0].data.points().size(), asked.size() / 2 - 1);
    EXPECT_EQ(textOf(controller, "m_TotalReceivedBytesCaption"), "-");
}

TEST_F(ConnectionsGraphicControllerTest, ThePageOfTheRangeWaitsForTheDrawerAndBringsItBack) {
    auto* controller = Controller::graphic();
    controller->show();
    ASSERT_TRUE(waitUntilDone(controller));
    auto* drawer = outlet<Drawer>(controller, "m_Drawer");
    auto* toggle = outlet<DisclosureButton>(controller, "m_ToggleDrawerButton");
    const auto* tabs = outlet<AnimatedTabView>(controller, "m_TabView");
    const auto isSettled = [&](bool isOpen) {
        return QTest::qWaitFor([&] { return drawer->isOpen() == isOpen && drawer->isVisible() == isOpen; });
    };
    EXPECT_TRUE(toggle->isChecked());
    toggle->click();
    ASSERT_TRUE(isSettled(true));
    EXPECT_FALSE(toggle->isChecked());

    outlet(controller, "m_ChangeRangeButton")->click();
    outlet(controller, "m_ChangeRangeButton")->click();  // while the drawer closes: nothing
    ASSERT_TRUE(isSettled(false));
    EXPECT_EQ(tabs->currentIndex(), 1);
    EXPECT_FALSE(toggle->isChecked());
    outlet(controller, "m_ShowButton")->click();
    EXPECT_EQ(tabs->currentIndex(), 0);
    ASSERT_TRUE(isSettled(true));
    const auto* table = outlet<TableView>(controller, "m_ConnectionsTable");
    EXPECT_FALSE(table->model()->index(0, 1).data().toString().isEmpty()) << "rows of the new range";

    outlet(controller, "m_ConnectionsButton")->click();
    ASSERT_TRUE(isSettled(false));
    EXPECT_TRUE(toggle->isChecked());
    outlet(controller, "m_ChangeRangeButton")->click();
    EXPECT_EQ(tabs->currentIndex(), 1);
    outlet(controller, "m_ShowButton")->click();
    QTest::qWait(250);
    EXPECT_FALSE(drawer->isOpen());
}

TEST_F(ConnectionsGraphicControllerTest, EscapeLeadsBackToTheChartAsItWasOrWasGoingToBe) {
    auto* controller = Controller::graphic(application(3), 6);
    controller->show();
    ASSERT_TRUE(waitUntilDone(controller));
    const auto* startTime = outlet<QDateTimeEdit>(controller, "m_StartTime");
    const auto* tabs = outlet<AnimatedTabView>(controller, "m_TabView");
    auto* presets = outlet<QListWidget>(controller, "m_Presets");
    const QDateTime start = startTime->dateTime();
    const auto leaveAndComeBack = [&] {
        outlet(controller, "m_ChangeRangeButton")->click();
        presets->setCurrentRow(2);
        EXPECT_NE(startTime->dateTime(), start);
        QTest::keyClick(presets, Qt::Key_Escape);
        EXPECT_EQ(tabs->currentIndex(), 0);
        EXPECT_EQ(startTime->dateTime(), start);
        EXPECT_EQ(presets->selectionModel()->selectedRows().first().row(), 6);
    };
    const QString shown = textOf(controller, "m_StartTimeCaption");
    newQueries();
    leaveAndComeBack();
    EXPECT_FALSE(graphicOf(controller)->isHidden());
    EXPECT_TRUE(newQueries().empty());
    EXPECT_EQ(textOf(controller, "m_StartTimeCaption"), shown);

    HistoryGraphicWorker::setStepPause(20ms);
    controller->beginUpdateGraphic();
    QTest::qWait(100);
    leaveAndComeBack();  // which cancels it
    ASSERT_TRUE(waitUntilDone(controller));
    EXPECT_GE(graphicOf(controller)->scene().lines[0].data.points().size(), 104U);
}

TEST_F(ConnectionsGraphicControllerTest, SortsByHeadersAndMarksTheLifeOfTheSelectedConnection) {
    auto* controller = Controller::graphic(application(3), 6);
    controller->show();
    ASSERT_TRUE(waitUntilDone(controller));
    outlet(controller, "m_ConnectionsButton")->click();
    auto* table = outlet<TableView>(controller, "m_ConnectionsTable");
    ASSERT_TRUE(QTest::qWaitFor([&] { return table->isVisible(); }));
    const auto lastOrder = [&] {
        DaemonSetConnectionsIteratorParametersRequest order;
        for (const auto& request : m_Peer.newRequests()) {
            if (request.header.messageType == 22) {
                order = read<DaemonSetConnectionsIteratorParametersRequest>(request);
            }
        }
        EXPECT_EQ(order.applicationId, 3);
        EXPECT_EQ(order.socketProtocol, 6);
        return std::pair(order.sortField, order.sortDirection);
    };
    EXPECT_EQ(lastOrder(), std::pair(7, 2));
    emit table->horizontalHeader()->sectionClicked(4);
    EXPECT_EQ(lastOrder(), std::pair(3, 1));
    const auto& selection = graphicOf(controller)->scene().selection;
    EXPECT_FALSE(selection.has_value());
    table->selectRow(4);
    ASSERT_TRUE(selection.has_value());
    EXPECT_EQ(selection->axe, 0);
    EXPECT_EQ(std::pair(selection->from, selection->to), std::pair(100.0, 160.0));
    table->clearSelection();
    EXPECT_FALSE(selection.has_value());
}

TEST_F(ConnectionsGraphicControllerTest, SurvivesWindowsOpenedSwitchedAndClosedAtRandom) {
    HistoryGraphicWorker::setStepPause(1ms);
    std::mt19937 random(1);
    const auto below = [&](std::size_t count) { return random() % count; };
    const auto deadline = Clock::now() + 4s;
    while (Clock::now() < deadline) {
        const auto& open = Controller::graphicsList();
        if (open.size() < 2 || (open.size() < 6 && below(4) == 0)) {
            Controller::graphic(below(2) == 0 ? nullptr : application(1), below(2) == 0 ? 6 : -1)->show();
        }
        Controller* controller = open[below(open.size())];
        switch (below(5)) {
            case 0:
                controller->close();
                break;
            case 1:
                outlet(controller, "m_ConnectionsButton")->click();
                break;
            case 2:
                controller->beginUpdateGraphic();
                break;
            default:
                controller->changeTab();
        }
        QTest::qWait(static_cast<int>(below(200)));
    }
    EXPECT_GE(m_Cursors, 3);
}

}  // namespace
