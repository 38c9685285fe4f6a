// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/applications/PlainText.h"

QString PlainText::singleLine(QString text) {
    for (QChar& character : text) {
        const QChar::Category category = character.category();
        if (category == QChar::Other_Control || category == QChar::Separator_Line ||
            category == QChar::Separator_Paragraph) {
            character = ' ';
        }
    }
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
