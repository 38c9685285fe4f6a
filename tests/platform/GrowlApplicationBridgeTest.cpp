// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/GrowlApplicationBridge.h"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusContext>
#include <QTest>
#include <string>
#include <vector>

#include "platform/ActivationToken.h"
#include "platform/GrowlApplicationBridgeDelegate.h"
#include "tests/support/PrivateBus.h"

/** Stands in for the desktop's notification service. */
class Notifications : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

  public:
    struct Call {
        uint replacesId;
        QString body;
        QStringList actions;
        QVariantMap hints;
        int milliseconds;
    };

    QStringList capabilities{"actions", "body"};
    bool isSilent = false;  // takes calls and answers none
    std::vector<Call> calls;

  public slots:
    QStringList GetCapabilities() { return capabilities; }

    uint Notify(const QString&, uint replacesId, const QString&, const QString&, const QString& body,
                const QStringList& actions, const QVariantMap& hints, int milliseconds) {
        calls.push_back({replacesId, body, actions, hints, milliseconds});
        setDelayedReply(isSilent);
        return replacesId != 0 ? replacesId : ++m_LastId;
    }

  signals:
    void ActivationToken(uint id, const QString& token);
    void ActionInvoked(uint id, const QString& action);
    void NotificationClosed(uint id, uint reason);

  private:
    uint m_LastId = 0;
};

namespace {

constexpr uint expired = 1;

class GrowlApplicationBridgeTest : public testing::Test, protected GrowlApplicationBridgeDelegate {
  protected:
    void SetUp() override {
        if (PrivateBus::address().isEmpty()) {
            GTEST_SKIP() << "no dbus-daemon here";
        }
        GrowlApplicationBridge::setGrowlDelegate(this);
    }

    ~GrowlApplicationBridgeTest() override {
        stopService();
        QTest::qWait(20);  // for its end to be known to the next test
        GrowlApplicationBridge::setGrowlDelegate(nullptr);
    }

    QVariantMap registrationDictionaryForGrowl() override {
        return {{"AllNotifications", QStringList{"News", "Quiet"}},
                {"DefaultNotifications", QStringList{"News", "Unheard of"}}};
    }
    QString applicationNameForGrowl() override { return "Test"; }
    void growlIsReady() override { m_Told += "ready "; }
    void growlNotificationWasClicked(const QVariant& context) override {
        m_Told += "clicked:" + context.toString().toStdString() + ' ';
    }
    void growlNotificationTimedOut(const QVariant& context) override {
        m_Told += "timedOut:" + context.toString().toStdString() + ' ';
    }

    void startService() {
        QDBusConnection bus = QDBusConnection::connectToBus(PrivateBus::address(), "service");
        ASSERT_TRUE(bus.registerObject("/org/freedesktop/Notifications", &m_Service,
                                       QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals));
        ASSERT_TRUE(bus.registerService("org.freedesktop.Notifications"));
    }

    /** As if it had died: the bus sees its connection end. */
    static void stopService() { QDBusConnection::disconnectFromBus("service"); }

    static void notify(const QVariant& context, int priority = 0, bool isSticky = false,
                       const QString& name = "News") {
        GrowlApplicationBridge::notifyWithTitle("Title", "<i>50% & more", name, {}, priority, isSticky,
                                                context);
    }

    const Notifications::Call& call(std::size_t index) {
        EXPECT_TRUE(QTest::qWaitFor([&] { return m_Service.calls.size() > index; }));
        return m_Service.calls.at(index);
    }

    void expectTold(const std::string& what) {
        EXPECT_TRUE(QTest::qWaitFor([&] { return m_Told.size() >= what.size(); }));
        QTest::qWait(20);
        EXPECT_EQ(m_Told, what);
    }

    Notifications m_Service;
    std::string m_Told;
};

TEST_F(GrowlApplicationBridgeTest, WhatBecomesOfANotificationComesBackWithItsContext) {
    startService();
    notify(7);
    notify(8);
    EXPECT_EQ(call(0).body, "<i>50% & more") << "this service knows no markup";
    call(1);
    expectTold("ready ");
    emit m_Service.ActivationToken(1, "token");
    emit m_Service.ActionInvoked(99, "default");  // another program's
    emit m_Service.ActionInvoked(1, "default");
    emit m_Service.NotificationClosed(1, expired);
    emit m_Service.NotificationClosed(2, expired);
    expectTold("ready clicked:7 timedOut:8 ");
    EXPECT_EQ(ActivationToken::take(), "token");
}

TEST_F(GrowlApplicationBridgeTest, PriorityBecomesUrgencyAndStickyATimeWithoutEndOfRegisteredNamesOnly) {
    startService();
    const std::pair<int, uchar> urgencies[] = {{-2, 0}, {-1, 0}, {0, 1}, {1, 1}, {2, 2}};
    std::size_t index = 0;
    for (const auto& [priority, urgency] : urgencies) {
        notify({}, priority, true, "Quiet");
        notify({}, priority, true, "Unheard of");
        notify({}, priority, true);
        EXPECT_EQ(call(index).hints["urgency"].value<uchar>(), urgency);
        EXPECT_EQ(call(index++).milliseconds, 0);
    }
}

TEST_F(GrowlApplicationBridgeTest, ThreeShowAtATimeAndAFurtherOneReplacesTheOldest) {
    startService();
    for (int i = 1; i <= 4; ++i) {
        notify(i);
        call(static_cast<std::size_t>(i) - 1);
        QTest::qWait(20);
    }
    EXPECT_EQ(call(3).replacesId, 1U);
    emit m_Service.ActionInvoked(1, "default");
    expectTold("ready timedOut:1 clicked:4 ");
    notify(5);
    EXPECT_EQ(call(4).replacesId, 0U);
}

TEST_F(GrowlApplicationBridgeTest, WhileTheServiceIsSilentTheNewestThreeWait) {
    m_Service.isSilent = true;
    startService();
    notify(1);
    call(0);
    for (int i = 2; i <= 6; ++i) {
        notify(i);
    }
    expectTold("ready timedOut:2 timedOut:3 ");
    EXPECT_EQ(m_Service.calls.size(), 1U);
    m_Service.isSilent = false;
    stopService();  // which is an answer to the first
    expectTold("ready timedOut:2 timedOut:3 timedOut:1 timedOut:4 timedOut:5 timedOut:6 ");
}

TEST_F(GrowlApplicationBridgeTest, AServiceMayBeMissingDieAndComeBackAnotherOne) {
    notify(1);
    expectTold("timedOut:1 ");
    startService();
    notify(2);
    call(0);
    QTest::qWait(20);
    stopService();
    expectTold("timedOut:1 ready timedOut:2 ");
    m_Service.capabilities = {"body-markup"};
    startService();
    notify(3);
    EXPECT_EQ(call(1).body, "&lt;i&gt;50% &amp; more");
    EXPECT_EQ(call(1).actions, QStringList());
    EXPECT_EQ(call(1).replacesId, 0U);
    expectTold("timedOut:1 ready timedOut:2 ready ");
}

}  // namespace

#include "GrowlApplicationBridgeTest.moc"
