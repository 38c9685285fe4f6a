// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/TableView.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QHeaderView>
#include <QMenu>
#include <QScrollBar>
#include <QStandardItemModel>
#include <QTest>

namespace {

/** 10,000 rows: a mark without header or text, a number, and a name for some of the rows. */
class TableViewTest : public testing::Test {
  protected:
    TableViewTest() {
        m_Model.setHorizontalHeaderLabels({"", "Number", "Name"});
        for (int row = 0; row < m_Model.rowCount(); ++row) {
            m_Model.setItem(row, 1, new QStandardItem(QString::number(row)));
        }
        setName(3, "Web Browser");
        setName(5, "Mail");
        setName(7, "web server");
        setName(9990, "Music");
        m_Table.setModel(&m_Model);
        m_Table.setSearchColumn(2);
        m_Table.resize(400, 300);
        m_Table.show();
        m_Table.activateWindow();
        m_Table.setFocus();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&m_Table));
    }

    void setName(int row, const QString& name) { m_Model.setItem(row, 2, new QStandardItem(name)); }

    int selectedRow() const {
        const QModelIndexList rows = m_Table.selectionModel()->selectedRows();
        return rows.size() == 1 ? rows.first().row() : -1;
    }

    int rowAfter(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(&m_Table, key, modifiers);
        return selectedRow();
    }

    int rowAfterTyping(const QString& text) {
        QTest::keyClicks(&m_Table, text);
        return selectedRow();
    }

    /** As the desktop delivers it, with what it asks a menu for; `point` is in the viewport. */
    void rightClick(const QPoint& point) {
        QTest::mouseClick(m_Table.windowHandle(), Qt::RightButton, {},
                          m_Table.viewport()->mapTo(&m_Table, point));
        QTest::qWait(1);
    }

    QStandardItemModel m_Model{10000, 3};
    TableView m_Table;
};

TEST_F(TableViewTest, KeysGoFromRowToRowAndBeginAtTheFirst) {
    EXPECT_EQ(rowAfter(Qt::Key_Down), 0);
    EXPECT_EQ(rowAfter(Qt::Key_Down), 1);
    EXPECT_EQ(rowAfter(Qt::Key_End), 9999);
    EXPECT_EQ(rowAfter(Qt::Key_Home), 0);
    EXPECT_EQ(rowAfter(Qt::Key_End, Qt::ControlModifier), 9999);
    EXPECT_EQ(rowAfter(Qt::Key_Home, Qt::ControlModifier), 0);
}

TEST_F(TableViewTest, TypingSelectsByTheBeginningOfTheNameAndWrapsAround) {
    EXPECT_EQ(rowAfterTyping("web s"), 7);
    QTest::qWait(QApplication::keyboardInputInterval() + 20);
    EXPECT_EQ(rowAfterTyping("m"), 9990);
    EXPECT_EQ(rowAfterTyping("m"), 5) << "the same key again goes on";
    QTest::qWait(QApplication::keyboardInputInterval() + 20);
    EXPECT_EQ(rowAfterTyping("x"), 5);
}

TEST_F(TableViewTest, ASpaceIsPartOfANameOnlyWhileItIsTyped) {
    int shortcuts = 0;
    auto* action = new QAction(&m_Table);
    action->setShortcut(Qt::Key_Space);
    m_Table.addAction(action);
    QObject::connect(action, &QAction::triggered, &m_Table, [&] { ++shortcuts; });
    EXPECT_EQ(rowAfterTyping("web b"), 3);
    EXPECT_EQ(shortcuts, 0);
    QTest::qWait(QApplication::keyboardInputInterval() + 20);
    QTest::keyClick(&m_Table, Qt::Key_Space);
    EXPECT_EQ(shortcuts, 1);
}

TEST_F(TableViewTest, CopiesTheSelectedRowInTheOrderThatTheUserSees) {
    QGuiApplication::clipboard()->setText("before");
    QTest::keyClick(&m_Table, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "before");
    EXPECT_FALSE(m_Table.copyAction()->isEnabled());
    m_Table.selectRow(3);
    QTest::keyClick(&m_Table, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "3\tWeb Browser");
    m_Table.horizontalHeader()->moveSection(2, 0);
    m_Table.copyAction()->trigger();
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "Web Browser\t3");
    m_Table.selectRow(4);
    EXPECT_EQ(m_Table.selectedRowText(), "\t4") << "a cell without text keeps its place";
    m_Model.setRowCount(2);
    EXPECT_FALSE(m_Table.copyAction()->isEnabled()) << "the row is gone";
    m_Table.selectRow(1);
    m_Model.clear();
    EXPECT_FALSE(m_Table.copyAction()->isEnabled());
}

TEST_F(TableViewTest, ARightClickSelectsItsRowOrNoneBeforeTheMenuOpensAndWithoutOneNothing) {
    m_Model.setRowCount(4);
    m_Table.selectRow(1);
    const QPoint onRow2 = m_Table.visualRect(m_Model.index(2, 1)).center();
    rightClick(onRow2);
    EXPECT_EQ(selectedRow(), 1) << "there is no menu";
    QMenu menu;
    menu.addAction("Command");
    QList<int> opened;
    QObject::connect(&menu, &QMenu::aboutToShow, [&] { opened << selectedRow(); });
    m_Table.setMenu(&menu);
    const QPoint rightOfTheColumns(m_Table.horizontalHeader()->length() + 5, onRow2.y());
    const QPoint belowTheRows(50, 250);
    for (const QPoint& point : {onRow2, rightOfTheColumns, belowTheRows, QPoint(50, -10)}) {
        rightClick(point);
        menu.close();
    }
    EXPECT_EQ(opened, QList<int>({2, 2, -1})) << "and the header has no menu";
}

TEST_F(TableViewTest, DisabledLooksSo) {
    const auto pictures = [this] {
        return std::pair(m_Table.horizontalHeader()->grab().toImage(), m_Table.viewport()->grab().toImage());
    };
    const auto enabled = pictures();
    m_Table.setEnabled(false);
    EXPECT_NE(pictures().first, enabled.first);
    EXPECT_NE(pictures().second, enabled.second);
    m_Table.setEnabled(true);
    EXPECT_EQ(pictures(), enabled);
}

TEST_F(TableViewTest, ARefreshOfAllRowsNeitherScrollsNorDeselects) {
    m_Table.selectRow(5000);
    const int place = m_Table.verticalScrollBar()->value();
    ASSERT_GT(place, 0);
    emit m_Model.dataChanged(m_Model.index(0, 0), m_Model.index(9999, 2));
    m_Model.setRowCount(10100);
    m_Model.setRowCount(9000);
    EXPECT_EQ(m_Table.verticalScrollBar()->value(), place);
    EXPECT_EQ(selectedRow(), 5000);
}

}  // namespace
