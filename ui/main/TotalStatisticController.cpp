// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/main/TotalStatisticController.h"

#include "daemon/DaemonConnection.h"
#include "ui/charts/TrafficFormat.h"
#include "ui_TotalsPanel.h"

TotalStatisticController::TotalStatisticController(QWidget& panel)
    : m_Outlets(std::make_unique<Ui::TotalsPanel>()) {
    fetch();
    m_Outlets->setupUi(&panel);
    updateTotalStatistic();
}

TotalStatisticController::~TotalStatisticController() = default;

void TotalStatisticController::fetch() {
    m_Info = DaemonConnection::sharedConnection()->totalStatisticInfo();
}

void TotalStatisticController::updateTotalStatistic() {
    fetch();
    if (m_Info == nullptr) {
        return;
    }
    const Ui::TotalsPanel& outlets = *m_Outlets;
    outlets.m_TcpSendedData->setText(bytesToNSString(m_Info->tcpSendedBytes()));
    outlets.m_UdpSendedData->setText(bytesToNSString(m_Info->udpSendedBytes()));
    outlets.m_OtherSendedData->setText(bytesToNSString(m_Info->otherSendedBytes()));
    outlets.m_TotalSendedData->setText(bytesToNSString(m_Info->totalSendedBytes()));
    outlets.m_TcpReceivedData->setText(bytesToNSString(m_Info->tcpReceivedBytes()));
    outlets.m_UdpReceivedData->setText(bytesToNSString(m_Info->udpReceivedBytes()));
    outlets.m_OtherReceivedData->setText(bytesToNSString(m_Info->otherReceivedBytes()));
    outlets.m_TotalReceivedData->setText(bytesToNSString(m_Info->totalReceivedBytes()));
    outlets.m_StartTime->setText(NSDateToNSString(m_Info->startTime()));
    outlets.m_EndTime->setText(NSDateToNSString(m_Info->endTime()));
}
