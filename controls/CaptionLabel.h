// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLabel>

/** A label that names a value beside it: one size smaller and quieter than the value. Plain text. */
class CaptionLabel : public QLabel {
    Q_OBJECT

  public:
    explicit CaptionLabel(QWidget* parent = nullptr);
};
