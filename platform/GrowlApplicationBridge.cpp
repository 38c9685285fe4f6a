// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/GrowlApplicationBridge.h"

#include <QCoreApplication>
#include <QIcon>
#include <QPixmap>
#include <QSystemTrayIcon>
#include <algorithm>
#include <utility>

#include "platform/GrowlApplicationBridgeDelegate.h"

namespace {

constexpr int highPriority = 1;
constexpr int trayMessageTime = 10'000;  // milliseconds
constexpr int untilSeenTo = 0;

DesktopNotification::Urgency urgencyOf(int priority) {
    if (priority > highPriority) {
        return DesktopNotification::Critical;
    }
    return priority < 0 ? DesktopNotification::Low : DesktopNotification::Normal;
}

}  // namespace

/** The application object's, which it needs to the end. */
GrowlApplicationBridge* GrowlApplicationBridge::shared() {
    static QPointer<GrowlApplicationBridge> shared;
    if (shared == nullptr) {
        shared = new GrowlApplicationBridge(QCoreApplication::instance());
    }
    return shared;
}

GrowlApplicationBridge::GrowlApplicationBridge(QObject* parent) : QObject(parent) {
    connect(&m_Service, &NotificationService::ready, this, &GrowlApplicationBridge::becameReady);
    connect(&m_Service, &NotificationService::clicked, this, &GrowlApplicationBridge::wasClicked);
    connect(&m_Service, &NotificationService::closed, this, &GrowlApplicationBridge::timedOut);
    connect(&m_Service, &NotificationService::undeliverable, this, &GrowlApplicationBridge::showInTray);
}

void GrowlApplicationBridge::setGrowlDelegate(GrowlApplicationBridgeDelegate* delegate) {
    GrowlApplicationBridge& bridge = *shared();
    bridge.m_Delegate = delegate;
    bridge.m_ApplicationName.clear();
    bridge.m_ShownNames.clear();
    if (delegate == nullptr) {
        return;
    }
    bridge.m_ApplicationName = delegate->applicationNameForGrowl();
    const QVariantMap registration = delegate->registrationDictionaryForGrowl();
    const QStringList all = registration.value("AllNotifications").toStringList();
    bridge.m_ShownNames = registration.value("DefaultNotifications").toStringList();
    bridge.m_ShownNames.removeIf([&all](const QString& name) { return !all.contains(name); });
}

void GrowlApplicationBridge::setStatusItem(QSystemTrayIcon* statusItem) {
    GrowlApplicationBridge& bridge = *shared();
    if (bridge.m_StatusItem != nullptr) {
        bridge.m_StatusItem->disconnect(&bridge);
    }
    bridge.m_StatusItem = statusItem;
    if (statusItem != nullptr) {
        connect(statusItem, &QSystemTrayIcon::messageClicked, &bridge,
                &GrowlApplicationBridge::trayMessageClicked);
    }
}

void GrowlApplicationBridge::notifyWithTitle(const QString& title, const QString& description,
                                             const QString& notificationName, const QImage& iconData,
                                             int priority, bool isSticky, const QVariant& clickContext) {
    GrowlApplicationBridge& bridge = *shared();
    if (!bridge.m_ShownNames.contains(notificationName)) {
        return;
    }
    bridge.m_Service.post({.applicationName = bridge.m_ApplicationName,
                           .title = title,
                           .text = description,
                           .icon = iconData,
                           .urgency = urgencyOf(priority),
                           .isSticky = isSticky,
                           .context = clickContext});
}

void GrowlApplicationBridge::becameReady() {
    if (m_Delegate != nullptr) {
        m_Delegate->growlIsReady();
    }
}

void GrowlApplicationBridge::wasClicked(const QVariant& clickContext) {
    if (m_Delegate != nullptr) {
        m_Delegate->growlNotificationWasClicked(clickContext);
    }
}

void GrowlApplicationBridge::timedOut(const QVariant& clickContext) {
    if (m_Delegate != nullptr) {
        m_Delegate->growlNotificationTimedOut(clickContext);
    }
}

/** A tray shows one message, and does not tell when it goes: it is over when the next one comes. */
void GrowlApplicationBridge::showInTray(const DesktopNotification& notification) {
    if (const auto last = std::exchange(m_TrayContext, {})) {
        timedOut(*last);
    }
    if (m_StatusItem == nullptr || !QSystemTrayIcon::isSystemTrayAvailable()) {
        timedOut(notification.context);
        return;
    }
    m_TrayContext = notification.context;
    m_StatusItem->showMessage(notification.title, notification.text,
                              QIcon(QPixmap::fromImage(notification.icon)),
                              notification.isSticky ? untilSeenTo : trayMessageTime);
}

void GrowlApplicationBridge::trayMessageClicked() {
    if (const auto context = std::exchange(m_TrayContext, {})) {
        wasClicked(*context);
    }
}
