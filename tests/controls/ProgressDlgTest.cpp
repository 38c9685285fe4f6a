// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/ProgressDlg.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QMainWindow>
#include <QTest>
#include <QTimer>
#include <functional>
#include <vector>

namespace {

/** Work that nobody can cancel. Each test acts in the events of its modal loop. */
class ProgressDlgTest : public testing::Test {
  protected:
    ProgressDlgTest() { m_Dialog.setCancelAllowed(false); }

    static QDialog* panel() { return qobject_cast<QDialog*>(QApplication::activeModalWidget()); }

    /** `steps` happen one after the other, each in an event of its own. */
    static void later(const std::vector<std::function<void()>>& steps) {
        for (const auto& step : steps) {
            QTimer::singleShot(0, qApp, step);
        }
    }

    ProgressDlg m_Dialog;
};

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
    for (const auto& close : std::vector<std::function<void()>>{
             [] { panel()->close(); }, [] { QTest::keyClick(panel(), Qt::Key_Escape); }}) {
        m_Dialog.setCancelAllowed(false);
        later({close,
               [&] {
                   EXPECT_NE(panel(), nullptr) << "closed though it must not";
                   m_Dialog.setCancelAllowed(true);
               },
               close});
        m_Dialog.runModal();
    }
}

TEST_F(ProgressDlgTest, KeepsNobodyFromQuitting) {
    later({[this] { m_Dialog.runModal(); }, [] { QApplication::quit(); }});
    QTimer::singleShot(5000, qApp, [] { QCoreApplication::exit(1); });
    EXPECT_EQ(QApplication::exec(), 0);
}

TEST_F(ProgressDlgTest, EndsWithTheWindowThatItStandsOver) {
    auto* window = new QMainWindow;
    later({[&] {
        EXPECT_EQ(panel()->windowModality(), Qt::WindowModal) << "which leaves the tray in reach";
        delete window;
    }});
    m_Dialog.runModal();
    EXPECT_EQ(panel(), nullptr);
}

}  // namespace
