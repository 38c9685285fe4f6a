// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/main/ProgramInformation.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QIcon>
#include <QMessageBox>
#include <QUrl>

namespace {

/** From the folder of the program, in an installed tree as in that of a build. */
const QString homePage = QStringLiteral("../share/nevtora-meter/site/index.html");

}  // namespace

void ProgramInformation::showHomePage() {
    const QString page = QDir::cleanPath(QDir(QCoreApplication::applicationDirPath()).filePath(homePage));
    if (!QFile::exists(page)) {
        showMessage("This page is not installed:", page);
    } else if (!QDesktopServices::openUrl(QUrl::fromLocalFile(page))) {
        showMessage("No program could be started that shows this page:", page);
    }
}

void ProgramInformation::showAbout() {
    showMessage("Nevtora Meter " + QCoreApplication::applicationVersion(),
                "Shows which application moves how many bytes.\n\n"
                "Free software under the GNU General Public License, version 3 or later.");
}

/** In the box that is open, if one is: the dialog of a cleaning may stand over it, and would go with it. */
void ProgramInformation::showMessage(const QString& text, const QString& details) {
    if (m_Message == nullptr) {
        m_Message = new QMessageBox(QMessageBox::NoIcon, "Nevtora Meter", {}, QMessageBox::Ok, &m_Window);
        m_Message->setAttribute(Qt::WA_DeleteOnClose);
        m_Message->setIconPixmap(QIcon(":/app.svg").pixmap(64, m_Window.devicePixelRatioF()));
        m_Message->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    }
    m_Message->setText(text);
    m_Message->setInformativeText(details);
    m_Message->open();
}
