// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DesktopEntries.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

namespace {

struct Entry {
    QString command;
    QString icon;
};

/** Only the group that describes the application itself, not those of its actions. */
Entry readEntry(const QString& fileName) {
    Entry entry;
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        return entry;
    }
    bool isInside = false;
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine()).trimmed();
        if (line.startsWith('[')) {
            isInside = line == QLatin1String("[Desktop Entry]");
        } else if (isInside && line.startsWith(QLatin1String("Exec="))) {
            entry.command = line.mid(5);
        } else if (isInside && line.startsWith(QLatin1String("Icon="))) {
            entry.icon = line.mid(5);
        }
    }
    return entry;
}

/** The program and its arguments, without "env" and the variables that it sets in front of them. */
QStringList commandWords(const QString& command) {
    QStringList words = QProcess::splitCommand(command);
    if (!words.isEmpty() && QFileInfo(words.first()).fileName() == QLatin1String("env")) {
        do {
            words.removeFirst();
        } while (!words.isEmpty() && words.first().contains('='));
    }
    return words;
}

/** True for "python3 tool.py", "flatpak run ...", "sh -c ...": the entry is not the first word's own. */
bool startsAnotherProgram(const QStringList& words) {
    static const QStringList programOptions{"-c", "-e", "-m", "-jar"};
    if (words.size() < 2 || words[1].startsWith('%')) {
        return false;
    }
    return !words[1].startsWith('-') || programOptions.contains(words[1]);
}

}  // namespace

DesktopEntries::DesktopEntries(const QStringList& folders) {
    for (const QString& folder : folders) {
        QDirIterator files(folder, {"*.desktop"}, QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            addEntry(files.next());
        }
    }
}

QString DesktopEntries::iconFor(const QString& path) const {
    const auto exact = m_Claims.constFind(path);
    return exact != m_Claims.constEnd() ? exact->icon : m_Claims.value(QFileInfo(path).fileName()).icon;
}

void DesktopEntries::addEntry(const QString& file) {
    const Entry entry = readEntry(file);
    const QStringList words = commandWords(entry.command);
    if (entry.icon.isEmpty() || words.isEmpty() || startsAnotherProgram(words)) {
        return;
    }
    const bool isPlain = words.size() == 1 || words[1].startsWith('%');
    const QString program = words.first();
    claim(program, {entry.icon, isPlain});
    claim(QFileInfo(program).fileName(), {entry.icon, isPlain});
    // What runs in the end may be the target of a link, as for /usr/bin/vim.
    const QString target = QFileInfo(QStandardPaths::findExecutable(program)).canonicalFilePath();
    if (!target.isEmpty()) {
        claim(target, {entry.icon, isPlain});
    }
}

/** Of "office" and "office --writer" the first is the program's own entry. */
void DesktopEntries::claim(const QString& key, const Claim& claim) {
    const auto known = m_Claims.constFind(key);
    if (known == m_Claims.constEnd() || (claim.isPlain && !known->isPlain)) {
        m_Claims.insert(key, claim);
    }
}
