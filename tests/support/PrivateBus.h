// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoreApplication>
#include <QProcess>
#include <QString>
#include <QTemporaryFile>

/**
 * The session bus of the test's process, which nobody else is on and which starts no services by itself. Its address
 * stands in the environment, for those who use the session's bus.
 */
class PrivateBus {
  public:
    /** Empty where no bus can be had. */
    static QString address() {
        static const QString address = start();
        return address;
    }

  private:
    static QString start() {
        static QTemporaryFile configuration;
        static QProcess* const bus = new QProcess(qApp);
        configuration.open();
        configuration.write(
            "<busconfig><type>session</type><listen>unix:tmpdir=/tmp</listen><policy context='default'>"
            "<allow eavesdrop='true'/>"
            "<allow send_destination='*' eavesdrop='true'/><allow own='*'/></policy></busconfig>");
        configuration.flush();
        bus->start("dbus-daemon",
                   {"--config-file=" + configuration.fileName(), "--nofork", "--print-address"});
        if (!bus->waitForReadyRead(5000)) {
            return {};
        }
        qAddPostRoutine([] {
            bus->terminate();
            bus->waitForFinished();
        });
        const QByteArray address = bus->readLine().trimmed();
        qputenv("DBUS_SESSION_BUS_ADDRESS", address);
        return QString::fromLatin1(address);
    }
};
