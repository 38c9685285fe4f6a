// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractButton>

/**
 * A triangle that tells whether something is unfolded: it points right while the button is checked, which means
 * closed here, and left while it is not.
 */
class DisclosureButton : public QAbstractButton {
    Q_OBJECT

  public:
    explicit DisclosureButton(QWidget* parent = nullptr);

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
};
