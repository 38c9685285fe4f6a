// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/applications/PlainText.h"

#include <algorithm>

namespace {

constexpr char16_t deletion = 0x7F;
constexpr char16_t signs = 0x2400;  // of the first 32 characters, in their order
constexpr char16_t signOfDeletion = 0x2421;

/** Embeddings, overrides and isolates: they turn the text after them round, be it an extension or ours. */
bool isDirectional(QChar character) {
    return (character >= QChar(0x202A) && character <= QChar(0x202E)) ||
           (character >= QChar(0x2066) && character <= QChar(0x2069));
}

bool isControl(QChar character) {
    const QChar::Category category = character.category();
    return category == QChar::Other_Control || category == QChar::Separator_Line ||
           category == QChar::Separator_Paragraph || isDirectional(character);
}

QChar signOf(QChar control) {
    if (control < QChar(' ')) {
        return QChar(signs + control.unicode());
    }
    return control == QChar(deletion) ? QChar(signOfDeletion) : QChar(QChar::ReplacementCharacter);
}

}  // namespace

QString PlainText::singleLine(QString text) {
    std::replace_if(text.begin(), text.end(), isControl, QChar(' '));
    return text;
}

QString PlainText::withVisibleControls(QString text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](QChar each) { return isControl(each) ? signOf(each) : each; });
    return text;
}

QString PlainText::menuItem(const QString& text) {
    return singleLine(text).replace('&', "&&");
}

QString PlainText::windowTitle(const QString& text) {
    return singleLine(text).replace("[*]", "[*][*]");
}

QString PlainText::toolTip(const QString& text) {
    return "<p>" + text.toHtmlEscaped() + "</p>";
}
