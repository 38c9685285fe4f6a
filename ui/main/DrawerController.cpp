// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/main/DrawerController.h"

#include "daemon/ApplicationInfo.h"
#include "ui/applications/PlainText.h"
#include "ui/charts/TrafficFormat.h"
#include "ui_DetailsDrawer.h"

namespace {

constexpr QSize iconSize(96, 96);

/** An icon without a picture that large gives the one that it has. */
QPixmap largePixmap(const QIcon& icon, qreal scale) {
    QPixmap pixmap =
        icon.pixmap(iconSize, scale).scaled(iconSize * scale, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    pixmap.setDevicePixelRatio(scale);
    return pixmap;
}

}  // namespace

DrawerController::DrawerController(QWidget& panel) : m_Outlets(std::make_unique<Ui::DetailsDrawer>()) {
    m_Outlets->setupUi(&panel);
    clearInformation();
}

DrawerController::~DrawerController() = default;

void DrawerController::clearInformation() {
    const Ui::DetailsDrawer& outlets = *m_Outlets;
    outlets.m_ApplicationIcon->clear();
    outlets.m_ApplicationName->setText("Please, select application.");
    for (QLabel* value :
         {static_cast<QLabel*>(outlets.m_SendedTCPData), static_cast<QLabel*>(outlets.m_SendedUDPData),
          static_cast<QLabel*>(outlets.m_SendedOtherData), static_cast<QLabel*>(outlets.m_SendedTotalData),
          static_cast<QLabel*>(outlets.m_ReceivedTCPData), static_cast<QLabel*>(outlets.m_ReceivedUDPData),
          static_cast<QLabel*>(outlets.m_ReceivedOtherData),
          static_cast<QLabel*>(outlets.m_ReceivedTotalData), outlets.m_StartTime, outlets.m_EndTime}) {
        value->setText("-");
    }
}

void DrawerController::updateFromApplicationInfo(const std::shared_ptr<const ApplicationInfo>& application) {
    if (application == nullptr) {
        clearInformation();
        return;
    }
    const Ui::DetailsDrawer& outlets = *m_Outlets;
    outlets.m_ApplicationIcon->setPixmap(
        largePixmap(application->icon(), outlets.m_ApplicationIcon->devicePixelRatioF()));
    outlets.m_ApplicationName->setText(PlainText::singleLine(application->name()));
    outlets.m_SendedTCPData->setText(bytesToNSString(application->tcpSendedBytes()));
    outlets.m_SendedUDPData->setText(bytesToNSString(application->udpSendedBytes()));
    outlets.m_SendedOtherData->setText(bytesToNSString(application->otherSendedBytes()));
    outlets.m_SendedTotalData->setText(bytesToNSString(application->totalSendedBytes()));
    outlets.m_ReceivedTCPData->setText(bytesToNSString(application->tcpReceivedBytes()));
    outlets.m_ReceivedUDPData->setText(bytesToNSString(application->udpReceivedBytes()));
    outlets.m_ReceivedOtherData->setText(bytesToNSString(application->otherReceivedBytes()));
    outlets.m_ReceivedTotalData->setText(bytesToNSString(application->totalReceivedBytes()));
    outlets.m_StartTime->setText(NSDateToNSString(application->startTime()));
    outlets.m_EndTime->setText(NSDateToNSString(application->endTime()));
}
