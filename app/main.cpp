// SPDX-License-Identifier: GPL-3.0-or-later
#include <QApplication>
#include <QIcon>
#include <QMessageBox>

#include "daemon/DaemonConnection.h"
#include "platform/InterfaceStyle.h"
#include "platform/SingleInstance.h"
#include "platform/TerminationSignals.h"
#include "platform/WindowFront.h"
#include "ui/main/MainController.h"

namespace {

void showUnreachableDaemonAlert(const SingleInstance& instance) {
    QMessageBox alert;
    alert.setIcon(QMessageBox::Critical);
    alert.setText("Nevtora Meter installation corrupted.");
    alert.setInformativeText("We can't connect to Nevtora Daemon.\nPlease, reinstall Nevtora Meter.");
    alert.setStyleSheet("QLabel#qt_msgbox_label { font-weight: 600; }");
    alert.addButton("Ok", QMessageBox::AcceptRole);
    QObject::connect(&instance, &SingleInstance::activationRequested, &alert,
                     [&alert] { WindowFront::orderFrontRegardless(alert); });
    alert.exec();
}

}  // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QApplication::setApplicationName("nevtora-meter");
    QApplication::setApplicationDisplayName("Nevtora Meter");
    QApplication::setDesktopFileName("nevtora-meter");
    QApplication::setApplicationVersion(NEVTORA_VERSION);
    QApplication::setWindowIcon(QIcon(":/app.svg"));
    QApplication::setQuitOnLastWindowClosed(false);  // the tray keeps the program
    InterfaceStyle::install();
    const TerminationSignals terminationSignals;
    const SingleInstance instance(QApplication::applicationName());
    if (!instance.isFirst()) {
        return 0;
    }
    if (!DaemonConnection::sharedConnection()->isValid()) {
        showUnreachableDaemonAlert(instance);
        return -1;
    }
    int status = 0;
    {
        MainController controller;
        QObject::connect(&instance, &SingleInstance::activationRequested, &controller,
                         &MainController::applicationShouldHandleReopen);
        status = QApplication::exec();
    }
    DaemonConnection::sharedConnection()->stopEventsListener();
    return status;
}
