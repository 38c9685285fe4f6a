// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/charts/ConnectionsExportDialog.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QLocale>
#include <QMessageBox>
#include <QProgressBar>
#include <QStandardPaths>
#include <QVBoxLayout>
#include <utility>

#include "controls/FileName.h"

namespace {

constexpr int windowMargin = 12;  // pixels
constexpr int rhythm = 8;
constexpr int progressWidth = 320;

QString title() {
    return QStringLiteral("Export Connections");
}

}  // namespace

void ConnectionsExportDialog::ask(QWidget* window, const QString& subject, ConnectionsExport::Fetch fetch,
                                  std::int32_t connections) {
    auto* dialog =
        new QFileDialog(window, title(), QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setNameFilter(QStringLiteral("Comma-separated values (*.csv)"));
    dialog->setDefaultSuffix(QStringLiteral("csv"));
    dialog->selectFile(FileName::fromTitle(subject));
    connect(dialog, &QFileDialog::fileSelected, window,
            [window, fetch = std::move(fetch), connections](const QString& path) {
                new ConnectionsExportDialog(window, path, fetch, connections);
            });
    dialog->open();
}

ConnectionsExportDialog::ConnectionsExportDialog(QWidget* window, const QString& path,
                                                 ConnectionsExport::Fetch fetch, std::int32_t connections)
    : QDialog(window), m_Path(path), m_Progress(new QProgressBar), m_Export(std::move(fetch), connections) {
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(title());
    setupLayout(QString("Exporting %1 connections").arg(QLocale().toString(connections)));
    m_Progress->setRange(0, connections);
    connect(&m_Export, &ConnectionsExport::progressed, m_Progress, &QProgressBar::setValue);
    connect(&m_Export, &ConnectionsExport::finished, this, &QDialog::accept);
    connect(&m_Export, &ConnectionsExport::failed, this, &ConnectionsExportDialog::tellOfFailure);
    open();
    m_Export.start(path);
}

void ConnectionsExportDialog::setupLayout(const QString& text) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(windowMargin, windowMargin, windowMargin, windowMargin);
    layout->setSpacing(rhythm);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->addWidget(new QLabel(text));
    m_Progress->setMinimumWidth(progressWidth);
    layout->addWidget(m_Progress);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void ConnectionsExportDialog::tellOfFailure(const QString& error) {
    auto* box = new QMessageBox(QMessageBox::Warning, title(),
                                QString("\"%1\" could not be written.").arg(QDir::toNativeSeparators(m_Path)),
                                QMessageBox::Ok, parentWidget());
    box->setTextFormat(Qt::PlainText);
    box->setInformativeText(error);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
    reject();
}
