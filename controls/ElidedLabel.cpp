// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/ElidedLabel.h"

#include <QHelpEvent>
#include <QStylePainter>
#include <QToolTip>
#include <algorithm>

namespace {

constexpr int leastCharacters = 6;

}  // namespace

ElidedLabel::ElidedLabel(QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
}

QSize ElidedLabel::minimumSizeHint() const {
    const QSize whole = QLabel::minimumSizeHint();
    return {std::min(whole.width(), leastCharacters * fontMetrics().averageCharWidth()), whole.height()};
}

QString ElidedLabel::elidedText() const {
    return fontMetrics().elidedText(text(), Qt::ElideRight, contentsRect().width());
}

void ElidedLabel::paintEvent(QPaintEvent*) {
    QStylePainter painter(this);
    painter.drawItemText(contentsRect(), static_cast<int>(alignment()), palette(), isEnabled(), elidedText(),
                         foregroundRole());
}

bool ElidedLabel::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip) {
        return QLabel::event(event);
    }
    const auto* help = static_cast<const QHelpEvent*>(event);
    const QString all = "<p>" + text().toHtmlEscaped() + "</p>";  // a tooltip takes text for markup
    QToolTip::showText(help->globalPos(), elidedText() == text() ? QString() : all, this);
    return true;
}
