// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/style/InterfaceMetrics.h"

std::optional<int> InterfaceMetrics::pixels(QStyle::PixelMetric metric) {
    switch (metric) {
        case QStyle::PM_SmallIconSize:
        case QStyle::PM_ToolBarIconSize:
        case QStyle::PM_ButtonIconSize:
        case QStyle::PM_IndicatorWidth:
        case QStyle::PM_IndicatorHeight:
        case QStyle::PM_ExclusiveIndicatorWidth:
        case QStyle::PM_ExclusiveIndicatorHeight:
        case QStyle::PM_SliderLength:
        case QStyle::PM_SliderControlThickness:
            return 16;
        case QStyle::PM_CheckBoxLabelSpacing:
        case QStyle::PM_RadioButtonLabelSpacing:
        case QStyle::PM_LayoutHorizontalSpacing:
        case QStyle::PM_LayoutVerticalSpacing:
        case QStyle::PM_ToolBarSeparatorExtent:
            return 8;
        case QStyle::PM_LayoutLeftMargin:
        case QStyle::PM_LayoutTopMargin:
        case QStyle::PM_LayoutRightMargin:
        case QStyle::PM_LayoutBottomMargin:
        case QStyle::PM_ScrollBarExtent:
            return 12;
        case QStyle::PM_FocusFrameHMargin:
            return 7;  // one less than from a cell's edge to its text
        case QStyle::PM_MenuVMargin:
        case QStyle::PM_ToolBarItemMargin:
        case QStyle::PM_ToolBarItemSpacing:
            return 4;
        case QStyle::PM_ToolTipLabelFrameWidth:
            return 6;
        case QStyle::PM_SplitterWidth:
            return 7;
        case QStyle::PM_MenuPanelWidth:
            return 1;
        case QStyle::PM_MenuHMargin:
        case QStyle::PM_ButtonShiftHorizontal:
        case QStyle::PM_ButtonShiftVertical:
        case QStyle::PM_ToolBarFrameWidth:
            return 0;
        default:
            return std::nullopt;
    }
}
