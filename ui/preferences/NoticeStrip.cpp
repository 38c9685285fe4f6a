// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/preferences/NoticeStrip.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QStyle>

#include "platform/style/Brush.h"
#include "platform/style/InterfacePalette.h"

namespace {

const QColor amber(0xe5a50a);
constexpr double groundPart = 0.14;  // of amber in the window's colour
constexpr double outlinePart = 0.5;
constexpr int iconSize = 22;

}  // namespace

NoticeStrip::NoticeStrip(QWidget* parent)
    : QWidget(parent), m_Icon(new QLabel(this)), m_Text(new QLabel(this)) {
    m_Text->setTextFormat(Qt::PlainText);
    m_Text->setWordWrap(true);
    m_Text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(12, 8, 12, 8);
    layout->setSpacing(12);
    layout->addWidget(m_Icon, 0, Qt::AlignVCenter);
    layout->addWidget(m_Text, 1);
    updateIcon();
}

void NoticeStrip::setText(const QString& text) {
    m_Text->setText(text);
    setAccessibleName(text);
}

/** The theme has other icons for dark windows. */
void NoticeStrip::changeEvent(QEvent* event) {
    if (event->type() == QEvent::PaletteChange) {
        updateIcon();
    }
    QWidget::changeEvent(event);
}

void NoticeStrip::updateIcon() {
    const QIcon stock = style()->standardIcon(QStyle::SP_MessageBoxWarning);
    const QIcon icon = QIcon::fromTheme("dialog-warning", stock);
    m_Icon->setPixmap(icon.pixmap(QSize(iconSize, iconSize), devicePixelRatioF()));
}

void NoticeStrip::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QColor window = palette().color(QPalette::Window);
    Brush(painter).panel(rect(), InterfacePalette::mix(window, amber, groundPart),
                         InterfacePalette::mix(window, amber, outlinePart));
}
