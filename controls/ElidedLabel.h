// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLabel>

/**
 * A line of plain text that gives way: where there is no room for it, it ends in an ellipsis and a tooltip shows
 * all of it. A screen reader reads all of it at any width.
 */
class ElidedLabel : public QLabel {
    Q_OBJECT

  public:
    explicit ElidedLabel(QWidget* parent = nullptr);

    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;

  private:
    QString elidedText() const;
};
