// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/ToolWindow.h"

#include <QCloseEvent>

ToolWindow::ToolWindow(QWidget* parent) : QWidget(parent, Qt::Window) {
    setAttribute(Qt::WA_ShowWithoutActivating);
}

/** Changing a flag hides a window, and its frame may be another one then. */
void ToolWindow::setStickied(bool isStickied) {
    if (m_IsStickied == isStickied) {
        return;
    }
    m_IsStickied = isStickied;
    const bool wasVisible = isVisible();
    const QPoint position = pos();
    setWindowFlag(Qt::WindowStaysOnTopHint, isStickied);
    if (wasVisible) {
        move(position);
        show();
    }
}

void ToolWindow::orderFront() {
    if (isMinimized()) {
        setWindowState(windowState() & ~Qt::WindowMinimized);
    }
    show();
    raise();
}

void ToolWindow::closeEvent(QCloseEvent* event) {
    QWidget::closeEvent(event);
    if (event->isAccepted()) {
        emit willClose();
    }
}
