// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/SessionBus.h"

#include <QFileInfo>

bool SessionBus::isThere() {
    return qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS") ||
           QFileInfo::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + "/bus");
}
