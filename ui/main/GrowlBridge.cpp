// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/main/GrowlBridge.h"

#include <QGuiApplication>
#include <QIcon>
#include <QImage>
#include <QPixmap>

#include "daemon/ApplicationInfo.h"
#include "platform/GrowlApplicationBridge.h"
#include "ui/applications/PlainText.h"
#include "ui/main/GrowlBridgeDelegate.h"

namespace {

const QString NEW_APP_OPEN_CONNECTION = QStringLiteral("New application open network connection");

constexpr int iconSize = 64;  // pixels of a screen of usual density
constexpr int normalPriority = 0;

}  // namespace

GrowlBridge* GrowlBridge::sharedBridge() {
    static GrowlBridge sharedBridge;
    return &sharedBridge;
}

GrowlBridge::GrowlBridge() {
    GrowlApplicationBridge::setGrowlDelegate(this);
}

QVariantMap GrowlBridge::registrationDictionaryForGrowl() {
    const QStringList names{NEW_APP_OPEN_CONNECTION};
    return {{"AllNotifications", names},
            {"DefaultNotifications", names},
            {"ApplicationId", "/Applications/Nevtora Meter.app"}};
}

QString GrowlBridge::applicationNameForGrowl() {
    return QStringLiteral("Nevtora Meter");
}

void GrowlBridge::growlNotificationWasClicked(const QVariant& clickContext) {
    if (m_Delegate != nullptr) {
        m_Delegate->notificationWasClicked(clickContext);
    }
}

void GrowlBridge::growlNotificationTimedOut(const QVariant& clickContext) {
    if (m_Delegate != nullptr) {
        m_Delegate->notificationWasTimedOut(clickContext);
    }
}

void GrowlBridge::showNewApplicationNotify(const std::shared_ptr<const ApplicationInfo>& application) {
    if (application == nullptr) {
        return;
    }
    const QString description = "New application (" + PlainText::withVisibleControls(application->name()) +
                                ") open network connection, and it added to Nevtora Meter applications list";
    const QImage icon =
        application->icon().pixmap(QSize(iconSize, iconSize), qGuiApp->devicePixelRatio()).toImage();
    GrowlApplicationBridge::notifyWithTitle("New application added to list", description,
                                            NEW_APP_OPEN_CONNECTION, icon, normalPriority, false,
                                            application->id());
}
