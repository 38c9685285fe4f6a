// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/chart/GraphicView.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QLocale>
#include <QPainter>
#include <algorithm>
#include <cmath>

#include "controls/chart/GraphicMenu.h"
#include "controls/chart/GraphicPlot.h"
#include "controls/chart/GraphicReadOut.h"
#include "controls/chart/GraphicSkyline.h"
#include "controls/chart/GraphicViewAccessible.h"
#include "controls/chart/GraphicViewDelegate.h"
#include "controls/chart/GraphicViewLegend.h"

GraphicView::GraphicView(QWidget* parent)
    : QWidget(parent), m_Plot(std::make_unique<GraphicPlot>(m_Scene)), m_ReadOut(new GraphicReadOut(this)) {
    GraphicViewAccessible::install();
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

GraphicView::~GraphicView() = default;

void GraphicView::setDelegate(GraphicViewDelegate* delegate) {
    m_Scene.delegate = delegate;
    changed();
}

void GraphicView::appendLine() {
    m_Scene.lines.emplace_back();
    changed();
}

unsigned GraphicView::lineCount() const {
    return static_cast<unsigned>(m_Scene.lines.size());
}

GraphicScene::Line* GraphicView::lineAt(unsigned line) {
    return line < m_Scene.lines.size() ? &m_Scene.lines[line] : nullptr;
}

void GraphicView::setLineColor(unsigned line, const QColor& color) {
    auto* const found = lineAt(line);
    if (found != nullptr && found->color != color) {
        found->color = color;
        changed();
        emit lineColorChanged(line);
    }
}

QColor GraphicView::lineColor(unsigned line) const {
    return line < m_Scene.lines.size() ? m_Scene.lines[line].color : QColor();
}

void GraphicView::setLineStyle(unsigned line, int style) {
    if (auto* const found = lineAt(line)) {
        found->style = style;
        changed();
    }
}

void GraphicView::setLineDropShadow(unsigned line, bool dropShadow) {
    if (auto* const found = lineAt(line)) {
        found->hasDropShadow = dropShadow;
        changed();
    }
}

QList<GraphicViewLegend*> GraphicView::legends() const {
    return findChildren<GraphicViewLegend*>(Qt::FindDirectChildrenOnly);
}

QString GraphicView::lineName(unsigned line) const {
    for (const GraphicViewLegend* legend : legends()) {
        const QString name = legend->nameOfLine(line);
        if (!name.isEmpty()) {
            return name;
        }
    }
    return QStringLiteral("Line %1").arg(line + 1);
}

void GraphicView::addPointToLine(unsigned line, const QPointF& point) {
    if (auto* const found = lineAt(line)) {
        found->data.add({static_cast<float>(point.x()), static_cast<float>(point.y())});
        changed();
    }
}

void GraphicView::clearLine(unsigned line) {
    if (auto* const found = lineAt(line)) {
        found->data.clear();
        changed();
    }
}

void GraphicView::removeInvisiblePoints(unsigned line, int direction) {
    if (auto* const found = lineAt(line)) {
        if (direction == 0) {
            found->data.removeBefore(m_Scene.viewport.left());
        } else {
            found->data.removeAfter(m_Scene.viewport.right());
        }
        changed();
    }
}

void GraphicView::setViewport(const QRectF& viewport) {
    m_Scene.viewport = viewport;
    changed();
}

void GraphicView::recalcVisibleHeight() {
    double lowest = 0;
    double highest = 0;
    for (const GraphicScene::Line& line : m_Scene.lines) {
        for (const GraphicLine::Point& point : line.data.points()) {
            lowest = std::min<double>(lowest, point.y);
            highest = std::max<double>(highest, point.y);
        }
    }
    const double row = m_Scene.meshCellSize.height() > 0 ? m_Scene.meshCellSize.height() : 1;
    const double top = std::max(highest, lowest < 0 ? highest : row) + row / 4;
    const double bottom = lowest < 0 ? lowest - row / 4 : 0;
    QRectF viewport = m_Scene.viewport;
    viewport.setTop(bottom);
    viewport.setHeight(top - bottom);
    m_AreLegendsKeptClear = true;
    m_AreLegendsInDoubt = true;
    setViewport(viewport);
}

void GraphicView::setMeshCellSize(const QSizeF& size) {
    m_Scene.meshCellSize = size;
    changed();
}

void GraphicView::setXAxeDescription(const QString& description) {
    m_Scene.descriptions[0] = description;
    changed();
}

void GraphicView::setYAxeDescription(const QString& description) {
    m_Scene.descriptions[1] = description;
    changed();
}

void GraphicView::setSelectionForAxe(int axe, float point) {
    m_Scene.selection = {axe, point, point, true};
    changed();
}

void GraphicView::setSelectionForAxe(int axe, float from, float to) {
    m_Scene.selection = {axe, std::min(from, to), std::max(from, to), false};
    changed();
}

void GraphicView::clearSelection() {
    if (m_Scene.selection) {
        m_Scene.selection.reset();
        changed();
    }
}

void GraphicView::setUpdatesDisabled(bool isDisabled) {
    m_AreUpdatesDisabled = isDisabled;
    if (!isDisabled && m_IsStale) {
        changed();
    }
}

void GraphicView::display() {
    if (!m_AreUpdatesDisabled) {
        repaint();
    }
}

void GraphicView::setBGAlpha(float alpha) {
    m_BackgroundAlpha = std::clamp(alpha, 0.0F, 1.0F);
    changed();
}

QString GraphicView::summary() const {
    const auto text = [this](double value, int axe) {
        const auto number = static_cast<float>(value);
        const QString said =
            m_Scene.delegate != nullptr ? m_Scene.delegate->readOutValueToString(number, axe) : QString();
        return said.isEmpty() ? QLocale().toString(number) : said.trimmed();
    };
    const QRectF& viewport = m_Scene.viewport;
    QStringList parts{QStringLiteral("%1 from %2 to %3")
                          .arg(m_Scene.descriptions[0], text(viewport.left(), 0), text(viewport.right(), 0))};
    for (unsigned i = 0; i < lineCount(); ++i) {
        const GraphicLine& data = m_Scene.lines[i].data;
        const auto [first, last] = data.within(viewport.left(), viewport.right());
        if (first == last) {
            parts.append(QStringLiteral("%1: no points").arg(lineName(i)));
            continue;
        }
        const auto begin = data.points().begin();
        const auto isLower = [](const auto& left, const auto& right) { return left.y < right.y; };
        const auto peak = std::max_element(begin + static_cast<std::ptrdiff_t>(first),
                                           begin + static_cast<std::ptrdiff_t>(last), isLower);
        parts.append(
            QStringLiteral("%1: highest %2, at %3, latest %4")
                .arg(lineName(i), text(peak->y, 1), text(peak->x, 0), text(data.points()[last - 1].y, 1)));
    }
    return parts.join(QStringLiteral("; "));
}

QSize GraphicView::sizeHint() const {
    return {420, 260};
}

QSize GraphicView::minimumSizeHint() const {
    return {160, 100};
}

void GraphicView::changed() {
    m_IsStale = true;
    if (!m_AreUpdatesDisabled) {
        update();
    }
}

void GraphicView::redraw() {
    const qreal ratio = devicePixelRatioF();
    const QSize pixels = (QSizeF(size()) * ratio).toSize();
    const bool isTranslucent = m_BackgroundAlpha < 1;  // an opaque picture is cheaper to show
    if (m_Picture.size() != pixels || m_Picture.devicePixelRatio() != ratio ||
        m_Picture.hasAlphaChannel() != isTranslucent) {
        m_Picture = QPixmap(pixels);
        m_Picture.setDevicePixelRatio(ratio);
    }
    QColor background = palette().color(QPalette::Base);
    background.setAlphaF(m_BackgroundAlpha);
    m_Picture.fill(background);
    m_Plot->draw(m_Picture, {size(), QColor(), palette(), font()});
    m_IsStale = false;
    m_ReadOut->follow(m_Plot->layout());
    if (m_AreLegendsInDoubt) {
        m_AreLegendsInDoubt = false;
        const GraphicSkyline skyline(m_Scene, m_Plot->layout());
        for (GraphicViewLegend* legend : legendsToPlace()) {
            legend->keepClearOf(skyline);
        }
    }
}

void GraphicView::drawOn(QPaintDevice& device) {
    placeLegends();  // a hidden view hears of its new size only when it is shown
    m_Plot->draw(device, {size(), palette().color(QPalette::Base), palette(), font()},
                 [this](QPainter& painter) {
                     for (GraphicViewLegend* legend : legends()) {
                         legend->drawOn(painter);
                     }
                 });
}

void GraphicView::paintEvent(QPaintEvent* /*event*/) {
    if (!m_AreUpdatesDisabled && (m_IsStale || m_Picture.devicePixelRatio() != devicePixelRatioF())) {
        redraw();
    }
    QPainter(this).drawPixmap(0, 0, m_Picture);
}

void GraphicView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    placeLegends();
    m_AreLegendsInDoubt = m_AreLegendsKeptClear;
    m_ReadOut->setGeometry(rect());
    changed();
}

void GraphicView::placeLegends() {
    for (GraphicViewLegend* legend : legendsToPlace()) {
        legend->place();
    }
}

/** First those that others make room for. */
QList<GraphicViewLegend*> GraphicView::legendsToPlace() const {
    QList<GraphicViewLegend*> all = legends();
    std::stable_partition(all.begin(), all.end(), [](const auto* legend) { return !legend->isHugging(); });
    return all;
}

void GraphicView::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    switch (event->type()) {
        case QEvent::PaletteChange:
        case QEvent::FontChange:
        case QEvent::StyleChange:
        case QEvent::LocaleChange:
        case QEvent::LayoutDirectionChange:
            changed();
            break;
        default:
            break;
    }
}

void GraphicView::mouseMoveEvent(QMouseEvent* event) {
    if (!m_AreUpdatesDisabled) {
        m_ReadOut->pointAt(event->position());
    }
}

void GraphicView::leaveEvent(QEvent* /*event*/) {
    dismissReadOut();
}

void GraphicView::dismissReadOut() {
    m_ReadOut->dismiss();
}

/** Who comes by the Tab key sees that it is here, and reads the newest point. */
void GraphicView::focusInEvent(QFocusEvent* event) {
    QWidget::focusInEvent(event);
    if (event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason) {
        m_ReadOut->step(1);
    }
}

void GraphicView::focusOutEvent(QFocusEvent* event) {
    QWidget::focusOutEvent(event);
    if (event->reason() != Qt::PopupFocusReason) {
        m_ReadOut->dismiss();
    }
}

void GraphicView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Left || event->key() == Qt::Key_Right) {
        m_ReadOut->step(event->key() == Qt::Key_Left ? -1 : 1);
    } else if (event->key() == Qt::Key_Escape && m_ReadOut->isShown()) {
        m_ReadOut->dismiss();
    } else {
        QWidget::keyPressEvent(event);
    }
}

void GraphicView::contextMenuEvent(QContextMenuEvent* event) {
    auto* menu = new GraphicMenu(*this);
    menu->popup(event->reason() == QContextMenuEvent::Keyboard ? mapToGlobal(rect().center())
                                                               : event->globalPos());
}
