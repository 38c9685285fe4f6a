// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProxyStyle>
#include <QStyleOption>

#include "platform/style/BusyBars.h"

/**
 * The look of every window: Fusion's behaviour with our own drawing and palette, light or dark as the desktop
 * is, also when it changes while we run. This class says which painter draws what and how much room it gets.
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

    void polish(QWidget* widget) override;
    void unpolish(QWidget* widget) override;
    using QProxyStyle::polish;
    using QProxyStyle::unpolish;

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                            const QWidget* widget) const override;
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl subControl,
                         const QWidget* widget) const override;
    QRect subElementRect(SubElement element, const QStyleOption* option,
                         const QWidget* widget) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                           const QWidget* widget) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override;
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* returned) const override;

  protected:
    bool eventFilter(QObject* object, QEvent* event) override;

  private:
    bool drawButton(PrimitiveElement element, const QStyleOption& option, QPainter& painter) const;
    bool drawSurround(PrimitiveElement element, const QStyleOption& option, QPainter& painter,
                      const QWidget* widget) const;
    void drawPushButtonLabel(const QStyleOptionButton& button, QPainter& painter,
                             const QWidget* widget) const;
    void drawProgressBar(const QStyleOptionProgressBar& bar, QPainter& painter, const QWidget* widget) const;
    void drawSlider(const QStyleOptionSlider& slider, QPainter& painter, const QWidget* widget) const;

    mutable BusyBars m_BusyBars;  // painting, which is const, keeps them moving
};
