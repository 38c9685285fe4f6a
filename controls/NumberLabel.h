// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLabel>

/**
 * Shows a number, or a dash for none, at its right edge, on the baseline of a label beside it. Its digits line
 * up with those of number labels above and below, and other digits of as many places never change its width.
 */
class NumberLabel : public QLabel {
    Q_OBJECT

  public:
    explicit NumberLabel(QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
};
