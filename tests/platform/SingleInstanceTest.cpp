// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/SingleInstance.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QLocalSocket>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <atomic>
#include <barrier>
#include <memory>
#include <vector>

namespace {

class SingleInstanceTest : public testing::Test {
  protected:
    void SetUp() override {
        qputenv("XDG_RUNTIME_DIR", m_Directory.path().toLocal8Bit());
        qputenv("DISPLAY", ":7");
        qunsetenv("WAYLAND_DISPLAY");
    }

    /** What a second start finds, while this thread's event loop goes on. */
    static bool isFirstElsewhere() {
        std::atomic<bool> isFirst = true;
        const std::unique_ptr<QThread> second(
            QThread::create([&] { isFirst = SingleInstance("meter").isFirst(); }));
        second->start();
        while (!second->wait(1)) {
            QCoreApplication::processEvents();
        }
        return isFirst;
    }

    QString socketPath() const {
        const QFileInfoList sockets = QDir(m_Directory.path()).entryInfoList({"*.socket"}, QDir::System);
        return sockets.value(0).filePath();
    }

    QTemporaryDir m_Directory;
};

TEST_F(SingleInstanceTest, ASecondStartHandsItsTokenToTheFirst) {
    const SingleInstance first("meter");
    QSignalSpy activations(&first, &SingleInstance::activationRequested);
    ASSERT_TRUE(first.isFirst());
    const QByteArray token = "shell/Nevtora Meter/7_TIME12";
    qunsetenv("XDG_ACTIVATION_TOKEN");
    qputenv("DESKTOP_STARTUP_ID", token);
    EXPECT_FALSE(isFirstElsewhere());
    EXPECT_EQ(activations.size(), 1);
    EXPECT_EQ(qgetenv("XDG_ACTIVATION_TOKEN"), token);
}

TEST_F(SingleInstanceTest, OneOfManySimultaneousStartsIsFirstAndHearsAllOthers) {
    constexpr int starts = 8;
    std::atomic<int> firsts = 0;
    std::atomic<int> heard = 0;
    std::barrier together(starts);
    std::vector<std::unique_ptr<QThread>> programs;
    for (int i = 0; i < starts; ++i) {
        programs.emplace_back(QThread::create([&] {
            together.arrive_and_wait();
            const SingleInstance instance("meter");
            if (!instance.isFirst()) {
                return;
            }
            ++firsts;
            QEventLoop loop;
            QTimer::singleShot(10'000, &loop, &QEventLoop::quit);
            QObject::connect(&instance, &SingleInstance::activationRequested, &loop, [&] {
                if (++heard == starts - 1) {
                    loop.quit();
                }
            });
            loop.exec();
        }));
        programs.back()->start();
    }
    for (const auto& program : programs) {
        program->wait();
    }
    EXPECT_EQ(firsts, 1);
    EXPECT_EQ(heard, starts - 1);
}

TEST_F(SingleInstanceTest, AStartAfterACrashIsFirstAndReachable) {
    EXPECT_EXIT(
        {
            const SingleInstance crashing("meter");
            _exit(crashing.isFirst() ? 3 : 4);
        },
        testing::ExitedWithCode(3), "");
    ASSERT_FALSE(socketPath().isEmpty());
    const SingleInstance first("meter");
    QSignalSpy activations(&first, &SingleInstance::activationRequested);
    EXPECT_TRUE(first.isFirst());
    EXPECT_FALSE(isFirstElsewhere());
    EXPECT_EQ(activations.size(), 1);
}

TEST_F(SingleInstanceTest, AHangingFirstIsGivenTwoSecondsAndObeysWhenItWakes) {
    const SingleInstance hanging("meter");
    QSignalSpy activations(&hanging, &SingleInstance::activationRequested);
    QElapsedTimer timer;
    timer.start();
    EXPECT_FALSE(SingleInstance("meter").isFirst());
    EXPECT_GE(timer.elapsed(), 1900);
    EXPECT_LT(timer.elapsed(), 4000);
    EXPECT_TRUE(activations.wait());
}

TEST_F(SingleInstanceTest, AStartThatMeetsAnEndingFirstTakesItsPlace) {
    auto ending = std::make_unique<SingleInstance>("meter");
    std::atomic<bool> isFirst = false;
    const std::unique_ptr<QThread> next(
        QThread::create([&] { isFirst = SingleInstance("meter").isFirst(); }));
    next->start();
    EXPECT_FALSE(next->wait(100));  // it asks, and is not answered
    ending.reset();
    next->wait();
    EXPECT_TRUE(isFirst);
}

TEST_F(SingleInstanceTest, AnotherDisplayHasAFirstOfItsOwn) {
    const SingleInstance first("meter");
    qputenv("WAYLAND_DISPLAY", m_Directory.filePath("wayland-1").toLocal8Bit());
    EXPECT_TRUE(SingleInstance("meter").isFirst());
}

TEST_F(SingleInstanceTest, AnythingButAShortPrintableRequestIsDropped) {
    const SingleInstance first("meter");
    QSignalSpy activations(&first, &SingleInstance::activationRequested);
    const QList<QByteArray> messages = {"quit\n",
                                        "activate\n",
                                        "activate \x1b[2J\n",
                                        "activate \xc3\xa4\n",
                                        "activate " + QByteArray(100'000, 'a') + '\n',
                                        QByteArray(100'000, '\0')};
    for (const QByteArray& message : messages) {
        QLocalSocket caller;
        QSignalSpy ends(&caller, &QLocalSocket::disconnected);
        caller.connectToServer(socketPath());
        caller.write(message);
        EXPECT_TRUE(!ends.isEmpty() || ends.wait()) << message.left(20).toStdString();
        EXPECT_TRUE(activations.isEmpty()) << message.left(20).toStdString();
    }
    QLocalSocket silent;
    silent.connectToServer(socketPath());
    EXPECT_FALSE(isFirstElsewhere());
    EXPECT_EQ(activations.size(), 1);
}

TEST_F(SingleInstanceTest, OnlyTheUserCanReachItsFiles) {
    const SingleInstance first("meter");
    for (const QFileInfo& file : QDir(m_Directory.path()).entryInfoList(QDir::Files | QDir::System)) {
        const QFile::Permissions others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                                          QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
        EXPECT_FALSE(file.permissions() & others) << file.filePath().toStdString();
    }
}

}  // namespace
