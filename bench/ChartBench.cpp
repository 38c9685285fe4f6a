// SPDX-License-Identifier: GPL-3.0-or-later

// What one redraw of a chart costs, to the screen's pixels: by the look of its lines, by the size of the view, and by
// the number of points that are kept outside of it. Needs no daemon and no display.

#include <QApplication>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <vector>

#include "controls/chart/GraphicView.h"
#include "controls/chart/GraphicViewDelegate.h"
#include "controls/chart/GraphicViewLegend.h"
#include "controls/chart/GraphicViewLineColorLegendItem.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int rounds = 200;
constexpr int historyPoints = 105;
constexpr int livePoints = 120;
constexpr int weekPoints = 600'000;
constexpr QSize liveSize(420, 260);
constexpr QSize historySize(900, 480);

class Texts : public GraphicViewDelegate {
  public:
    QString axeValueToString(float value, int axe) override {
        return axe == 0 ? QString::number(value, 'f', 0) : QString::number(value * 8 / (1 << 20), 'f', 3);
    }
};

struct Look {
    int style;
    bool hasShadow;
};

/** Two lines whose last `visible` points of `stored` are in the viewport, and a legend. */
void fill(GraphicView& view, Texts& texts, const Look& look, int stored, int visible) {
    constexpr double height = 100'000;
    view.setUpdatesDisabled(true);
    view.setDelegate(&texts);
    auto* legend = GraphicViewLegend::legendWithGraphic(&view, QRectF(300, 180, 80, 60));
    legend->setDropShadow(true);
    for (unsigned line = 0; line < 2; ++line) {
        view.appendLine();
        view.setLineColor(line, line == 0 ? QColor(26, 255, 26, 178) : QColor(255, 26, 26, 178));
        view.setLineStyle(line, look.style);
        view.setLineDropShadow(line, look.hasShadow);
        auto* item = GraphicViewLineColorLegendItem::itemWithLegend(legend);
        item->setBindedGraphicLine(line);
        item->setText(line == 0 ? "Received" : "Sent");
        for (int i = 0; i < stored; ++i) {
            view.addPointToLine(
                line, {double(i), height / (line + 2) * (1 + std::sin(i / 5.0) * std::cos(i * 1.7))});
        }
    }
    view.setViewport(QRectF(stored - visible, 0, visible, height));
    view.setMeshCellSize({10, 16384});
    view.setSelectionForAxe(0, static_cast<float>(stored - 1));
    view.setUpdatesDisabled(false);
}

void bench(const char* what, const QSize& size, const Look& look, int stored, int visible, int rounds = 200) {
    Texts texts;
    GraphicView view;
    view.resize(size);
    fill(view, texts, look, stored, visible);
    view.show();
    QCoreApplication::processEvents();
    std::vector<double> times;
    const std::clock_t processor = std::clock();
    for (int i = 0; i < rounds; ++i) {
        view.setMeshCellSize(view.meshCellSize());  // a change, or there would be nothing to draw
        const auto start = Clock::now();
        view.display();
        times.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
    }
    const double used = 1000.0 * double(std::clock() - processor) / CLOCKS_PER_SEC / rounds;
    std::sort(times.begin(), times.end());
    std::printf("%-44s %6.2f ms median, %6.2f ms longest; %5.2f ms of processor each\n", what,
                times[times.size() / 2], times.back(), used);
}

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    bench("2 lines of 105 points, 900 x 480, plain", historySize, {0, false}, historyPoints, historyPoints);
    bench("  the same, filled", historySize, {1, false}, historyPoints, historyPoints);
    bench("  the same, filled and shadowed", historySize, {1, true}, historyPoints, historyPoints);
    bench("live chart, 420 x 260, filled and shadowed", liveSize, {1, true}, livePoints, livePoints);
    bench("  the same with 600,000 points kept", liveSize, {1, true}, weekPoints, livePoints);
}
