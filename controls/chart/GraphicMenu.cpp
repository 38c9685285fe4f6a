// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/chart/GraphicMenu.h"

#include <QClipboard>
#include <QDir>
#include <QFileDialog>
#include <QGuiApplication>
#include <QIcon>
#include <QMessageBox>
#include <QStandardPaths>
#include <functional>
#include <utility>

#include "controls/FileName.h"
#include "controls/chart/GraphicExport.h"
#include "controls/chart/GraphicView.h"

namespace {

QString fileName(const GraphicView& view) {
    return FileName::fromTitle(view.accessibleName().isEmpty() ? QStringLiteral("Chart")
                                                               : view.accessibleName());
}

QString suffixOf(const QString& filter) {
    return filter.section(QStringLiteral("*."), 1).chopped(1);  // "PNG picture (*.png)"
}

void tellOfFailure(QWidget* parent, const QString& path, const QString& error) {
    auto* box =
        new QMessageBox(QMessageBox::Warning, QStringLiteral("Save"),
                        QStringLiteral("\"%1\" could not be written.").arg(QDir::toNativeSeparators(path)),
                        QMessageBox::Ok, parent);
    box->setInformativeText(error);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

/** Asks where to, in the dialog's first filter unless the user chooses another; `save` returns what went wrong. */
void askAndSave(GraphicView& view, const QString& title, const QStringList& filters,
                std::function<QString(const QString&)> save) {
    auto* dialog =
        new QFileDialog(&view, title, QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setNameFilters(filters);
    dialog->setDefaultSuffix(suffixOf(filters.first()));
    dialog->selectFile(fileName(view));
    QObject::connect(dialog, &QFileDialog::filterSelected, dialog,
                     [dialog](const QString& filter) { dialog->setDefaultSuffix(suffixOf(filter)); });
    QObject::connect(dialog, &QFileDialog::fileSelected, &view,
                     [&view, save = std::move(save)](const QString& path) {
                         const QString error = save(path);
                         if (!error.isEmpty()) {
                             tellOfFailure(&view, path, error);
                         }
                     });
    dialog->open();
}

}  // namespace

GraphicMenu::GraphicMenu(GraphicView& view) : QMenu(&view) {
    setAttribute(Qt::WA_DeleteOnClose);
    const auto add = [&](const char* icon, const QString& text, void (*command)(GraphicView&)) {
        connect(addAction(QIcon::fromTheme(QString::fromLatin1(icon)), text), &QAction::triggered, &view,
                [&view, command] { command(view); });
    };
    add("edit-copy", QStringLiteral("Copy Picture"), &GraphicMenu::copyPicture);
    add("document-save-as", QStringLiteral("Save Picture As..."), &GraphicMenu::savePicture);
    add("document-export", QStringLiteral("Export Points..."), &GraphicMenu::exportPoints);
}

void GraphicMenu::copyPicture(GraphicView& view) {
    QGuiApplication::clipboard()->setImage(GraphicExport(view).picture());
}

void GraphicMenu::savePicture(GraphicView& view) {
    askAndSave(view, QStringLiteral("Save Picture"),
               {QStringLiteral("PNG picture (*.png)"), QStringLiteral("SVG drawing (*.svg)"),
                QStringLiteral("PDF document (*.pdf)")},
               [&view](const QString& path) { return GraphicExport(view).savePicture(path); });
}

void GraphicMenu::exportPoints(GraphicView& view) {
    askAndSave(view, QStringLiteral("Export Points"), {QStringLiteral("Comma-separated values (*.csv)")},
               [&view](const QString& path) { return GraphicExport(view).savePoints(path); });
}
