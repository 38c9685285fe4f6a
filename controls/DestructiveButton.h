// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPushButton>

/** A button for what cannot be undone: its text has the palette's colour for warnings, in light windows and in dark. */
class DestructiveButton : public QPushButton {
    Q_OBJECT

  public:
    using QPushButton::QPushButton;

  protected:
    void initStyleOption(QStyleOptionButton* option) const override;
};
