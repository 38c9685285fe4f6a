// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QVariantMap>

/** Who posts notifications, and hears what becomes of them. On the main thread; a subclass implements what it wants. */
class GrowlApplicationBridgeDelegate {
  public:
    virtual ~GrowlApplicationBridgeDelegate() = default;

    /**
     * "AllNotifications" and "DefaultNotifications", lists of names: those that there are, and those of them that are
     * shown. "ApplicationId", the path of the application's bundle where applications have one. Asked for once.
     */
    virtual QVariantMap registrationDictionaryForGrowl() { return {}; }

    /** Whose notifications these are, for the user. */
    virtual QString applicationNameForGrowl() { return {}; }

    /** The desktop's service answers; said again when another one has taken its place. */
    virtual void growlIsReady() {}

    /** Every notification that was shown or might have been ends in one of these two, with the context given to it. */
    virtual void growlNotificationWasClicked(const QVariant& /*clickContext*/) {}
    virtual void growlNotificationTimedOut(const QVariant& /*clickContext*/) {}
};
