// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/ColorScheme.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QGuiApplication>
#include <QPalette>

#include "platform/SessionBus.h"

namespace {

const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString portalSettings = QStringLiteral("org.freedesktop.portal.Settings");
const QString appearanceGroup = QStringLiteral("org.freedesktop.appearance");
const QString colorSchemeKey = QStringLiteral("color-scheme");

/** What the portal says; 0 stands for no preference. */
enum Preference : unsigned { PreferDark = 1, PreferLight = 2 };

}  // namespace

ColorScheme::ColorScheme(QObject* parent)
    : QObject(parent), m_IsDark(QGuiApplication::palette().color(QPalette::Window).lightness() < 128) {
    if (SessionBus::isThere()) {
        askPortal();
    }
}

void ColorScheme::askPortal() {
    qRegisterMetaType<QDBusVariant>();  // or the first slot that takes one cannot be connected
    QDBusConnection bus = QDBusConnection::sessionBus();
    bus.connect(portalService, portalPath, portalSettings, "SettingChanged", this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    QDBusMessage question = QDBusMessage::createMethodCall(portalService, portalPath, portalSettings, "Read");
    question << appearanceGroup << colorSchemeKey;
    auto* answer = new QDBusPendingCallWatcher(bus.asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        const QDBusPendingReply<QDBusVariant> reply = *answer;
        if (!reply.isError()) {
            takePreference(reply.value().variant());
        }
        answer->deleteLater();
    });
}

void ColorScheme::settingChanged(const QString& group, const QString& key, const QDBusVariant& value) {
    if (group == appearanceGroup && key == colorSchemeKey) {
        takePreference(value.variant());
    }
}

void ColorScheme::takePreference(const QVariant& preference) {
    QVariant value = preference;
    while (value.canConvert<QDBusVariant>()) {  // "Read" wraps its value twice
        value = value.value<QDBusVariant>().variant();
    }
    const unsigned wanted = value.toUInt();
    const bool isKnown = wanted == PreferDark || wanted == PreferLight;
    if (isKnown && m_IsDark != (wanted == PreferDark)) {
        m_IsDark = !m_IsDark;
        emit changed();
    }
}
