// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProxyStyle>

/**
 * The look of every window: Fusion with flat table headers and a palette of our own, light or dark as the
 * desktop is, also when it changes while we run.
 */
class InterfaceStyle : public QProxyStyle {
    Q_OBJECT

  public:
    /**
     * Gives the application this style with its palette, the interface font where it is installed, and an
     * icon theme where the desktop has none. Call it once, on the main thread, before the first window.
     */
    static void install();

    InterfaceStyle();

    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override;
};
