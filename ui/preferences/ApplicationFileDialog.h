// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFileDialog>

/**
 * Chooses the file of one application: a bundle on macOS, elsewhere any program, by its own path and not by what that
 * leads to. It shows other files too and says so when one is chosen. Main thread.
 */
class ApplicationFileDialog : public QFileDialog {
    Q_OBJECT

  public:
    /** Where it begins. */
    static QString startFolder();

    explicit ApplicationFileDialog(QWidget* parent = nullptr);

  protected:
    void accept() override;
};
