// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include "platform/GrowlApplicationBridgeDelegate.h"

class ApplicationInfo;
class GrowlBridgeDelegate;

/** Tells the user's desktop of applications that are new, and a delegate what the user made of it. Main thread. */
class GrowlBridge : public GrowlApplicationBridgeDelegate {
  public:
    /** The program's one, made on the first call and registered with the desktop then. Never null. */
    static GrowlBridge* sharedBridge();

    GrowlBridge(const GrowlBridge&) = delete;
    GrowlBridge& operator=(const GrowlBridge&) = delete;

    /** The delegate is not owned: it is unset, with null, before it goes. */
    GrowlBridgeDelegate* delegate() const { return m_Delegate; }
    void setDelegate(GrowlBridgeDelegate* delegate) { m_Delegate = delegate; }

    /** One notification for the application; none for null, of which nothing could be told. Returns at once. */
    static void showNewApplicationNotify(const std::shared_ptr<const ApplicationInfo>& application);

    QVariantMap registrationDictionaryForGrowl() override;
    QString applicationNameForGrowl() override;
    void growlNotificationWasClicked(const QVariant& clickContext) override;
    void growlNotificationTimedOut(const QVariant& clickContext) override;

  private:
    GrowlBridge();

    GrowlBridgeDelegate* m_Delegate = nullptr;
};
