// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/TerminationSignals.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <QApplication>
#include <QDialog>

namespace {

class TerminationSignalsTest : public testing::TestWithParam<int> {};

TEST_P(TerminationSignalsTest, ASignalEndsTheEventLoopAlsoWhenItCameBefore) {
    const TerminationSignals terminationSignals;
    raise(GetParam());
    EXPECT_EQ(QApplication::exec(), 0);
}

TEST_P(TerminationSignalsTest, ASignalEndsADialogThatRunsBeforeTheMainLoop) {
    const TerminationSignals terminationSignals;
    QDialog dialog;
    raise(GetParam());
    EXPECT_EQ(dialog.exec(), QDialog::Rejected);
}

TEST_P(TerminationSignalsTest, ASecondSignalEndsTheProcess) {
    EXPECT_EXIT(
        {
            const TerminationSignals terminationSignals;
            raise(GetParam());
            raise(GetParam());
        },
        testing::KilledBySignal(GetParam()), "");
}

INSTANTIATE_TEST_SUITE_P(Signals, TerminationSignalsTest, testing::Values(SIGTERM, SIGINT, SIGHUP));

}  // namespace
