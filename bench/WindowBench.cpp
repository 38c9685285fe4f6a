// SPDX-License-Identifier: GPL-3.0-or-later

// How long the main window keeps its thread from the user: a refresh of 40 visible rows, and steps through a long
// table, beside the link and the painting alone; and how soon a window of the past is there. Needs a daemon with many applications at the usual port; see
// bench/run.

#include <QApplication>
#include <QHeaderView>
#include <QMenu>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QWidget>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <vector>

#include "controls/TableView.h"
#include "daemon/DaemonConnection.h"
#include "platform/InterfaceStyle.h"
#include "ui/charts/ConnectionsGraphicController.h"
#include "ui/main/MainController.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int visibleRows = 40;
constexpr int wheelNotch = 3;  // rows

struct Times {
    double median;
    double longest;
};

Times measure(int rounds, const std::function<void()>& action) {
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i) {
        const auto start = Clock::now();
        action();
        times.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
        QCoreApplication::processEvents();
    }
    std::sort(times.begin(), times.end());
    return {times[times.size() / 2], times.back()};
}

void print(const char* what, const Times& times, const Times& baseline, const char* baselineName) {
    std::printf("%-34s %6.2f ms median, %6.2f ms longest; %.1f times %s (%.2f ms)\n", what, times.median,
                times.longest, times.median / baseline.median, baselineName, baseline.median);
}

QWidget* mainWindow() {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->objectName() == "m_Window") {
            return widget;
        }
    }
    return nullptr;
}

void benchRefresh(MainController& controller, QWidget& window) {
    const auto cursor = ApplicationsIterator::iterator();
    const Times link = measure(100, [&] { cursor->prefetch(0, visibleRows); });
    const Times refresh = measure(100, [&] { controller.updateAllInformation(); });
    const Times painted = measure(100, [&] {
        controller.updateAllInformation();
        window.repaint();
    });
    print("refresh of 40 rows", refresh, link, "the 40 requests alone");
    print("refresh of 40 rows and painting", painted, link, "the 40 requests alone");
}

void benchHistory() {
    const Times opening = measure(20, [] {
        auto* controller = ConnectionsGraphicController::graphic();
        controller->show();
        controller->window()->repaint();
    });
    std::printf("%-34s %6.2f ms median, %6.2f ms longest\n", "a history window to first paint",
                opening.median, opening.longest);
}

void benchScrolling(TableView& table, const char* what, int rows) {
    QScrollBar* bar = table.verticalScrollBar();
    const int step = rows * table.verticalHeader()->defaultSectionSize();
    const auto move = [&](int way) {
        bar->setValue(bar->value() + way);
        table.viewport()->repaint();
    };
    const Times fresh = measure(200, [&] { move(step); });
    const Times back = measure(200, [&] { move(-step); });
    print(what, fresh, back, "rows that were fetched before");
}

QMenu* applicationsMenu() {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        auto* menu = qobject_cast<QMenu*>(widget);
        if (menu != nullptr && menu->title() == "Applications") {
            return menu;
        }
    }
    return nullptr;
}

/** The first time it also finds out which icons there are. */
void benchStatusMenu() {
    QMenu& applications = *applicationsMenu();
    auto& statusMenu = dynamic_cast<QMenu&>(*applications.parentWidget());
    const auto open = [&] {
        emit statusMenu.aboutToShow();  // fills it
        applications.popup({0, 0});
        applications.repaint();
        applications.close();
    };
    const Times first = measure(1, open);
    const Times filled = measure(20, [&] { emit statusMenu.aboutToShow(); });
    const Times opened = measure(20, open);
    std::printf("status menu of %d applications: %.2f ms the first time\n",
                static_cast<int>(applications.actions().size()), first.median);
    print("status menu filled and painted", opened, filled, "filling it alone");
}

}  // namespace

int main(int argc, char** argv) {
    const QTemporaryDir settings;
    qputenv("XDG_CONFIG_HOME", settings.path().toUtf8());
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    InterfaceStyle::install();
    if (!DaemonConnection::sharedConnection()->isValid()) {
        std::fprintf(stderr, "no daemon answers\n");
        return 1;
    }
    {
        MainController controller;
        QWidget* window = mainWindow();
        auto* table = window->findChild<TableView*>();
        const int rowHeight = table->verticalHeader()->defaultSectionSize();
        window->resize(window->width(),
                       window->height() - table->viewport()->height() + visibleRows * rowHeight);
        QCoreApplication::processEvents();
        std::printf("%d rows, %d of them visible\n", table->model()->rowCount(),
                    table->visibleRows().last - table->visibleRows().first + 1);
        benchStatusMenu();
        benchRefresh(controller, *window);
        benchScrolling(*table, "a notch of the wheel (3 rows)", wheelNotch);
        controller.updateAllInformation();
        benchScrolling(*table, "a page (40 rows)", visibleRows);
        benchHistory();
    }
    DaemonConnection::sharedConnection()->stopEventsListener();
    return 0;
}
