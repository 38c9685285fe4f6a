// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/style/InterfacePalette.h"

#include <span>

namespace {

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
    {QPalette::Button, 0xfdfdfe},
    {QPalette::ButtonText, 0x22252a},
    {QPalette::BrightText, 0xc81e1e},
    {QPalette::ToolTipBase, 0xffffff},
    {QPalette::ToolTipText, 0x22252a},
    {QPalette::PlaceholderText, 0x5f6670},
    {QPalette::Link, 0x1f6acc},
    {QPalette::LinkVisited, 0x7a52b3},
    {QPalette::Highlight, 0x2a6fd0},
    {QPalette::HighlightedText, 0xffffff},
    {QPalette::Light, 0xffffff},
    {QPalette::Midlight, 0xe9ebee},
    {QPalette::Mid, 0xd4d7dc},
    {QPalette::Dark, 0x7f858e},
    {QPalette::Shadow, 0x5a5f66},
};

constexpr RoleColor lightInactiveColors[] = {
    {QPalette::Highlight, 0xcbdaf0},
    {QPalette::HighlightedText, 0x22252a},
};

constexpr RoleColor lightDisabledColors[] = {
    {QPalette::WindowText, 0x9298a1},
    {QPalette::Text, 0x9298a1},
    {QPalette::ButtonText, 0x9298a1},
    {QPalette::PlaceholderText, 0xa4a9b0},
    {QPalette::Base, 0xf3f4f6},
    {QPalette::AlternateBase, 0xf3f4f6},
    {QPalette::Button, 0xf3f4f6},
    {QPalette::Highlight, 0xd4d7dc},
    {QPalette::HighlightedText, 0x9298a1},
    {QPalette::Dark, 0xc6cad0},
    {QPalette::Link, 0x9298a1},
};

constexpr RoleColor darkColors[] = {
    {QPalette::Window, 0x2a2c30},
    {QPalette::WindowText, 0xe6e7ea},
    {QPalette::Base, 0x1f2124},
    {QPalette::AlternateBase, 0x232528},
    {QPalette::Text, 0xe6e7ea},
    {QPalette::Button, 0x35373c},
    {QPalette::ButtonText, 0xe6e7ea},
    {QPalette::BrightText, 0xff7b7b},
    {QPalette::ToolTipBase, 0x383a3f},
    {QPalette::ToolTipText, 0xe6e7ea},
    {QPalette::PlaceholderText, 0xa3a7ae},
    {QPalette::Link, 0x6aaaf2},
    {QPalette::LinkVisited, 0xb79be8},
    {QPalette::Highlight, 0x3a74cc},
    {QPalette::HighlightedText, 0xffffff},
    {QPalette::Light, 0x46494f},
    {QPalette::Midlight, 0x3c3f44},
    {QPalette::Mid, 0x3f4247},
    {QPalette::Dark, 0x7f838b},
    {QPalette::Shadow, 0x000000},
};

constexpr RoleColor darkInactiveColors[] = {
    {QPalette::Highlight, 0x37465c},
    {QPalette::HighlightedText, 0xe6e7ea},
};

constexpr RoleColor darkDisabledColors[] = {
    {QPalette::WindowText, 0x74777d},
    {QPalette::Text, 0x74777d},
    {QPalette::ButtonText, 0x74777d},
    {QPalette::PlaceholderText, 0x676a70},
    {QPalette::Base, 0x2a2c30},
    {QPalette::AlternateBase, 0x2a2c30},
    {QPalette::Button, 0x2a2c30},
    {QPalette::Highlight, 0x3f4247},
    {QPalette::HighlightedText, 0x74777d},
    {QPalette::Dark, 0x4b4e54},
    {QPalette::Link, 0x74777d},
};

void setColors(QPalette& palette, QPalette::ColorGroup group, std::span<const RoleColor> colors) {
    for (const auto& [role, color] : colors) {
        palette.setColor(group, role, QColor(color));
    }
}

}  // namespace

QPalette InterfacePalette::light() {
    QPalette palette;
    setColors(palette, QPalette::All, lightColors);
    setColors(palette, QPalette::Inactive, lightInactiveColors);
    setColors(palette, QPalette::Disabled, lightDisabledColors);
    return palette;
}

QPalette InterfacePalette::dark() {
    QPalette palette;
    setColors(palette, QPalette::All, darkColors);
    setColors(palette, QPalette::Inactive, darkInactiveColors);
    setColors(palette, QPalette::Disabled, darkDisabledColors);
    return palette;
}

QColor InterfacePalette::mix(const QColor& from, const QColor& to, double part) {
    const auto between = [part](double a, double b) { return static_cast<float>(a + (b - a) * part); };
    return QColor::fromRgbF(between(from.redF(), to.redF()), between(from.greenF(), to.greenF()),
                            between(from.blueF(), to.blueF()));
}

bool InterfacePalette::isDark(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() < 128;
}

QColor InterfacePalette::tint(const QPalette& palette) {
    return mix(palette.color(QPalette::Base), palette.color(QPalette::Active, QPalette::Highlight),
               isDark(palette) ? 0.4 : 0.18);
}
