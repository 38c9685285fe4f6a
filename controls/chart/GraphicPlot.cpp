// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/chart/GraphicPlot.h"

#include <qcustomplot.h>

#include <utility>

#include "controls/chart/GraphicMesh.h"
#include "controls/chart/GraphicPainter.h"
#include "controls/chart/GraphicScene.h"

namespace {

/** A layer's content that a function of ours draws. */
class Drawing : public QCPLayerable {
  public:
    Drawing(QCustomPlot* plot, const QString& layer, std::function<void(QPainter&)> draw)
        : QCPLayerable(plot, layer), m_Draw(std::move(draw)) {}

  protected:
    void applyDefaultAntialiasingHint(QCPPainter* /*painter*/) const override {}
    void draw(QCPPainter* painter) override { m_Draw(*painter); }

  private:
    std::function<void(QPainter&)> m_Draw;
};

/** The grid's lines where the layout wants them. */
class MeshTicker : public QCPAxisTicker {
  public:
    double m_Step = 0;

    void generate(const QCPRange& range, const QLocale& /*locale*/, QChar /*formatChar*/, int /*precision*/,
                  QVector<double>& ticks, QVector<double>* /*subTicks*/,
                  QVector<QString>* /*tickLabels*/) override {
        const std::vector<double> lines = GraphicMesh::lines(range.lower, range.upper, m_Step);
        ticks = QVector<double>(lines.begin(), lines.end());
    }
};

void setUpAxis(QCPAxis& axis, const QSharedPointer<MeshTicker>& ticker) {
    axis.setTicker(ticker);
    axis.setTickLabels(false);
    axis.setTicks(true);
    axis.setTickLength(0, 3);
    axis.setSubTicks(false);
    axis.grid()->setZeroLinePen(Qt::NoPen);
    axis.grid()->setAntialiased(false);
}

}  // namespace

struct GraphicPlot::Engine {
    explicit Engine(const GraphicScene& shown) : scene(shown) {
        plot.legend->setVisible(false);
        plot.setBackground(QBrush(Qt::NoBrush));
        plot.axisRect()->setAutoMargins(QCP::msNone);
        plot.plotLayout()->setMargins({});
        setUpAxis(*plot.xAxis, xTicker);
        setUpAxis(*plot.yAxis, yTicker);
        plot.yAxis->setTicks(false);  // they are drawn with the labels, of which there may be more than lines
        add("background", &GraphicPainter::drawFills);
        add("grid", &GraphicPainter::drawSelection);
        add("main", &GraphicPainter::drawLines);
        add("axes", &GraphicPainter::drawLabels);
        add("overlay", &GraphicPainter::drawMarks);
    }

    /** The plot owns what is added. */
    void add(const char* layer, void (GraphicPainter::*draw)(QPainter&) const) {
        new Drawing(&plot, QString::fromLatin1(layer), [this, draw](QPainter& painter) {
            (GraphicPainter(scene, layout, colors).*draw)(painter);
        });
    }

    void arrange(const Look& look) {
        colors = GraphicColors(look.palette);
        layout = GraphicLayout(scene, look.size, look.font);
        const QRect area = layout.area().toRect();
        const QRect below = area.translated(0, 1);  // the plot counts Y from its last row, not from below it
        plot.axisRect()->setMargins(QMargins(below.left(), below.top(), look.size.width() - below.right() - 1,
                                             look.size.height() - below.bottom() - 1));
        const QRectF& viewport = layout.viewport();
        plot.xAxis->setRange(viewport.left(), viewport.right());
        plot.yAxis->setRange(viewport.top(), viewport.bottom());
        xTicker->m_Step = layout.xStep();
        yTicker->m_Step = layout.yStep();
        plot.yAxis->grid()->setZeroLinePen(QPen(colors.axis, 1));  // where a counter went down
        for (QCPAxis* axis : {plot.xAxis, plot.yAxis}) {
            axis->setBasePen(QPen(colors.axis, 1));
            axis->setTickPen(QPen(colors.axis, 1));
            axis->grid()->setPen(QPen(colors.grid, 1));
        }
    }

    const GraphicScene& scene;
    GraphicColors colors{QPalette()};
    GraphicLayout layout;
    QCustomPlot plot;
    QSharedPointer<MeshTicker> xTicker{new MeshTicker};
    QSharedPointer<MeshTicker> yTicker{new MeshTicker};
};

GraphicPlot::GraphicPlot(const GraphicScene& scene) : m_Engine(std::make_unique<Engine>(scene)) {}

GraphicPlot::~GraphicPlot() = default;

void GraphicPlot::draw(QPaintDevice& device, const Look& look,
                       const std::function<void(QPainter&)>& addition) {
    m_Engine->arrange(look);
    QCPPainter painter(&device);
    if (look.background.isValid()) {
        painter.fillRect(QRect({}, look.size), look.background);
    }
    if (!m_Engine->layout.isEmpty()) {
        m_Engine->plot.toPainter(&painter, look.size.width(), look.size.height());
    }
    if (addition) {
        addition(painter);
    }
}

const GraphicLayout& GraphicPlot::layout() const {
    return m_Engine->layout;
}
