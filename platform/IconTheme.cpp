// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/IconTheme.h"

#include <QIcon>
#include <QStandardPaths>

namespace {

QStringList dataFolders(const QString& name) {
    return QStandardPaths::locateAll(QStandardPaths::GenericDataLocation, name,
                                     QStandardPaths::LocateDirectory);
}

}  // namespace

void IconTheme::install() {
    QStringList folders = QIcon::themeSearchPaths();
    for (const QString& folder : dataFolders(QStringLiteral("icons"))) {
        if (!folders.contains(folder)) {
            folders.append(folder);
        }
    }
    QIcon::setThemeSearchPaths(folders);
    QIcon::setFallbackSearchPaths(dataFolders(QStringLiteral("pixmaps")));
}

void IconTheme::follow(bool isDark) {
    static const bool hasOwnTheme = !QIcon::themeName().isEmpty() && QIcon::themeName() != "hicolor";
    const QString fallback = isDark ? "breeze-dark" : "breeze";
    QIcon::setFallbackThemeName(fallback);
    if (!hasOwnTheme) {
        QIcon::setThemeName(fallback);
    }
}
