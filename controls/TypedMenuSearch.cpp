// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/TypedMenuSearch.h"

#include <QKeyEvent>
#include <QMenu>

void TypedMenuSearch::install(QMenu& menu) {
    if (menu.findChild<TypedMenuSearch*>(QString(), Qt::FindDirectChildrenOnly) == nullptr) {
        new TypedMenuSearch(menu);
    }
}

TypedMenuSearch::TypedMenuSearch(QMenu& menu) : QObject(&menu), m_Menu(menu) {
    menu.installEventFilter(this);
}

/** A space is part of a name that has been begun; otherwise it chooses the item. */
bool TypedMenuSearch::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress) {
        return QObject::eventFilter(watched, event);
    }
    const auto* key = static_cast<const QKeyEvent*>(event);
    const QString text = key->text();
    const bool isCommand = (key->modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier)) != 0;
    if (isCommand || text.isEmpty() || !text.front().isPrint() || (text == " " && !m_Search.isGoingOn())) {
        return QObject::eventFilter(watched, event);
    }
    select(text);
    return true;
}

void TypedMenuSearch::select(const QString& keys) {
    const QList<QAction*> items = m_Menu.actions();
    const auto textOf = [&items](int row) { return items[row]->text().replace("&&", "&"); };
    const auto current = static_cast<int>(items.indexOf(m_Menu.activeAction()));
    const int found = m_Search.find(static_cast<int>(items.size()), textOf, current, keys);
    if (found >= 0) {
        m_Menu.setActiveAction(items[found]);
    }
}
