// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusVariant>
#include <QObject>
#include <QVariant>

/**
 * Whether the desktop wants dark windows, and word of it when that changes. Begins with the brightness of the
 * platform's palette, which must not have been replaced yet; the desktop portal, asked without waiting for
 * it, knows better where there is one. Main thread.
 */
class ColorScheme : public QObject {
    Q_OBJECT

  public:
    explicit ColorScheme(QObject* parent = nullptr);

    bool isDark() const { return m_IsDark; }

  signals:
    void changed();

  private slots:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

  private:
    void askPortal();
    void takePreference(const QVariant& preference);

    bool m_IsDark;
};
