// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/ColumnFitter.h"

#include <gtest/gtest.h>

#include <QHeaderView>
#include <QScrollBar>
#include <QStandardItemModel>
#include <QTest>
#include <numeric>

#include "controls/TableView.h"

namespace {

class ColumnFitterTest : public testing::Test {
  protected:
    ColumnFitterTest() {
        m_Model.setItem(0, 1, new QStandardItem(QString(60, 'm')));
        m_Table.setModel(&m_Model);
        m_Fitter =
            new ColumnFitter(&m_Table, {{40, 40, 0}, {80, 200, 1}, {80, m_Unlimited, 3}, {100, 160, 2}});
        m_Table.setFrameShape(QFrame::NoFrame);
        m_Table.resize(640, 300);
        m_Table.show();
        QCoreApplication::processEvents();
    }

    using Widths = std::vector<int>;
    Widths widths() const {
        Widths result(m_Header->count());
        for (int column = 0; column < m_Header->count(); ++column) {
            result[column] = m_Header->sectionSize(column);
        }
        return result;
    }

    int border(int column) const {
        return m_Header->sectionViewportPosition(column) + m_Header->sectionSize(column) - 1;
    }

    void drag(int column, std::initializer_list<int> distances) {
        QWidget* surface = m_Header->viewport();
        const QPoint start(border(column), 10);
        QTest::mousePress(surface, Qt::LeftButton, {}, start);
        for (const int distance : distances) {
            const QPoint point = start + QPoint(distance, 0);
            QMouseEvent move(QEvent::MouseMove, point, surface->mapToGlobal(point), Qt::NoButton,
                             Qt::LeftButton, {});
            QCoreApplication::sendEvent(surface, &move);
            EXPECT_EQ(border(column), point.x()) << "the border stays under the mouse";
            QCoreApplication::processEvents();
            EXPECT_FALSE(m_Table.horizontalScrollBar()->isVisible());
        }
        QTest::mouseRelease(surface, Qt::LeftButton, {},
                            start + QPoint(std::data(distances)[distances.size() - 1], 0));
        QCoreApplication::processEvents();
    }

    void resizeTable(int width) {
        m_Table.resize(width, 300);
        QCoreApplication::processEvents();
    }

    static constexpr int m_Unlimited = ColumnFitter::unlimitedWidth;
    QStandardItemModel m_Model{3, 4};
    TableView m_Table;
    QHeaderView* m_Header = m_Table.horizontalHeader();
    ColumnFitter* m_Fitter = nullptr;
};

TEST_F(ColumnFitterTest, ColumnsShareTheWidthByWeightWithinTheirBounds) {
    EXPECT_EQ(widths(), (Widths{40, 110, 330, 160})) << "the last has its most; the others 1 to 3";
    resizeTable(400);
    EXPECT_EQ(widths(), (Widths{40, 80, 168, 112})) << "the second has its least; the others 3 to 2";
    resizeTable(200);
    EXPECT_EQ(widths(), (Widths{40, 80, 80, 100})) << "no room";
    EXPECT_TRUE(m_Table.horizontalScrollBar()->isVisible());
    for (int width = 300; width < 1500; width += 37) {
        resizeTable(width);
        const Widths all = widths();
        EXPECT_EQ(std::accumulate(all.begin(), all.end(), 0), width);
    }
    EXPECT_FALSE(m_Table.horizontalScrollBar()->isVisible());
}

TEST_F(ColumnFitterTest, ADraggedColumnKeepsItsWidthAndOnlyThoseRightOfItGiveWay) {
    drag(1, {40, 31, 7});
    EXPECT_EQ(widths(), (Widths{40, 117, 323, 160}));
    resizeTable(400);
    EXPECT_EQ(widths()[1], 117);
}

TEST_F(ColumnFitterTest, ColumnsOnTheLeftGiveWayOnReleaseBeforeAScrollBarAppears) {
    drag(3, {50});
    EXPECT_EQ(widths()[3], 210);
    EXPECT_FALSE(m_Table.horizontalScrollBar()->isVisible());
    drag(2, {700});
    EXPECT_EQ(widths()[1], 80);
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_Table.horizontalScrollBar()->isVisible(); }))
        << "the user wants more than there is";
}

TEST_F(ColumnFitterTest, ADoubleClickOnABorderFitsTheColumnToItsContentsForGood) {
    int clicks = 0;
    QObject::connect(m_Header, &QHeaderView::sectionClicked, &m_Table, [&] { ++clicks; });
    m_Header->setSectionsClickable(true);
    const QPoint point(border(1), 10);
    QTest::mouseDClick(m_Header->viewport(), Qt::LeftButton, {}, point);
    const int fitted = m_Header->sectionSize(1);
    EXPECT_GT(fitted, 200);
    EXPECT_EQ(clicks, 0) << "a click sorts";
    resizeTable(1200);
    EXPECT_EQ(m_Header->sectionSize(1), fitted);
}

TEST_F(ColumnFitterTest, RestoresChosenWidthsAndTheOrderButNothingFromGarbage) {
    drag(1, {20});
    m_Header->moveSection(3, 0);
    const QByteArray state = m_Fitter->save();

    QStandardItemModel model(2, 4);
    TableView table;
    table.setModel(&model);
    auto* fitter = new ColumnFitter(&table, {{40, 40, 0}, {80, 200, 1}, {80, m_Unlimited, 3}, {100, 160, 2}});
    for (qsizetype i = 0; i < state.size(); i += 4) {
        EXPECT_FALSE(fitter->restore(state.left(i)));
        QByteArray damaged = state;
        damaged[i] = static_cast<char>(0x81);
        EXPECT_FALSE(fitter->restore(damaged)) << i;
    }
    EXPECT_FALSE(fitter->restore(state + '\0'));
    ASSERT_TRUE(fitter->restore(state));
    EXPECT_EQ(fitter->save(), state);
    EXPECT_EQ(table.horizontalHeader()->visualIndex(3), 0);
    EXPECT_EQ(table.horizontalHeader()->sectionSize(1), 130);
}

}  // namespace
