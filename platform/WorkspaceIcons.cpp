// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/WorkspaceIcons.h"

#include <QCoreApplication>
#include <QFileIconProvider>
#include <QFileInfo>
#include <QHash>
#include <QPainter>
#include <QStandardPaths>
#include <memory>

#include "platform/DesktopEntries.h"

namespace {

struct Cache {
    QHash<QString, QIcon> files;
    QHash<QString, QIcon> types;
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

/** A window with a title bar for a program without a picture, in a grey that steps back on light and dark. */
QIcon drawnIcon() {
    QIcon icon;
    for (const int size : {16, 32, 64, 96, 192}) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.scale(size / 16.0, size / 16.0);
        painter.setPen(QPen(QColor(0x80868f), 1.5));
        painter.setBrush(QColor(128, 134, 143, 48));
        painter.drawRoundedRect(QRectF(1.5, 2.5, 13, 11), 2, 2);
        painter.drawLine(QPointF(1.5, 5.5), QPointF(14.5, 5.5));
        icon.addPixmap(pixmap);
    }
    return icon;
}

QIcon firstDrawable(std::initializer_list<QIcon> candidates) {
    for (const QIcon& icon : candidates) {
        if (isDrawable(icon)) {
            return icon;
        }
    }
    return drawnIcon();
}

#ifdef Q_OS_MACOS

QIcon findFileIcon(const QString& path) {
    return firstDrawable({QFileIconProvider().icon(QFileInfo(path))});
}

QIcon findTypeIcon(const QString& type) {
    return firstDrawable({QFileIconProvider().icon(QFileInfo("file." + type))});
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
    return firstDrawable(
        {QIcon::fromTheme(holdsApplications ? "applications-all" : "folder"), QIcon::fromTheme("folder")});
}

/** Without the theme's "application-x-executable": in a list, the small one of Breeze looks like a warning. */
QIcon findFileIcon(const QString& path) {
    const QFileInfo file(path);
    return file.isDir()
               ? folderIcon(path)
               : firstDrawable({iconNamed(cache().entries.iconFor(path)), QIcon::fromTheme(file.fileName())});
}

/** A bundle without a path is how the kernel is shown. */
QIcon findTypeIcon(const QString& type) {
    return firstDrawable({QIcon::fromTheme(type == QLatin1String("bundle") ? "computer" : type)});
}

#endif

QIcon cached(QHash<QString, QIcon>& icons, const QString& key, QIcon (*find)(const QString&)) {
    const auto known = icons.constFind(key);
    return known != icons.constEnd() ? *known : *icons.insert(key, find(key));
}

}  // namespace

QIcon WorkspaceIcons::iconForFile(const QString& path) {
    return cached(cache().files, path, findFileIcon);
}

QIcon WorkspaceIcons::iconForFileType(const QString& type) {
    return cached(cache().types, type, findTypeIcon);
}
