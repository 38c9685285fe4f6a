// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/ProgressDlg.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QMainWindow>
#include <QProgressBar>
#include <QTest>
#include <QTimer>
#include <functional>

namespace {

/** The dialog, set up as for work that nobody can cancel. Each test acts in the events of its modal loop. */
class ProgressDlgTest : public testing::Test {
  protected:
    ProgressDlgTest() {
        m_Dialog.setTitle("Title");
        m_Dialog.setText("<b>Text</b>");
        m_Dialog.setCancelAllowed(false);
        m_Dialog.setIndeterminate(true);
    }

    static QDialog* panel() { return qobject_cast<QDialog*>(QApplication::activeModalWidget()); }

    /** `steps` happen one after the other, each in an event of its own. */
    static void later(std::vector<std::function<void()>> steps) {
        for (const auto& step : steps) {
            QTimer::singleShot(0, qApp, step);
        }
    }

    ProgressDlg m_Dialog;
};

TEST_F(ProgressDlgTest, ShowsWhatItWasToldUntilItsEndHoweverOftenItIsRun) {
    m_Dialog.end();
    later({[this] {
               ASSERT_NE(panel(), nullptr);
               EXPECT_EQ(panel()->windowTitle(), "Title");
               EXPECT_EQ(panel()->findChild<QLabel*>()->text(), "<b>Text</b>");
               EXPECT_EQ(panel()->findChild<QLabel*>()->textFormat(), Qt::PlainText);
               EXPECT_EQ(panel()->findChild<QProgressBar*>()->maximum(), 0);
               EXPECT_EQ(panel()->windowModality(), Qt::ApplicationModal);
               m_Dialog.setText("More");
               m_Dialog.setIndeterminate(false);
               m_Dialog.runModal();
               EXPECT_EQ(panel()->findChild<QLabel*>()->text(), "More");
               EXPECT_GT(panel()->findChild<QProgressBar*>()->maximum(), 0);
           },
           [this] { m_Dialog.end(); }});
    m_Dialog.runModal();
    EXPECT_EQ(QApplication::topLevelWidgets().size(), 0);
}

TEST_F(ProgressDlgTest, AStartRightAfterAnEndShowsItAgain) {
    bool isShownAgain = false;
    const auto restart = [&] {
        m_Dialog.end();
        later({[&] {
            isShownAgain = panel() != nullptr && panel()->isVisible();
            m_Dialog.end();
        }});
        m_Dialog.runModal();
    };
    later({restart});
    m_Dialog.runModal();
    EXPECT_TRUE(isShownAgain);
    EXPECT_EQ(QApplication::topLevelWidgets().size(), 0);
}

TEST_F(ProgressDlgTest, OnlyWhenCancelIsAllowedDoEscapeAndTheCloseButtonEndIt) {
    const auto tryToClose = [] {
        QTest::keyClick(panel(), Qt::Key_Escape);
        if (panel() != nullptr) {
            panel()->close();
        }
    };
    later({[&] {
               tryToClose();
               ASSERT_NE(panel(), nullptr);
               EXPECT_TRUE(panel()->isVisible());
               EXPECT_FALSE(panel()->windowFlags() & Qt::WindowCloseButtonHint);
               m_Dialog.setCancelAllowed(true);
           },
           tryToClose});
    m_Dialog.runModal();
}

TEST_F(ProgressDlgTest, KeepsNobodyFromQuitting) {
    later({[this] { m_Dialog.runModal(); }, [] { QApplication::quit(); }});
    QTimer::singleShot(5000, qApp, [] { QCoreApplication::exit(1); });
    EXPECT_EQ(QApplication::exec(), 0);
}

TEST_F(ProgressDlgTest, EndsWithTheWindowThatItStandsOver) {
    auto* window = new QMainWindow;
    later({[&] {
        EXPECT_EQ(panel()->parentWidget(), window);
        EXPECT_EQ(panel()->windowModality(), Qt::WindowModal);
        delete window;
    }});
    m_Dialog.runModal();
    EXPECT_EQ(panel(), nullptr);
}

}  // namespace
