// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/main/TotalStatisticController.h"

#include "daemon/DaemonConnection.h"

TotalStatisticController::TotalStatisticController() {
    updateTotalStatistic();
}

void TotalStatisticController::updateTotalStatistic() {
    m_Info = DaemonConnection::sharedConnection()->totalStatisticInfo();
}
