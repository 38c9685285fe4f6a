// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/chart/GraphicView.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QColorDialog>
#include <QContextMenuEvent>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileDialog>
#include <QMenu>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTest>
#include <tuple>

#include "controls/chart/GraphicExport.h"
#include "controls/chart/GraphicViewDelegate.h"
#include "controls/chart/GraphicViewLegend.h"
#include "controls/chart/GraphicViewLegendItem.h"
#include "controls/chart/GraphicViewLineColorLegendItem.h"

namespace {

class Texts : public GraphicViewDelegate {
  public:
    QString axeValueToString(float value, int axe) override {
        m_Asked += axe == 1 && value == 0 ? 1 : 0;
        return QString::number(value);
    }
    QString readOutValueToString(float value, int axe) override {
        m_ReadOut += axe == 0 ? QString("| %1:").arg(value) : QString(" %1").arg(value);
        return axeValueToString(value, axe);
    }
    QString valueUnit() override { return m_Unit; }
    QDateTime dateAtX(float x) override {
        return m_Origin.isValid() ? m_Origin.addMSecs(qint64(x * 1000)) : m_Origin;
    }

    int m_Asked = 0;  ///< for the label at the origin, which every redraw needs
    QDateTime m_Origin;
    QString m_Unit;
    QString m_ReadOut;
};

class GraphicViewTest : public testing::Test {
  protected:
    GraphicViewTest() {
        m_View.resize(420, 260);
        m_View.setDelegate(&m_Texts);
        m_View.appendLine();
        m_View.appendLine();
        m_View.setViewport({0, 0, 120, 4096});
        m_View.setMeshCellSize({10, 512});
        m_View.show();
        settle();
    }

    static void settle() { QCoreApplication::processEvents(); }

    /** How often the chart was drawn since the last call. */
    int redraws() {
        settle();
        const int asked = m_Texts.m_Asked;
        m_Texts.m_Asked = 0;
        return asked / askedPerRedraw;
    }

    GraphicViewLegend* colorLegend() {
        auto* legend = GraphicViewLegend::legendWithGraphic(&m_View, QRectF(0, 0, 80, 120));
        legend->setAutoresizingMask(GraphicViewLegend::MinXMargin | GraphicViewLegend::MinYMargin);
        legend->setMovable(true);
        for (unsigned line = 0; line < 2; ++line) {
            auto* item = GraphicViewLineColorLegendItem::itemWithLegend(legend);
            item->setBindedGraphicLine(line);
            item->setText(line == 0 ? "Received" : "Sent, \"all\"");
            item->setAllowSelectColor(true);
        }
        legend->fitToItems();
        QRectF frame = legend->frame();
        frame.moveTo(m_View.width() - frame.width() - 20, m_View.height() - frame.height() - 20);
        legend->setFrame(frame, false);
        settle();
        return legend;
    }

    static constexpr int askedPerRedraw = 2;  // for the room of the labels, and for the labels

    Texts m_Texts;
    GraphicView m_View;
};

TEST_F(GraphicViewTest, ChangesAreDrawnTogetherAndNothingIsDrawnWhileUpdatesAreDisabled) {
    EXPECT_EQ(redraws(), 1);
    m_View.setUpdatesDisabled(true);
    for (int i = 0; i < 10; ++i) {
        m_View.addPointToLine(0, {double(i), 100});
    }
    m_View.resize(500, 300);
    QTest::mouseMove(&m_View, {200, 100});
    QPalette dark;
    dark.setColor(QPalette::Base, Qt::black);
    m_View.setPalette(dark);
    m_View.display();
    m_View.repaint();
    EXPECT_EQ(redraws(), 0);
    m_View.setUpdatesDisabled(false);
    m_View.display();
    EXPECT_EQ(redraws(), 1);
    QTest::mouseMove(&m_View, {210, 100});
    m_View.hide();
    m_View.addPointToLine(0, {11, 100});
    EXPECT_EQ(redraws(), 0) << "for the read-out, or while nobody sees it";
}

TEST_F(GraphicViewTest, VisibleHeightFitsThePointsWithRoomAboveAndBelowWhereItIsNegative) {
    m_View.recalcVisibleHeight();
    EXPECT_EQ(m_View.viewport(), QRectF(0, 0, 120, 640)) << "a row and a quarter for no points";
    m_View.addPointToLine(0, {5, 1000});
    m_View.addPointToLine(1, {1000, 2000});
    m_View.recalcVisibleHeight();
    EXPECT_EQ(m_View.viewport(), QRectF(0, 0, 120, 2128));
    m_View.addPointToLine(1, {6, -3000});
    m_View.addPointToLine(1, {7, std::numeric_limits<float>::infinity()});
    m_View.recalcVisibleHeight();
    EXPECT_EQ(m_View.viewport(), QRectF(0, -3128, 120, 5256));
}

TEST_F(GraphicViewTest, OnlyWhatIsLeftOfTheViewportIsRemovedFromTheLineThatWasNamed) {
    for (const double x : {30.0, 10.0, 20.0, 140.0}) {
        m_View.addPointToLine(0, {x, x});
        m_View.addPointToLine(1, {x, x});
    }
    m_View.setViewport({20, 0, 110, 100});
    m_View.removeInvisiblePoints(0, 0);
    EXPECT_EQ(GraphicExport(m_View).points(), "X,Line 1,Line 2\r\n20,20,20\r\n30,30,30\r\n");
    EXPECT_EQ(m_View.scene().lines[0].data.points().size(), 3U);
    EXPECT_EQ(m_View.scene().lines[1].data.points().size(), 4U);
    m_View.removeInvisiblePoints(7, 0);
}

TEST_F(GraphicViewTest, ExportsDatesWithTheirZoneQuotedNamesWithTheUnitAndEmptyFields) {
    colorLegend();
    m_View.setXAxeDescription("Date/Time");
    m_Texts.m_Unit = "bytes/s";
    m_Texts.m_Origin = QDateTime::fromString("2026-11-21T17:00:30+02:00", Qt::ISODate);
    m_View.addPointToLine(0, {0, 16'777'216});
    m_View.addPointToLine(0, {36, 1});
    m_View.addPointToLine(1, {36, -2});
    m_View.addPointToLine(1, {500, 1});
    EXPECT_EQ(GraphicExport(m_View).points().toStdString(),
              "Date/Time,Received bytes/s,\"Sent, \"\"all\"\" bytes/s\"\r\n"
              "2026-11-21T17:00:30+02:00,16777216,\r\n"
              "2026-11-21T17:01:06+02:00,1,-2\r\n");
}

TEST_F(GraphicViewTest, PicturesOfEveryKindAreWrittenAndAFailureLeavesTheOldFile) {
    const QTemporaryDir folder;
    const auto start = [&](const QString& name) {
        EXPECT_EQ(GraphicExport(m_View).savePicture(folder.filePath(name)), QString()) << name.toStdString();
        QFile file(folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    };
    colorLegend();
    EXPECT_TRUE(start("a.png").startsWith("\x89PNG"));
    EXPECT_TRUE(start("a.pdf").startsWith("%PDF"));
    EXPECT_TRUE(start("a.svg").contains("Received")) << "text stays text, and legends are in it";
    EXPECT_EQ(GraphicExport(m_View).picture().size(), m_View.size() * 2);
    EXPECT_FALSE(GraphicExport(m_View).savePicture(folder.filePath("missing/a.png")).isEmpty());
    EXPECT_FALSE(GraphicExport(m_View).savePoints(folder.path()).isEmpty());
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files).size(), 3) << "nothing half written is left";
}

TEST_F(GraphicViewTest, TheContextMenuCopiesSavesAndTellsWhenAFileCannotBeWritten) {
    const auto choose = [this](const QString& text) {
        QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, {});
        QCoreApplication::sendEvent(&m_View, &event);
        auto* menu = m_View.findChild<QMenu*>();
        for (QAction* action : menu->actions()) {
            if (action->text() == text) {
                action->trigger();
            }
        }
        delete menu;
        return m_View.findChild<QFileDialog*>();
    };
    EXPECT_EQ(choose("Copy Picture"), nullptr);
    EXPECT_EQ(QGuiApplication::clipboard()->image().size(), m_View.size() * 2);
    const QTemporaryDir folder;
    QFileDialog* dialog = choose("Export Points...");
    ASSERT_NE(dialog, nullptr);
    dialog->setDirectory(folder.path());
    dialog->selectFile(folder.filePath("points"));
    QMetaObject::invokeMethod(dialog, "accept");
    EXPECT_TRUE(QFile::exists(folder.filePath("points.csv")));
    delete dialog;
    dialog = choose("Save Picture As...");
    ASSERT_NE(dialog, nullptr);
    emit dialog->filterSelected(dialog->nameFilters().at(1));
    EXPECT_EQ(dialog->defaultSuffix(), "svg");
    emit dialog->fileSelected(folder.filePath("missing/a.svg"));
    auto* box = m_View.findChild<QMessageBox*>();
    ASSERT_NE(box, nullptr);
    EXPECT_TRUE(box->text().contains("a.svg"));
    delete box;
}

TEST_F(GraphicViewTest, LegendsFollowTheirCornerStayInsideAndHideWhereTheyWouldCoverAll) {
    GraphicViewLegend* legend = colorLegend();
    const QSizeF size = legend->frame().size();
    m_View.resize(900, 480);
    EXPECT_EQ(legend->frame(), QRectF(QPointF(880 - size.width(), 460 - size.height()), size));
    EXPECT_NEAR(legend->geometry().center().x(), legend->frame().center().x(), 1);
    EXPECT_LT(legend->geometry().bottom(), 240) << "y grows upwards";
    m_View.resize(200, 130);
    EXPECT_TRUE(legend->isHidden());
    m_View.resize(420, 260);
    EXPECT_FALSE(legend->isHidden());
    EXPECT_EQ(legend->frame(), QRectF(QPointF(400 - size.width(), 240 - size.height()), size)) << "no drift";
}

TEST_F(GraphicViewTest, LegendsAreDraggedWithinTheViewOnly) {
    GraphicViewLegend* legend = colorLegend();
    const QPoint grip(legend->width() - 12, legend->height() - 12);
    QTest::mousePress(legend, Qt::LeftButton, {}, grip);
    QTest::mouseMove(legend, grip + QPoint(-5000, 5000));
    QTest::mouseRelease(legend, Qt::LeftButton);
    EXPECT_EQ(legend->frame().topLeft(), QPointF(0, 0));
    legend->setFrame(QRectF({-500, 9000}, legend->frame().size()), false);
    EXPECT_TRUE(m_View.rect().adjusted(-6, -6, 6, 7).contains(legend->geometry()))
        << "its shadow is 5 pixels";
}

TEST_F(GraphicViewTest, LegendsSlideOffAPeakUnlessTheUserHasPutThemThere) {
    GraphicViewLegend* legend = colorLegend();
    const QRect corner = legend->geometry();
    for (int x = 0; x <= 120; ++x) {
        m_View.addPointToLine(0, {double(x), x > 95 && x < 115 ? 9000.0 : 10.0});
    }
    m_View.resize(m_View.size() + QSize(1, 1));
    m_View.resize(m_View.size() - QSize(1, 1));
    settle();
    EXPECT_EQ(legend->geometry(), corner) << "in a chart that moves it stays";
    m_View.recalcVisibleHeight();
    settle();
    const QRect free = legend->geometry();
    EXPECT_EQ(free.top(), corner.top());
    EXPECT_LT(free.right(), 60 + 95 * (420 - 60) / 120);
    EXPECT_GT(free.right(), corner.left() - 80) << "not farther than it must";
    QTest::mousePress(legend, Qt::LeftButton, {}, {8, 8});
    QTest::mouseMove(legend, QPoint(8, 8) + corner.topLeft() - free.topLeft());
    QTest::mouseRelease(legend, Qt::LeftButton);
    m_View.recalcVisibleHeight();
    settle();
    EXPECT_EQ(legend->geometry(), corner);
}

TEST_F(GraphicViewTest, SwatchesRecolorTheirLineByKeyboardAndGoBackWhenCancelled) {
    colorLegend();
    auto* first = m_View.findChild<GraphicViewLineColorLegendItem*>();
    auto* item = first->findChild<QAbstractButton*>();
    m_View.setLineColor(0, Qt::blue);
    EXPECT_EQ(first->color(), QColor(Qt::blue));
    item->setFocus(Qt::TabFocusReason);
    QTest::keyClick(item, Qt::Key_Space);
    auto* dialog = first->findChild<QColorDialog*>();
    ASSERT_NE(dialog, nullptr);
    dialog->setCurrentColor(Qt::magenta);
    EXPECT_EQ(m_View.lineColor(0), QColor(Qt::magenta));
    EXPECT_EQ(first->color(), QColor(Qt::magenta));
    dialog->reject();
    EXPECT_EQ(m_View.lineColor(0), QColor(Qt::blue));
}

TEST_F(GraphicViewTest, ReadsOutTheNearestPointUnderThePointerAndTheNextOnesByKeyboard) {
    for (const double x : {10.0, 60.0, 61.0, 200.0}) {
        m_View.addPointToLine(0, {x, x + 1});
    }
    m_View.addPointToLine(1, {60, 5});
    settle();
    const auto read = [this] {
        m_Texts.m_ReadOut.clear();
        settle();
        return m_Texts.m_ReadOut.toStdString();
    };
    EXPECT_EQ(read(), "");
    QTest::mouseMove(&m_View, {90, 60});
    EXPECT_EQ(read(), " 11| 10:") << "the only line that has a point there";
    QTest::keyClick(&m_View, Qt::Key_Right);
    EXPECT_EQ(read(), " 61 5| 60:");
    QTest::keyClick(&m_View, Qt::Key_Right);
    QTest::keyClick(&m_View, Qt::Key_Right);
    EXPECT_EQ(read(), " 62| 61:") << "what lies outside is not read";
    m_View.clearLine(0);
    EXPECT_EQ(read(), " 5| 60:") << "it follows the points";
    QTest::keyClick(&m_View, Qt::Key_Escape);
    EXPECT_EQ(read(), "");
}

TEST_F(GraphicViewTest, SelectionsAreSeenHoweverShortAndDoNoHarmOutside) {
    const auto picture = [this] {
        settle();
        return m_View.grab().toImage();
    };
    const QImage without = picture();
    const float beyond = 1e30F;
    for (const auto& [from, to, isSeen] : {std::tuple(60.0F, 60.0F, true),
                                           {-beyond, -1e20F, false},
                                           {beyond, beyond, false},
                                           {80.0F, 20.0F, true}}) {
        m_View.setSelectionForAxe(0, from, to);
        EXPECT_EQ(picture() != without, isSeen) << from;
    }
    const QImage turned = picture();
    m_View.setSelectionForAxe(0, 20.0F, 80.0F);
    EXPECT_EQ(picture(), turned);
    m_View.setSelectionForAxe(0, 60.0F);
    EXPECT_NE(picture(), without);
    m_View.clearSelection();
    EXPECT_EQ(picture(), without);
}

TEST_F(GraphicViewTest, OddViewportsAndStepsAreSurvived) {
    m_View.addPointToLine(0, {1, 1});
    for (const QRectF& viewport :
         {QRectF(0, 0, 0, 0), QRectF(0, 0, 8.64e7, 1), QRectF(1e9, -1e12, 1e-3, 2e12)}) {
        for (const QSizeF& cell : {QSizeF(1, 1), QSizeF(0, 0), QSizeF(-1, qQNaN()), QSizeF(1e-12, 1e12)}) {
            m_View.setViewport(viewport);
            m_View.setMeshCellSize(cell);
            QElapsedTimer timer;
            timer.start();
            m_View.display();
            EXPECT_LT(timer.elapsed(), 2000);
        }
    }
}

TEST_F(GraphicViewTest, TellsWhatItShowsToThoseWhoCannotSee) {
    colorLegend();
    m_View.setAccessibleName("Traffic");
    m_View.setXAxeDescription("Time");
    m_View.addPointToLine(0, {1, 7});
    m_View.addPointToLine(0, {2, 5});
    QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(&m_View);
    EXPECT_EQ(interface->role(), QAccessible::Chart);
    EXPECT_EQ(interface->text(QAccessible::Name), "Traffic");
    EXPECT_EQ(interface->text(QAccessible::Description).toStdString(),
              "Time from 0 to 120; Received: highest 7, at 1, latest 5; Sent, \"all\": no points");
}

}  // namespace
