// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/preferences/ApplicationFileDialog.h"

#include <QFileSystemModel>
#include <QMessageBox>
#include <QSortFilterProxyModel>

namespace {

#ifdef Q_OS_MACOS

const QString applicationsFolder = QStringLiteral("/Applications");

#else

const QString applicationsFolder = QStringLiteral("/usr/bin");

/** Whoever may run it: what is recorded are other users' programs too. */
bool isProgram(const QFileInfo& file) {
    return file.isFile() && (file.permissions() & (QFile::ExeOwner | QFile::ExeGroup | QFile::ExeOther)) != 0;
}

class ProgramsOnly : public QSortFilterProxyModel {
  public:
    using QSortFilterProxyModel::QSortFilterProxyModel;

    /** By what the source model knows of files, folders first. */
    void sort(int column, Qt::SortOrder order) override { sourceModel()->sort(column, order); }

  protected:
    bool filterAcceptsRow(int row, const QModelIndex& parent) const override {
        const auto* files = static_cast<const QFileSystemModel*>(sourceModel());
        const QFileInfo file = files->fileInfo(files->index(row, 0, parent));
        return file.isDir() || isProgram(file);
    }
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
    setNameFilter("Programs (*)");
    setProxyModel(new ProgramsOnly(this));
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
