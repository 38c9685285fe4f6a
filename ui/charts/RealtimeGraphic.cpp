// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/charts/RealtimeGraphic.h"

#include <QKeySequence>
#include <QShortcut>
#include <algorithm>
#include <chrono>

#include "daemon/DaemonConnection.h"
#include "platform/WindowFront.h"
#include "ui/applications/PlainText.h"
#include "ui/charts/TrafficFormat.h"
#include "ui/charts/TrafficGraphic.h"
#include "ui_RealtimeGraphic.h"

namespace {

using namespace std::chrono_literals;

constexpr auto pollInterval = 1s;
constexpr std::int64_t visibleSeconds = 120;
constexpr QRectF firstViewport(0, 0, visibleSeconds, 4096);  // seconds, bytes
constexpr QSizeF firstMeshCell(10, 512);                     // seconds, bytes
constexpr double headroom = 0.25;                            // of a row of the grid, above the peak
constexpr QSizeF colorLegendSize(80, 120);                   // pixels

}  // namespace

std::vector<std::shared_ptr<RealtimeGraphic>>& RealtimeGraphic::mutableGraphicsList() {
    static std::vector<std::shared_ptr<RealtimeGraphic>> sRealtimeGraphicsArray;
    return sRealtimeGraphicsArray;
}

const std::vector<std::shared_ptr<RealtimeGraphic>>& RealtimeGraphic::graphicsList() {
    return mutableGraphicsList();
}

std::shared_ptr<RealtimeGraphic> RealtimeGraphic::graphicWithApplicationId(std::int32_t applicationId) {
    const std::shared_ptr<RealtimeGraphic> graphic(new RealtimeGraphic(applicationId));
    mutableGraphicsList().push_back(graphic);
    graphic->awakeFromNib();
    return graphic;
}

std::shared_ptr<RealtimeGraphic> RealtimeGraphic::findVisibleGraphicFromApplicationId(
    std::int32_t applicationId) {
    const auto& graphics = graphicsList();
    const auto found = std::find_if(graphics.begin(), graphics.end(), [applicationId](const auto& graphic) {
        return graphic->m_ApplicationInfo != nullptr && graphic->m_ApplicationInfo->id() == applicationId;
    });
    return found != graphics.end() ? *found : nullptr;
}

bool RealtimeGraphic::isGraphicForAplicationIdExist(std::int32_t applicationId) {
    return findVisibleGraphicFromApplicationId(applicationId) != nullptr;
}

void RealtimeGraphic::closeAllGraphics() {
    while (!graphicsList().empty()) {
        graphicsList().front()->close();
    }
}

RealtimeGraphic::RealtimeGraphic(std::int32_t applicationId)
    : m_ApplicationInfo(DaemonConnection::sharedConnection()->applicationInfoFromId(applicationId)) {
    if (m_ApplicationInfo != nullptr) {
        m_LastReceivedBytes = static_cast<double>(m_ApplicationInfo->totalReceivedBytes());
        m_LastSendedBytes = static_cast<double>(m_ApplicationInfo->totalSendedBytes());
    }
}

RealtimeGraphic::~RealtimeGraphic() {
    m_Graphic->setDelegate(nullptr);
    // The window lives on for a while, and an impatient user may close it twice.
    QObject::disconnect(m_GraphicWindow, &ToolWindow::willClose, nullptr, nullptr);
    m_GraphicWindow->deleteLater();
}

void RealtimeGraphic::awakeFromNib() {
    m_GraphicWindow = new ToolWindow;
    Ui::RealtimeGraphic outlets;
    outlets.setupUi(m_GraphicWindow);
    m_GraphicWindow->layout()->activate();  // the legends are placed by the chart's size
    m_Graphic = outlets.m_Graphic;
    m_Graphic->setDelegate(this);
    QObject::connect(m_GraphicWindow, &ToolWindow::willClose, m_GraphicWindow, [this] { windowWillClose(); });
    for (const QKeySequence& keys : QKeySequence::keyBindings(QKeySequence::Close)) {
        new QShortcut(keys, m_GraphicWindow, m_GraphicWindow, &QWidget::close);
    }
    m_GraphicWindow->setStickied(true);
    setupGraphic();
    QObject::connect(&m_Timer, &QTimer::timeout, &m_Timer, [this] { onTimer(); });
    m_Timer.setTimerType(Qt::PreciseTimer);
    m_Timer.start(pollInterval);
    onTimer();
}

void RealtimeGraphic::setupGraphic() {
    const QString name = PlainText::singleLine(m_ApplicationInfo ? m_ApplicationInfo->name() : QString());
    const QString title = (name + " Realtime Traffic Chart").trimmed();
    m_GraphicWindow->setTitle(PlainText::windowTitle(title));
    m_Graphic->setAccessibleName(title);
    TrafficGraphic::appendLines(*m_Graphic, true);
    m_Graphic->setViewport(firstViewport);
    m_Graphic->setMeshCellSize(firstMeshCell);
    m_Graphic->setXAxeDescription("Time (Sec)");
    m_Graphic->setYAxeDescription("Data (Mbit)");
    TrafficGraphic::addLegends(*m_Graphic, colorLegendSize, name);
}

void RealtimeGraphic::show() {
    if (m_GraphicWindow->isVisible()) {
        WindowFront::orderFrontRegardless(*m_GraphicWindow);
    } else {
        m_GraphicWindow->orderFront();
    }
}

void RealtimeGraphic::close() {
    m_GraphicWindow->close();
}

void RealtimeGraphic::windowWillClose() {
    m_Timer.stop();
    auto& graphics = mutableGraphicsList();
    const auto self = std::find(graphics.begin(), graphics.end(), shared_from_this());
    if (self != graphics.end()) {
        graphics.erase(self);  // which may have been the last reference
    }
}

void RealtimeGraphic::updateApplicationInfo() {
    if (m_ApplicationInfo != nullptr) {
        m_ApplicationInfo =
            DaemonConnection::sharedConnection()->applicationInfoFromId(m_ApplicationInfo->id());
    }
}

/** Counters that went down, or were lost, make a negative amount. */
void RealtimeGraphic::onTimer() {
    m_Graphic->setUpdatesDisabled(true);
    updateApplicationInfo();
    const auto& info = m_ApplicationInfo;
    const double received = info != nullptr ? static_cast<double>(info->totalReceivedBytes()) : 0;
    const double sended = info != nullptr ? static_cast<double>(info->totalSendedBytes()) : 0;
    const auto x = static_cast<float>(m_SecondsCounter);
    const double receivedNow = received - m_LastReceivedBytes;
    const double sendedNow = sended - m_LastSendedBytes;
    m_Graphic->addPointToLine(TrafficGraphic::ReceivedLine, {x, receivedNow});
    m_Graphic->addPointToLine(TrafficGraphic::SentLine, {x, sendedNow});
    if (m_SecondsCounter >= visibleSeconds) {
        scroll();
    }
    raisePeak(std::max(receivedNow, sendedNow));
    m_LastReceivedBytes = received;
    m_LastSendedBytes = sended;
    m_Graphic->setSelectionForAxe(TrafficGraphic::XAxe, x);
    ++m_SecondsCounter;
    m_Graphic->setUpdatesDisabled(false);
    m_Graphic->display();
}

/** The points of the other line stay: 8 bytes a second, which are not drawn. */
void RealtimeGraphic::scroll() {
    m_Graphic->setViewport(m_Graphic->viewport().translated(1, 0));
    m_Graphic->removeInvisiblePoints(TrafficGraphic::ReceivedLine, 0);
}

void RealtimeGraphic::raisePeak(double bytes) {
    if (bytes <= m_GraphicPeak) {
        return;
    }
    m_GraphicPeak = bytes;
    QSizeF cell = m_Graphic->meshCellSize();
    cell.setHeight(calcGraphicMeshHeightFromBytesPeak(m_GraphicPeak));
    m_Graphic->setMeshCellSize(cell);
    QRectF viewport = m_Graphic->viewport();
    viewport.setHeight(cell.height() * headroom + m_GraphicPeak);
    m_Graphic->setViewport(viewport);
}

QString RealtimeGraphic::axeValueToString(float value, int axe) {
    switch (axe) {
        case TrafficGraphic::XAxe:
            return QString::asprintf("%.0f", double{value});
        case TrafficGraphic::YAxe:
            return TrafficGraphic::bytesToMegabitsString(double{value});
        default:
            return {};
    }
}

QString RealtimeGraphic::readOutValueToString(float value, int axe) {
    return axe == TrafficGraphic::XAxe ? axeValueToString(value, axe) + " s"
                                       : TrafficGraphic::bytesToReadableString(double{value}) + "/s";
}

QString RealtimeGraphic::valueUnit() {
    return "bytes/s";
}
