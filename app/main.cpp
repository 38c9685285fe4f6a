// SPDX-License-Identifier: GPL-3.0-or-later
#include <QApplication>
#include <QIcon>
#include <QMessageBox>

#include "daemon/DaemonConnection.h"
#include "platform/InterfaceStyle.h"
#include "platform/TerminationSignals.h"
#include "ui/main/MainController.h"

namespace {

void showUnreachableDaemonAlert() {
    QMessageBox alert;
    alert.setIcon(QMessageBox::Critical);
    alert.setText("Nevtora Meter installation corrupted.");
    alert.setInformativeText("We can't connect to Nevtora Daemon.\nPlease, reinstall Nevtora Meter.");
    alert.setStyleSheet("QLabel#qt_msgbox_label { font-weight: 600; }");
    alert.addButton("Ok", QMessageBox::AcceptRole);
    alert.exec();
}

}  // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QApplication::setApplicationName("nevtora-meter");
    QApplication::setApplicationDisplayName("Nevtora Meter");
    QApplication::setDesktopFileName("nevtora-meter");
    QApplication::setWindowIcon(QIcon(":/nevtora-meter.svg"));
    InterfaceStyle::install();
    const TerminationSignals terminationSignals;
    if (!DaemonConnection::sharedConnection()->isValid()) {
        showUnreachableDaemonAlert();
        return -1;
    }
    int status = 0;
    {
        const MainController controller;
        status = QApplication::exec();
    }
    DaemonConnection::sharedConnection()->stopEventsListener();
    return status;
}
