// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/InterfaceStyle.h"

#include <QAbstractScrollArea>
#include <QApplication>
#include <QFontDatabase>
#include <QPainter>
#include <QToolButton>
#include <QToolTip>

#include "platform/ColorScheme.h"
#include "platform/IconTheme.h"
#include "platform/style/Brush.h"
#include "platform/style/ButtonPainter.h"
#include "platform/style/FieldPainter.h"
#include "platform/style/FramePainter.h"
#include "platform/style/GroupBoxPainter.h"
#include "platform/style/HeaderPainter.h"
#include "platform/style/InterfaceMetrics.h"
#include "platform/style/InterfacePalette.h"
#include "platform/style/MenuPainter.h"
#include "platform/style/RangePainter.h"

namespace {

const QString interfaceFamily = QStringLiteral("Inter");
constexpr int interfacePointSize = 10;

constexpr int controlHeight = 28;  // pixels, of buttons and fields
constexpr int buttonWidth = 80;    // pixels, the narrowest push button
constexpr int buttonPadding = 12;  // pixels more than Fusion gives to both sides of a push button's label
constexpr int listRowHeight = 24;
constexpr int fieldMargin = 4;     // pixels above and below a field's text
constexpr int fieldTextShift = 3;  // pixels to the right, for a margin of 8
constexpr int groupGap = 8;        // pixels between the parts of a group's caption

void applyFont() {
    if (QFontDatabase::hasFamily(interfaceFamily)) {
        QApplication::setFont(QFont(interfaceFamily, interfacePointSize));
    }
}

void applyColors(bool isDark) {
    const QPalette palette = isDark ? InterfacePalette::dark() : InterfacePalette::light();
    QApplication::setPalette(palette);
    QToolTip::setPalette(palette);
}

Qt::ArrowType arrowDirection(QStyle::PrimitiveElement element) {
    switch (element) {
        case QStyle::PE_IndicatorArrowUp:
            return Qt::UpArrow;
        case QStyle::PE_IndicatorArrowLeft:
            return Qt::LeftArrow;
        case QStyle::PE_IndicatorArrowRight:
            return Qt::RightArrow;
        default:
            return Qt::DownArrow;
    }
}

void drawArrow(QPainter& painter, const QStyleOption& option, Qt::ArrowType direction) {
    const qreal size = qMin(8, qMin(option.rect.width(), option.rect.height()));
    Brush(painter).chevron(QRectF(option.rect).center(), direction,
                           option.palette.color(QPalette::PlaceholderText), size);
}

/** A selected row is marked as a whole; a ring in it would be one mark too many. */
bool needsFocusRing(const QStyleOption& option) {
    return !option.state.testFlag(QStyle::State_Item) || !option.state.testFlag(QStyle::State_Selected);
}

QStyleOption grownForToolButton(const QStyleOption& option, const QWidget* widget) {
    constexpr int inset = 3;  // by which Qt moves a tool button's ring away from its edge
    QStyleOption grown(option);
    if (qobject_cast<const QToolButton*>(widget) != nullptr) {
        grown.rect.adjust(-inset, -inset, inset, inset);
    }
    return grown;
}

QRect withTextMargin(const QRect& room, Qt::LayoutDirection direction) {
    return direction == Qt::LeftToRight ? room.adjusted(fieldTextShift, 0, 0, 0)
                                        : room.adjusted(0, 0, -fieldTextShift, 0);
}

/** A scroll bar continues what it scrolls. */
QColor scrollGround(const QStyleOption& option, const QWidget* bar) {
    const QWidget* container = bar != nullptr ? bar->parentWidget() : nullptr;
    const QWidget* parent = container != nullptr ? container->parentWidget() : nullptr;
    const auto* area = qobject_cast<const QAbstractScrollArea*>(parent);
    const QWidget* content = area != nullptr ? area->viewport() : nullptr;
    return content != nullptr ? content->palette().color(content->backgroundRole())
                              : option.palette.color(QPalette::Window);
}

}  // namespace

void InterfaceStyle::install() {
    auto* scheme = new ColorScheme(qApp);
    QApplication::setStyle(new InterfaceStyle);
    applyFont();
    IconTheme::install();
    const auto follow = [scheme] {
        IconTheme::follow(scheme->isDark());
        applyColors(scheme->isDark());
    };
    QObject::connect(scheme, &ColorScheme::changed, qApp, follow);
    follow();
}

InterfaceStyle::InterfaceStyle() : QProxyStyle("fusion") {}

void InterfaceStyle::polish(QWidget* widget) {
    QProxyStyle::polish(widget);
    if (qobject_cast<QAbstractScrollArea*>(widget) != nullptr) {
        widget->installEventFilter(this);
    }
}

void InterfaceStyle::unpolish(QWidget* widget) {
    widget->removeEventFilter(this);
    QProxyStyle::unpolish(widget);
}

/** Qt repaints the content of a table that the keyboard enters or leaves, but not its frame. */
bool InterfaceStyle::eventFilter(QObject* object, QEvent* event) {
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) {
        static_cast<QWidget*>(object)->update();
    }
    return QProxyStyle::eventFilter(object, event);
}

void InterfaceStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                                   const QWidget* widget) const {
    if (!drawButton(element, *option, *painter) && !drawSurround(element, *option, *painter, widget)) {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

bool InterfaceStyle::drawButton(PrimitiveElement element, const QStyleOption& option,
                                QPainter& painter) const {
    switch (element) {
        case PE_PanelButtonCommand:
            if (const auto* button = qstyleoption_cast<const QStyleOptionButton*>(&option)) {
                ButtonPainter::drawPushButton(painter, *button);
            }
            return true;
        case PE_PanelButtonTool:
            ButtonPainter::drawToolButton(painter, option);
            return true;
        case PE_IndicatorCheckBox:
        case PE_IndicatorItemViewItemCheck:
            ButtonPainter::drawCheckBox(painter, option);
            return true;
        case PE_IndicatorRadioButton:
            ButtonPainter::drawRadioButton(painter, option);
            return true;
        case PE_IndicatorArrowUp:
        case PE_IndicatorArrowDown:
        case PE_IndicatorArrowLeft:
        case PE_IndicatorArrowRight:
            drawArrow(painter, option, arrowDirection(element));
            return true;
        default:
            return false;
    }
}

bool InterfaceStyle::drawSurround(PrimitiveElement element, const QStyleOption& option, QPainter& painter,
                                  const QWidget* widget) const {
    switch (element) {
        case PE_PanelLineEdit:
            if (const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(&option);
                frame != nullptr && frame->lineWidth > 0) {
                FieldPainter::drawField(painter, option);
            } else {  // its owner draws the frame
                painter.fillRect(option.rect, option.palette.base());
            }
            return true;
        case PE_Frame:
            FramePainter::drawFrame(painter, option);
            return true;
        case PE_FrameFocusRect:
            if (needsFocusRing(option)) {
                FramePainter::drawFocus(painter, grownForToolButton(option, widget));
            }
            return true;
        case PE_FrameTabBarBase:
            if (const auto* base = qstyleoption_cast<const QStyleOptionTabBarBase*>(&option)) {
                FramePainter::drawTabBase(painter, *base);
            }
            return true;
        case PE_FrameTabWidget:
            if (const auto* pane = qstyleoption_cast<const QStyleOptionTabWidgetFrame*>(&option)) {
                FramePainter::drawTabPane(painter, *pane);
            }
            return true;
        case PE_PanelTipLabel:
            FramePainter::drawToolTip(painter, option);
            return true;
        case PE_PanelMenu:
            MenuPainter::drawMenuPanel(painter, option);
            return true;
        case PE_IndicatorToolBarSeparator:
            FramePainter::drawBarSeparator(painter, option);
            return true;
        case PE_FrameGroupBox:
        case PE_FrameMenu:
        case PE_FrameStatusBarItem:
        case PE_FrameDefaultButton:
            return true;  // nothing: the ground or the content tells where they are
        default:
            return false;
    }
}

void InterfaceStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                                 const QWidget* widget) const {
    const auto* header = qstyleoption_cast<const QStyleOptionHeader*>(option);
    const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
    const auto* bar = qstyleoption_cast<const QStyleOptionProgressBar*>(option);
    const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
    const auto* tab = qstyleoption_cast<const QStyleOptionTab*>(option);
    if (element == CE_Header && header != nullptr) {
        HeaderPainter::drawSection(*painter, *header);
    } else if (element == CE_HeaderEmptyArea) {
        HeaderPainter::drawEmptyArea(*painter, *option);
    } else if (element == CE_PushButton && button != nullptr) {
        proxy()->drawControl(CE_PushButtonBevel, option, painter, widget);
        drawPushButtonLabel(*button, *painter, widget);
    } else if (element == CE_ProgressBar && bar != nullptr) {
        drawProgressBar(*bar, *painter, widget);
    } else if (element == CE_MenuItem && item != nullptr) {
        MenuPainter::drawItem(*painter, *item, proxy()->pixelMetric(PM_SmallIconSize, option, widget));
    } else if (element == CE_MenuBarItem && item != nullptr) {
        MenuPainter::drawBarItem(*painter, *item);
    } else if (element == CE_MenuBarEmptyArea) {
        painter->fillRect(option->rect, option->palette.window());
    } else if (element == CE_TabBarTabShape && tab != nullptr) {
        FramePainter::drawTab(*painter, *tab);
    } else if (element == CE_Splitter) {
        FramePainter::drawSplitter(*painter, *option);
    } else if (element == CE_ToolBar) {
        FramePainter::drawBar(*painter, *option);
    } else {
        QProxyStyle::drawControl(element, option, painter, widget);
    }
}

void InterfaceStyle::drawPushButtonLabel(const QStyleOptionButton& button, QPainter& painter,
                                         const QWidget* widget) const {
    QStyleOptionButton label(button);
    label.rect = proxy()->subElementRect(SE_PushButtonContents, &button, widget);
    if (ButtonPainter::isAccented(button)) {
        label.palette.setColor(QPalette::ButtonText, button.palette.color(QPalette::HighlightedText));
    }
    proxy()->drawControl(CE_PushButtonLabel, &label, &painter, widget);
}

void InterfaceStyle::drawProgressBar(const QStyleOptionProgressBar& bar, QPainter& painter,
                                     const QWidget* widget) const {
    RangePainter::drawProgress(painter, bar, m_BusyBars.phase());
    if (bar.maximum <= bar.minimum && widget != nullptr) {
        m_BusyBars.keepMoving(const_cast<QWidget*>(widget));  // painting is const, its repetition is not
    }
}

void InterfaceStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                        QPainter* painter, const QWidget* widget) const {
    const auto* spinBox = qstyleoption_cast<const QStyleOptionSpinBox*>(option);
    const auto* comboBox = qstyleoption_cast<const QStyleOptionComboBox*>(option);
    const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(option);
    const auto* group = qstyleoption_cast<const QStyleOptionGroupBox*>(option);
    const auto room = [&](SubControl part) { return proxy()->subControlRect(control, option, part, widget); };
    if (control == CC_SpinBox && spinBox != nullptr) {
        FieldPainter::drawSpinBox(*painter, *spinBox, room(SC_SpinBoxUp), room(SC_SpinBoxDown));
    } else if (control == CC_ComboBox && comboBox != nullptr) {
        FieldPainter::drawComboBox(*painter, *comboBox, room(SC_ComboBoxArrow));
    } else if (control == CC_ScrollBar && slider != nullptr) {
        RangePainter::drawScrollBar(*painter, *slider, room(SC_ScrollBarSlider),
                                    scrollGround(*option, widget));
    } else if (control == CC_Slider && slider != nullptr) {
        drawSlider(*slider, *painter, widget);
    } else if (control == CC_GroupBox && group != nullptr) {
        GroupBoxPainter::draw(*painter, *group);
    } else {
        QProxyStyle::drawComplexControl(control, option, painter, widget);
    }
}

void InterfaceStyle::drawSlider(const QStyleOptionSlider& slider, QPainter& painter,
                                const QWidget* widget) const {
    if (slider.tickPosition != QSlider::NoTicks) {
        QStyleOptionSlider ticks(slider);
        ticks.subControls = SC_SliderTickmarks;
        QProxyStyle::drawComplexControl(CC_Slider, &ticks, &painter, widget);
    }
    const QRect handle = proxy()->subControlRect(CC_Slider, &slider, SC_SliderHandle, widget);
    RangePainter::drawSlider(painter, slider, handle);
}

QRect InterfaceStyle::subControlRect(ComplexControl control, const QStyleOptionComplex* option,
                                     SubControl subControl, const QWidget* widget) const {
    const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(option);
    const auto* group = qstyleoption_cast<const QStyleOptionGroupBox*>(option);
    if (control == CC_ScrollBar && slider != nullptr) {
        return RangePainter::scrollBarRoom(*slider, subControl);
    }
    if (control == CC_GroupBox && group != nullptr) {
        return visualRect(group->direction, group->rect, GroupBoxPainter::room(*group, subControl));
    }
    const QRect stock = QProxyStyle::subControlRect(control, option, subControl, widget);
    const bool isField = (control == CC_SpinBox && subControl == SC_SpinBoxEditField) ||
                         (control == CC_ComboBox && subControl == SC_ComboBoxEditField);
    return isField ? withTextMargin(stock, option->direction) : stock;
}

QRect InterfaceStyle::subElementRect(SubElement element, const QStyleOption* option,
                                     const QWidget* widget) const {
    const QRect stock = QProxyStyle::subElementRect(element, option, widget);
    const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
    const bool isField = element == SE_LineEditContents && frame != nullptr && frame->lineWidth > 0;
    return isField ? withTextMargin(stock, option->direction) : stock;
}

QSize InterfaceStyle::sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                                       const QWidget* widget) const {
    const QSize stock = QProxyStyle::sizeFromContents(type, option, size, widget);
    const int textHeight = option != nullptr ? option->fontMetrics.height() : 0;
    const int fieldHeight = qMax(controlHeight, textHeight + 2 * fieldMargin);
    const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
    switch (type) {
        case CT_PushButton:
            return (stock + QSize(buttonPadding, 0)).expandedTo({buttonWidth, controlHeight});
        case CT_LineEdit:
        case CT_ComboBox:
        case CT_SpinBox:
            return {stock.width() + fieldTextShift, fieldHeight};
        case CT_ToolButton:
        case CT_HeaderSection:
            return stock.expandedTo({0, controlHeight});
        case CT_ItemViewItem:
            return stock.expandedTo({0, listRowHeight});
        case CT_TabBarTab:
            return stock + QSize(0, 6);
        case CT_MenuItem:
            return item != nullptr ? MenuPainter::itemSize(*item, size) : stock;
        case CT_MenuBarItem:
            return MenuPainter::barItemSize(size);
        default:
            return stock;
    }
}

int InterfaceStyle::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const {
    const std::optional<int> own = InterfaceMetrics::pixels(metric);
    return own.has_value() ? *own : QProxyStyle::pixelMetric(metric, option, widget);
}

int InterfaceStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                              QStyleHintReturn* returned) const {
    switch (hint) {
        case SH_ComboBox_Popup:
        case SH_DialogButtonBox_ButtonsHaveIcons:
        case SH_EtchDisabledText:
            return 0;
        case SH_Menu_Scrollable:  // a long one, instead of columns that fill the screen
            return 1;
        case SH_Table_GridLineColor:
            return static_cast<int>(QApplication::palette().color(QPalette::Mid).rgb());
        default:
            return QProxyStyle::styleHint(hint, option, widget, returned);
    }
}
