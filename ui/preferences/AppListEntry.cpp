// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/preferences/AppListEntry.h"

#include <QFileInfo>

#include "platform/WorkspaceIcons.h"

namespace {

const QString kernelPath = QStringLiteral("/mach_kernel");

/** Of an application whose file this machine does not have: "(unknown)", or in a container "web:/usr/sbin/nginx". */
bool isElsewhere(const QString& path) {
    return !path.startsWith('/');
}

/** `path` up to, and without, the extension of the first bundle in it. */
QString withoutExtension(const QString& path) {
    for (const char* extension : {".app", ".framework", ".bundle"}) {
        const qsizetype position = path.indexOf(QLatin1String(extension));
        if (position >= 0) {
            return path.left(position);
        }
    }
    return path;
}

}  // namespace

QString AppListEntry::nameFromBundlePath(const QString& path) {
    const QString bundle = withoutExtension(path);
    const qsizetype separator = bundle.lastIndexOf('/');
    return separator < 0 ? QString() : bundle.mid(separator + 1);
}

AppListEntry::AppListEntry(const QString& bundlePath)
    : m_Name(nameFromBundlePath(bundlePath)), m_BundlePath(bundlePath) {}

QIcon AppListEntry::icon() const {
    return m_BundlePath == kernelPath ? WorkspaceIcons::iconForFileType(QStringLiteral("bundle"))
                                      : WorkspaceIcons::iconForFile(m_BundlePath);
}

bool AppListEntry::exists() const {
    return m_BundlePath == kernelPath || isElsewhere(m_BundlePath) || QFileInfo::exists(m_BundlePath);
}
