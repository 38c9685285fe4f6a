// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QVariant>

/** Hears what becomes of notifications, on the main thread. A subclass implements what it wants. */
class GrowlBridgeDelegate {
  public:
    virtual ~GrowlBridgeDelegate() = default;

    /** `clickContext`: the id of the application that the notification was about. */
    virtual void notificationWasClicked(const QVariant& /*clickContext*/) {}

    /** It has gone without a click. */
    virtual void notificationWasTimedOut(const QVariant& /*clickContext*/) {}
};
