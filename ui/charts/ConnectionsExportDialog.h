// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

#include "ui/charts/ConnectionsExport.h"

class QProgressBar;

/**
 * Shows how far an export is and lets the user cancel it. Modal to its window, so that nobody changes the cursor's
 * filter meanwhile; when the window goes, the export goes with it. Main thread.
 */
class ConnectionsExportDialog : public QDialog {
    Q_OBJECT

  public:
    /**
     * Asks where to, offering a file named for `subject`, then exports `connections` rows there and tells of a failure.
     * Returns at once.
     */
    static void ask(QWidget* window, const QString& subject, ConnectionsExport::Fetch fetch,
                    std::int32_t connections);

    /** Begins at once and deletes itself in the end; `window` is not null. */
    ConnectionsExportDialog(QWidget* window, const QString& path, ConnectionsExport::Fetch fetch,
                            std::int32_t connections);

  private:
    void setupLayout(const QString& text);
    void tellOfFailure(const QString& error);

    QString m_Path;
    QProgressBar* m_Progress;
    ConnectionsExport m_Export;
};
