// SPDX-License-Identifier: GPL-3.0-or-later

// What one redraw of a chart costs, to the screen's pixels: by the look of its lines, by the size of the view, and by
// the number of points that are kept outside of it. Needs no daemon and no display.

#include <QApplication>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <vector>

#include "controls/chart/GraphicView.h"
#include "controls/chart/GraphicViewDelegate.h"
#include "controls/chart/GraphicViewLegend.h"
#include "controls/chart/GraphicViewLineColorLegendItem.h"

namespace {

using Clock = std::chrono::steady_clock;

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

void bench(const char* what, const QSize& size, const Look& look, int stored, int visible) {
    Texts texts;
    GraphicView view;
    view.resize(size);
    fill(view, texts, look, stored, visible);
    view.show();
    QCoreApplication::processEvents();
    std::vector<double> times;
    for (int i = 0; i < 200; ++i) {
        view.setMeshCellSize(view.meshCellSize());  // a change, or there would be nothing to draw
        const auto start = Clock::now();
        view.display();
        times.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
    }
    std::sort(times.begin(), times.end());
    std::printf("%-46s %6.2f ms median, %6.2f ms longest of 200\n", what, times[times.size() / 2],
                times.back());
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
    bench("600,000 visible points", historySize, {1, true}, weekPoints, weekPoints);
}
