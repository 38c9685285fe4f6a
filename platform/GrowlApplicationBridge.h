// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QVariant>
#include <optional>

#include "platform/NotificationService.h"

class GrowlApplicationBridgeDelegate;
class QSystemTrayIcon;

/**
 * The way to the user's desktop for news: its notification service or, where there is none, the program's item in the
 * tray. Nothing here waits for either. Main thread, while there is an application object.
 */
class GrowlApplicationBridge : public QObject {
  public:
    /** Asks it at once which notifications there are. Not owned; null ends what it would be told. */
    static void setGrowlDelegate(GrowlApplicationBridgeDelegate* delegate);

    /** What speaks where nothing else can; null for nobody. Not owned. */
    static void setStatusItem(QSystemTrayIcon* statusItem);

    /**
     * Shows a notification whose name the delegate has registered as one to show; another one is dropped. Both texts
     * are plain. `priority` is -2, which can wait, to 2, an emergency; what is sticky stays until the user has seen
     * to it. `clickContext` comes back to the delegate.
     */
    static void notifyWithTitle(const QString& title, const QString& description,
                                const QString& notificationName, const QImage& iconData, int priority,
                                bool isSticky, const QVariant& clickContext);

  private:
    explicit GrowlApplicationBridge(QObject* parent);
    static GrowlApplicationBridge* shared();

    void becameReady();
    void wasClicked(const QVariant& clickContext);
    void timedOut(const QVariant& clickContext);
    void showInTray(const DesktopNotification& notification);
    void trayMessageClicked();

    GrowlApplicationBridgeDelegate* m_Delegate = nullptr;
    QString m_ApplicationName;
    QStringList m_ShownNames;
    NotificationService m_Service;
    QPointer<QSystemTrayIcon> m_StatusItem;
    std::optional<QVariant> m_TrayContext;  ///< of the message that shows in the tray, or showed last
};
