// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

#include "controls/TypedSearch.h"

class QMenu;

/**
 * Lets the letters that a user types select an item of a menu by the beginning of its text. For menus of names, which
 * have no mnemonics. Belongs to its menu. Main thread.
 */
class TypedMenuSearch : public QObject {
    Q_OBJECT

  public:
    /** Once for each menu; later calls change nothing. */
    static void install(QMenu& menu);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    explicit TypedMenuSearch(QMenu& menu);
    void select(const QString& keys);

    QMenu& m_Menu;
    TypedSearch m_Search;
};
