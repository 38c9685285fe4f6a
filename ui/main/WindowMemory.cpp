// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/main/WindowMemory.h"

#include <QMainWindow>
#include <QScreen>
#include <QSettings>

#include "controls/ColumnFitter.h"
#include "controls/Drawer.h"

namespace {

const QString geometryKey = QStringLiteral("geometry");
const QString columnsKey = QStringLiteral("columns");
const QString drawerKey = QStringLiteral("drawer");
const QString folder = QStringLiteral("nevtora-meter");
const QString file = QStringLiteral("main-window");
constexpr QSize frameRoom(16, 48);  // about what a window manager's frame and title take

void fitToScreen(QMainWindow& window) {
    const QSize room = window.screen()->availableSize() - frameRoom;
    window.resize(window.size().boundedTo(room));
}

}  // namespace

WindowMemory::WindowMemory(QMainWindow& window, ColumnFitter& columns, Drawer& drawer)
    : m_Window(window), m_Columns(columns), m_Drawer(drawer) {}

void WindowMemory::restore() {
    const QSettings kept(folder, file);
    fitToScreen(m_Window);
    m_Window.restoreGeometry(kept.value(geometryKey).toByteArray());
    m_Columns.restore(kept.value(columnsKey).toByteArray());
    m_Drawer.setOpenAtOnce(kept.value(drawerKey, false).toBool());
}

void WindowMemory::save() const {
    QSettings kept(folder, file);
    kept.setValue(geometryKey, m_Window.saveGeometry());
    kept.setValue(columnsKey, m_Columns.save());
    kept.setValue(drawerKey, m_Drawer.isOpen());
}
