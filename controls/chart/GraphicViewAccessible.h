// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAccessibleWidget>

class GraphicView;

/** A chart for those who cannot see it: its role, and a description that is put together when it is asked for. */
class GraphicViewAccessible : public QAccessibleWidget {
  public:
    explicit GraphicViewAccessible(GraphicView* view);

    /** Makes every chart known; again does nothing. */
    static void install();

    QString text(QAccessible::Text kind) const override;
};
