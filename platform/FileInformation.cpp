// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/FileInformation.h"

#include <QProcess>

#ifndef Q_OS_MACOS
#include <QDBusConnection>
#include <QDBusMessage>
#include <QUrl>

#include "platform/ActivationToken.h"
#include "platform/SessionBus.h"
#endif

QString FileInformation::finderScript(const QString& path) {
    QString literal = path;  // a quote in a file's name must not end the string and go on as commands
    literal.replace('\\', "\\\\").replace('"', "\\\"");
    return QStringLiteral(
               "set posixPath to \"%1\"\n\nset fileAlias to POSIX file posixPath as alias\n\n"
               "tell application \"Finder\"\n\tactivate\n\topen information window of fileAlias\nend tell\n")
        .arg(literal);
}

#ifdef Q_OS_MACOS

void FileInformation::showForFile(const QString& path) {
    QProcess::startDetached("osascript", {"-e", finderScript(path)});
}

#else

void FileInformation::showForFile(const QString& path) {
    if (!SessionBus::isThere()) {
        return;
    }
    QDBusMessage request =
        QDBusMessage::createMethodCall("org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
                                       "org.freedesktop.FileManager1", "ShowItemProperties");
    const QByteArray uri = QUrl::fromLocalFile(path).toEncoded();
    request << QStringList(QString::fromLatin1(uri)) << ActivationToken::take();
    QDBusConnection::sessionBus().send(request);
}

#endif
