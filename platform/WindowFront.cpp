// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/WindowFront.h"

#include <QWidget>

void WindowFront::orderFrontRegardless(QWidget& window) {
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    window.activateWindow();
}
