// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/LoginItem.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSaveFile>
#include <QStandardPaths>

namespace {

bool write(const QString& path, const QString& text) {
    QSaveFile file(path);
    return QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly) &&
           file.write(text.toUtf8()) >= 0 && file.commit();
}

bool remove(const QString& path) {
    return QFile::remove(path) || !QFile::exists(path);
}

#ifdef Q_OS_MACOS

QString agentPath() {
    return QDir::homePath() + "/Library/LaunchAgents/com.qv.nevtora-meter.plist";
}

QString agent() {
    return QStringLiteral(
               "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
               "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
               "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
               "<plist version=\"1.0\">\n<dict>\n"
               "\t<key>Label</key>\n\t<string>com.qv.nevtora-meter</string>\n"
               "\t<key>ProgramArguments</key>\n\t<array>\n\t\t<string>%1</string>\n\t</array>\n"
               "\t<key>RunAtLoad</key>\n\t<true/>\n</dict>\n</plist>\n")
        .arg(QCoreApplication::applicationFilePath().toHtmlEscaped());
}

#else

const QString entryName = QStringLiteral("autostart/nevtora-meter.desktop");

QString userEntryPath() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + '/' + entryName;
}

/** The one among all folders that counts where the user has none. */
QString systemEntryPath() {
    const QStringList entries = QStandardPaths::locateAll(QStandardPaths::GenericConfigLocation, entryName);
    for (const QString& path : entries) {
        if (path != userEntryPath()) {
            return path;
        }
    }
    return {};
}

/** The keys of an entry's main group; empty when it cannot be read. */
QHash<QString, QString> readEntry(const QString& path) {
    QHash<QString, QString> values;
    QFile file(path);
    if (path.isEmpty() || !file.open(QIODevice::ReadOnly)) {
        return values;
    }
    bool isMainGroup = false;
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine()).trimmed();
        const qsizetype equals = line.indexOf('=');
        if (line.startsWith('[')) {
            isMainGroup = line == "[Desktop Entry]";
        } else if (isMainGroup && equals > 0) {
            values.insert(line.left(equals).trimmed(), line.mid(equals + 1).trimmed());
        }
    }
    return values;
}

/** A key of GNOME's besides the standard's: its settings switch an entry off that way. */
bool startsSomething(const QString& path) {
    const QHash<QString, QString> entry = readEntry(path);
    const QString program = entry.value("TryExec");
    return entry.contains("Exec") && entry.value("Hidden") != "true" &&
           entry.value("X-GNOME-Autostart-enabled") != "false" &&
           (program.isEmpty() || !QStandardPaths::findExecutable(program).isEmpty());
}

/** As a value of "Exec": quoted for its shell-like rules, then escaped as any text in such a file. */
QString asCommand(QString program) {
    for (const char* special : {"\\", "\"", "`", "$"}) {
        program.replace(special, QString("\\") + special);
    }
    return '"' + program.replace('\\', "\\\\").replace('%', "%%") + '"';
}

QString entry() {
    const QString program = QCoreApplication::applicationFilePath();
    return QStringLiteral(
               "[Desktop Entry]\nType=Application\nName=Nevtora "
               "Meter\nIcon=nevtora-meter\nExec=%1\nTryExec=%2\n")
        .arg(asCommand(program), QString(program).replace('\\', "\\\\"));
}

/** Stands in the user's folder to take the place of the system's. */
const QString hidingEntry =
    QStringLiteral("[Desktop Entry]\nType=Application\nName=Nevtora Meter\nHidden=true\n");

#endif

}  // namespace

#ifdef Q_OS_MACOS

bool LoginItem::isEnabled() {
    return QFile::exists(agentPath());
}

bool LoginItem::exists() {
    return isEnabled();
}

bool LoginItem::setEnabled(bool enabled) {
    return enabled ? write(agentPath(), agent()) : remove(agentPath());
}

#else

bool LoginItem::isEnabled() {
    return startsSomething(QFile::exists(userEntryPath()) ? userEntryPath() : systemEntryPath());
}

bool LoginItem::exists() {
    return QFile::exists(userEntryPath()) || !systemEntryPath().isEmpty();
}

bool LoginItem::setEnabled(bool enabled) {
    if (isEnabled() == enabled) {
        return true;
    }
    const bool systemStarts = startsSomething(systemEntryPath());
    if (enabled == systemStarts) {
        return remove(userEntryPath());
    }
    return write(userEntryPath(), enabled ? entry() : hidingEntry);
}

#endif
