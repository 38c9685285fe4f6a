// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/WorkspaceIcons.h"

#include <QCache>
#include <QCoreApplication>
#include <QFileIconProvider>
#include <QFileInfo>
#include <QStandardPaths>
#include <memory>

#include "platform/DesktopEntries.h"
#include "platform/TileIcon.h"

namespace {

constexpr qsizetype maxIcons = 1000;  // many more than a screen shows at a time

struct Cache {
    QCache<QString, QIcon> files{maxIcons};
    QCache<QString, QIcon> types{maxIcons};
    DesktopEntries entries{QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation)};
};

std::unique_ptr<Cache> sCache;

/** Pictures must not outlive the application object, so the cache ends with it. */
Cache& cache() {
    if (sCache == nullptr) {
        sCache = std::make_unique<Cache>();
        qAddPostRoutine([] { sCache.reset(); });
    }
    return *sCache;
}

/** A theme may name a picture that cannot be drawn, for want of a decoder. */
bool isDrawable(const QIcon& icon) {
    return !icon.isNull() && !icon.pixmap(16).isNull();
}

/** The first of `candidates` that can be drawn, else the tile of `path`. */
QIcon firstDrawable(std::initializer_list<QIcon> candidates, const QString& path) {
    for (const QIcon& icon : candidates) {
        if (isDrawable(icon)) {
            return icon;
        }
    }
    return TileIcon::forPath(path);
}

#ifdef Q_OS_MACOS

QIcon findFileIcon(const QString& path) {
    return firstDrawable({QFileIconProvider().icon(QFileInfo(path))}, path);
}

QIcon findTypeIcon(const QString& type) {
    return firstDrawable({QFileIconProvider().icon(QFileInfo("file." + type))}, type);
}

#else

/** `name` is a theme's name for an icon, a file, or the name of a file in one of the theme's folders. */
QIcon iconNamed(const QString& name) {
    if (QFileInfo(name).isAbsolute()) {
        return QIcon(name);
    }
    const QIcon icon = QIcon::fromTheme(name);
    return icon.isNull() ? QIcon::fromTheme(QFileInfo(name).completeBaseName()) : icon;
}

QIcon folderIcon(const QString& path) {
    const bool holdsApplications =
        QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation).contains(path);
    return holdsApplications ? TileIcon::allApplications()
                             : firstDrawable({QIcon::fromTheme("folder")}, path);
}

/** Without the theme's "application-x-executable": it is the same for all programs. */
QIcon findFileIcon(const QString& path) {
    const QFileInfo file(path);
    return file.isDir()
               ? folderIcon(path)
               : firstDrawable({iconNamed(cache().entries.iconFor(path))}, path);
}

/** A bundle without a path is how the kernel is shown. */
QIcon findTypeIcon(const QString& type) {
    return type == QLatin1String("bundle") ? TileIcon::kernel()
                                           : firstDrawable({QIcon::fromTheme(type)}, type);
}

#endif

QIcon cached(QCache<QString, QIcon>& icons, const QString& key, QIcon (*find)(const QString&)) {
    if (const QIcon* known = icons.object(key)) {
        return *known;
    }
    const QIcon found = find(key);
    icons.insert(key, new QIcon(found));
    return found;
}

}  // namespace

QIcon WorkspaceIcons::iconForFile(const QString& path) {
    return cached(cache().files, path, findFileIcon);
}

QIcon WorkspaceIcons::iconForFileType(const QString& type) {
    return cached(cache().types, type, findTypeIcon);
}
