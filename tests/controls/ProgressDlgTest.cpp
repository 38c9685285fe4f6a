// SPDX-License-Identifier: GPL-3.0-or-later
#include "controls/ProgressDlg.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QMainWindow>
#include <QTimer>
#include <functional>

namespace {

/** Work that nobody can cancel. Each test acts in the events of its modal loop. */
class ProgressDlgTest : public testing::Test {
  protected:
    ProgressDlgTest() { m_Dialog.setCancelAllowed(false); }

    static QDialog* panel() { return qobject_cast<QDialog*>(QApplication::activeModalWidget()); }

    static void later(const std::function<void()>& step) { QTimer::singleShot(0, qApp, step); }

    ProgressDlg m_Dialog;
};

TEST_F(ProgressDlgTest, AStartRightAfterAnEndShowsItAgain) {
    bool isShownAgain = false;
    later([&] {
        m_Dialog.end();
        later([&] {
            isShownAgain = panel() != nullptr && panel()->isVisible();
            m_Dialog.end();
        });
        m_Dialog.runModal();
    });
    m_Dialog.runModal();
    EXPECT_TRUE(isShownAgain);
    EXPECT_EQ(QApplication::topLevelWidgets().size(), 0);
}

TEST_F(ProgressDlgTest, EndsWithTheWindowThatItStandsOver) {
    auto* window = new QMainWindow;
    later([&] {
        EXPECT_EQ(panel()->windowModality(), Qt::WindowModal) << "which leaves the tray in reach";
        delete window;
    });
    m_Dialog.runModal();
    EXPECT_EQ(panel(), nullptr);
}

}  // namespace
