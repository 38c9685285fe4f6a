// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/InterfaceStyle.h"

#include <QApplication>
#include <QFontDatabase>
#include <QIcon>
#include <QPainter>
#include <QPalette>
#include <QStandardPaths>
#include <QStyleOption>
#include <QToolTip>

#include "platform/ColorScheme.h"

namespace {

const QString interfaceFamily = QStringLiteral("Inter");
constexpr int interfacePointSize = 10;
constexpr int headerMargin = 8;      // pixels left and right of a header's text, as in the cells below
constexpr qreal headerArrowGap = 6;  // pixels between a header's text and its arrow
constexpr qreal headerArrowWidth = 8;
constexpr qreal headerArrowHeight = 4.5;

struct RoleColor {
    QPalette::ColorRole role;
    QRgb color;
};

constexpr RoleColor lightColors[] = {
    {QPalette::Window, 0xf3f4f6},
    {QPalette::WindowText, 0x22252a},
    {QPalette::Base, 0xffffff},
    {QPalette::AlternateBase, 0xf8f9fb},
    {QPalette::Text, 0x22252a},
    {QPalette::Button, 0xfbfbfc},
    {QPalette::ButtonText, 0x22252a},
    {QPalette::BrightText, 0xd02020},
    {QPalette::ToolTipBase, 0xffffff},
    {QPalette::ToolTipText, 0x22252a},
    {QPalette::PlaceholderText, 0x6c737d},
    {QPalette::Link, 0x1f6fd6},
    {QPalette::LinkVisited, 0x7a52b3},
    {QPalette::Highlight, 0x2a6fd0},
    {QPalette::HighlightedText, 0xffffff},
    {QPalette::Light, 0xffffff},
    {QPalette::Midlight, 0xe9ebee},
    {QPalette::Mid, 0xd4d7dc},
    {QPalette::Dark, 0x9aa0a8},
    {QPalette::Shadow, 0x5a5f66},
};

constexpr RoleColor darkColors[] = {
    {QPalette::Window, 0x2a2c30},
    {QPalette::WindowText, 0xe6e7ea},
    {QPalette::Base, 0x1f2124},
    {QPalette::AlternateBase, 0x232528},
    {QPalette::Text, 0xe6e7ea},
    {QPalette::Button, 0x35373c},
    {QPalette::ButtonText, 0xe6e7ea},
    {QPalette::BrightText, 0xff6b6b},
    {QPalette::ToolTipBase, 0x35373c},
    {QPalette::ToolTipText, 0xe6e7ea},
    {QPalette::PlaceholderText, 0x9a9da4},
    {QPalette::Link, 0x6aaaf2},
    {QPalette::LinkVisited, 0xb79be8},
    {QPalette::Highlight, 0x2f62ad},
    {QPalette::HighlightedText, 0xffffff},
    {QPalette::Light, 0x46494f},
    {QPalette::Midlight, 0x3c3f44},
    {QPalette::Mid, 0x3a3d42},
    {QPalette::Dark, 0x17181a},
    {QPalette::Shadow, 0x000000},
};

constexpr QRgb lightDisabledText = 0xa4a9b0;
constexpr QRgb darkDisabledText = 0x74777d;

template <std::size_t size>
QPalette paletteOf(const RoleColor (&colors)[size], QRgb disabledText) {
    QPalette palette;
    for (const auto& [role, color] : colors) {
        palette.setColor(role, QColor(color));
    }
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, QColor(disabledText));
    }
    return palette;
}

void applyColors(bool isDark) {
    const QPalette palette =
        isDark ? paletteOf(darkColors, darkDisabledText) : paletteOf(lightColors, lightDisabledText);
    QApplication::setPalette(palette);
    QToolTip::setPalette(palette);
}

void applyFont() {
    if (QFontDatabase::hasFamily(interfaceFamily)) {
        QApplication::setFont(QFont(interfaceFamily, interfacePointSize));
    }
}

void applyIconTheme(bool isDark) {
    static const bool hasOwnTheme = !QIcon::themeName().isEmpty() && QIcon::themeName() != "hicolor";
    const QString fallback = isDark ? "breeze-dark" : "breeze";
    QIcon::setFallbackThemeName(fallback);
    if (!hasOwnTheme) {
        QIcon::setThemeName(fallback);
    }
}

/** A platform without a desktop, such as "offscreen", knows no folder of icons. */
void applyIconFolders() {
    QStringList folders = QIcon::themeSearchPaths();
    const QStringList installed = QStandardPaths::locateAll(QStandardPaths::GenericDataLocation, "icons",
                                                            QStandardPaths::LocateDirectory);
    for (const QString& folder : installed) {
        if (!folders.contains(folder)) {
            folders.append(folder);
        }
    }
    QIcon::setThemeSearchPaths(folders);
    QIcon::setFallbackSearchPaths(QStandardPaths::locateAll(QStandardPaths::GenericDataLocation, "pixmaps",
                                                            QStandardPaths::LocateDirectory));
}

/** Flat, with a hairline below and a short one where it ends, which tells where to pull. */
void drawHeaderSection(const QStyleOption& option, QPainter& painter) {
    const QRect& rect = option.rect;
    const bool isHeld = (option.state & QStyle::State_Sunken) != 0;
    painter.fillRect(rect, isHeld ? option.palette.midlight() : option.palette.base());
    painter.fillRect(QRect(rect.left(), rect.bottom(), rect.width(), 1), option.palette.mid());
    painter.fillRect(QRect(rect.right(), rect.top() + 7, 1, rect.height() - 14), option.palette.mid());
}

void drawHeaderEmptyArea(const QStyleOption& option, QPainter& painter) {
    const QRect& rect = option.rect;
    painter.fillRect(rect, option.palette.base());
    painter.fillRect(QRect(rect.left(), rect.bottom(), rect.width(), 1), option.palette.mid());
}

/** Points up where values ascend. `SortDown` is what Qt calls that order. */
void drawHeaderArrow(QPainter& painter, const QPointF& center, bool isAscending) {
    const qreal rise = isAscending ? -headerArrowHeight / 2 : headerArrowHeight / 2;
    const QPointF points[] = {center + QPointF(-headerArrowWidth / 2, -rise), center + QPointF(0, rise),
                              center + QPointF(headerArrowWidth / 2, -rise)};
    painter.setPen(Qt::NoPen);
    painter.drawConvexPolygon(points, 3);
}

/** The arrow stands on the text's free side, so that a header over numbers stays aligned with them. */
void drawHeaderLabel(const QStyleOptionHeader& header, QPainter& painter) {
    const QRect room = header.rect.adjusted(headerMargin, 0, -headerMargin, 0);
    const QString text = header.fontMetrics.elidedText(header.text, Qt::ElideRight, room.width());
    const QColor color = header.palette.color(QPalette::PlaceholderText);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(color);
    painter.setBrush(color);
    painter.drawText(room, static_cast<int>(header.textAlignment), text);
    if (header.sortIndicator != QStyleOptionHeader::None) {
        const qreal away = header.fontMetrics.horizontalAdvance(text) + headerArrowGap + headerArrowWidth / 2;
        const bool isRight = header.textAlignment.testFlag(Qt::AlignRight);
        const QPointF center(isRight ? room.right() + 1 - away : room.left() + away,
                             QRectF(room).center().y());
        drawHeaderArrow(painter, center, header.sortIndicator == QStyleOptionHeader::SortDown);
    }
    painter.restore();
}

}  // namespace

void InterfaceStyle::install() {
    auto* scheme = new ColorScheme(qApp);
    QApplication::setStyle(new InterfaceStyle);
    applyFont();
    applyIconFolders();
    const auto follow = [scheme] {
        applyColors(scheme->isDark());
        applyIconTheme(scheme->isDark());
    };
    QObject::connect(scheme, &ColorScheme::changed, qApp, follow);
    follow();
}

InterfaceStyle::InterfaceStyle() : QProxyStyle("fusion") {}

void InterfaceStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                                 const QWidget* widget) const {
    const auto* header = qstyleoption_cast<const QStyleOptionHeader*>(option);
    if (element == CE_Header && header != nullptr) {
        drawHeaderSection(*header, *painter);
        drawHeaderLabel(*header, *painter);
    } else if (element == CE_HeaderEmptyArea) {
        drawHeaderEmptyArea(*option, *painter);
    } else {
        QProxyStyle::drawControl(element, option, painter, widget);
    }
}

int InterfaceStyle::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const {
    return metric == PM_SmallIconSize ? 16 : QProxyStyle::pixelMetric(metric, option, widget);
}
