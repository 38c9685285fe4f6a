// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/ColorScheme.h"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QGuiApplication>
#include <QPalette>
#include <QSignalSpy>

#include "tests/support/PrivateBus.h"

/** Stands in for the desktop portal. */
class SettingsPortal : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

  public:
    unsigned preference = 0;

  public slots:
    QDBusVariant Read(const QString& group, const QString& key) const {
        const bool isKnown = group == "org.freedesktop.appearance" && key == "color-scheme";
        return QDBusVariant(QVariant::fromValue(QDBusVariant(isKnown ? preference : 0)));
    }

  signals:
    void SettingChanged(const QString& group, const QString& key, const QDBusVariant& value);
};

namespace {

/** Each case needs a process of its own: the session's bus is one for good. */
class ColorSchemeTest : public testing::Test {
  protected:
    void SetUp() override {
        if (PrivateBus::address().isEmpty()) {
            GTEST_SKIP() << "no dbus-daemon here";
        }
        QDBusConnection bus = QDBusConnection::connectToBus(PrivateBus::address(), "portal");
        ASSERT_TRUE(bus.registerObject("/org/freedesktop/portal/desktop", &m_Portal,
                                       QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals));
        ASSERT_TRUE(bus.registerService("org.freedesktop.portal.Desktop"));
    }

    void TearDown() override { QDBusConnection::disconnectFromBus("portal"); }

    /** Returns when everything that was emitted has arrived: a bus keeps the order of what it passes on. */
    static void settle() {
        for (const QDBusConnection& bus : {QDBusConnection("portal"), QDBusConnection::sessionBus()}) {
            bus.interface()->isServiceRegistered("org.example");
        }
        QCoreApplication::processEvents();
    }

    SettingsPortal m_Portal;
};

TEST_F(ColorSchemeTest, FollowsThePortalFromItsFirstAnswerOn) {
    m_Portal.preference = 1;
    const ColorScheme scheme;
    QSignalSpy changes(&scheme, &ColorScheme::changed);
    EXPECT_FALSE(scheme.isDark());
    EXPECT_TRUE(changes.wait());
    EXPECT_TRUE(scheme.isDark());

    emit m_Portal.SettingChanged("org.freedesktop.appearance", "color-scheme", QDBusVariant(2u));
    settle();
    EXPECT_FALSE(scheme.isDark());
}

TEST_F(ColorSchemeTest, KeepsThePlatformsBrightnessWhereThePortalHasNoPreference) {
    QGuiApplication::setPalette(QPalette(Qt::black));
    const ColorScheme scheme;
    QSignalSpy changes(&scheme, &ColorScheme::changed);
    emit m_Portal.SettingChanged("org.freedesktop.appearance", "contrast", QDBusVariant(2u));
    emit m_Portal.SettingChanged("org.freedesktop.appearance", "color-scheme", QDBusVariant(0u));
    settle();
    EXPECT_TRUE(changes.isEmpty());
    EXPECT_TRUE(scheme.isDark());
}

}  // namespace

#include "ColorSchemeTest.moc"
