// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/ActivationToken.h"

#include <QtGlobal>

namespace {

constexpr const char* waylandVariable = "XDG_ACTIVATION_TOKEN";
constexpr const char* x11Variable = "DESKTOP_STARTUP_ID";

}  // namespace

QString ActivationToken::take() {
    QString token;
    for (const char* variable : {waylandVariable, x11Variable}) {
        if (token.isEmpty()) {
            token = qEnvironmentVariable(variable);
        }
        qunsetenv(variable);
    }
    return token;
}

void ActivationToken::put(const QString& token) {
    qputenv(waylandVariable, token.toUtf8());
}
