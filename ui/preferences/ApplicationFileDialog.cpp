// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/preferences/ApplicationFileDialog.h"

#include <QFileIconProvider>
#include <QMessageBox>

namespace {

#ifdef Q_OS_MACOS

const QString applicationsFolder = QStringLiteral("/Applications");

#else

const QString applicationsFolder = QStringLiteral("/usr/bin");

/** Whoever may run it: what is recorded are other users' programs too. */
bool isProgram(const QFileInfo& file) {
    return file.isFile() && (file.permissions() & (QFile::ExeOwner | QFile::ExeGroup | QFile::ExeOther)) != 0;
}

/**
 * Asked on a thread of the dialog's, so it hands out icons that it has. Telling programs apart here, or hiding what is
 * none, would read every file of a folder.
 */
class FileIcons : public QFileIconProvider {
  public:
    QIcon icon(const QFileInfo& file) const override { return file.isDir() ? m_Folder : m_Program; }
    using QFileIconProvider::icon;

  private:
    const QIcon m_Folder = QIcon::fromTheme("folder", QFileIconProvider::icon(Folder));
    const QIcon m_Program = QIcon::fromTheme("system-run", QFileIconProvider::icon(File));
};

#endif

}  // namespace

QString ApplicationFileDialog::startFolder() {
    return applicationsFolder;
}

ApplicationFileDialog::ApplicationFileDialog(QWidget* parent)
    : QFileDialog(parent, "Add Application", applicationsFolder) {
    setFileMode(QFileDialog::ExistingFile);
    setOption(QFileDialog::DontResolveSymlinks);
    setOption(QFileDialog::ReadOnly);  // files are chosen here, not made or renamed
    setLabelText(QFileDialog::Accept, "Add");
#ifdef Q_OS_MACOS
    setNameFilter("Applications (*.app)");
#else
    setOption(
        QFileDialog::DontUseNativeDialog);  // none of the desktops' own can tell a program from another file
    static FileIcons icons;                 // the dialog does not own them
    setIconProvider(&icons);
    setViewMode(QFileDialog::List);
#endif
}

void ApplicationFileDialog::accept() {
#ifndef Q_OS_MACOS
    const QFileInfo file(selectedFiles().value(0));
    if (file.isFile() && !isProgram(file)) {
        auto* box = new QMessageBox(QMessageBox::Warning, windowTitle(),
                                    "This file is not a program:", QMessageBox::NoButton, this);
        box->setAttribute(Qt::WA_DeleteOnClose);
        box->setInformativeText(file.filePath());
        box->addButton("OK", QMessageBox::AcceptRole);
        box->open();
        return;
    }
#endif
    QFileDialog::accept();
}
