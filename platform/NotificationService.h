// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QImage>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <cstdint>
#include <deque>
#include <optional>

class QDBusPendingCallWatcher;

/** What the desktop is asked to show. */
struct DesktopNotification {
    /** As the service numbers them. */
    enum Urgency : unsigned char { Low = 0, Normal = 1, Critical = 2 };

    QString applicationName;
    QString title;
    QString text;  ///< plain, whatever stands in it
    QImage icon;   ///< null for the program's own
    Urgency urgency = Normal;
    bool isSticky = false;  ///< stays until the user has seen to it
    QVariant context;       ///< comes back with what becomes of it
};

/**
 * The desktop's notification service, `org.freedesktop.Notifications` on the session bus. It is first spoken to when
 * there is something to show, and never waited for: one that is missing, slow or gone costs the main thread nothing.
 *
 * Three notifications of ours show at a time at most; a further one takes the place of the oldest, and of those that
 * wait for a slow service only the newest three are kept. Main thread.
 */
class NotificationService : public QObject {
    Q_OBJECT

  public:
    explicit NotificationService(QObject* parent = nullptr);

    /** Returns at once; one of the three signals below tells what became of it, perhaps within the call. */
    void post(const DesktopNotification& notification);

  signals:
    /** The service, or the one that has taken its place, has answered for the first time. */
    void ready();

    /** The user wants to see more. What lets a window come forward has been put into the environment. */
    void clicked(const QVariant& context);

    /** It has gone without a click: by itself, by the user, with its service or for a newer one. */
    void closed(const QVariant& context);

    /** There is nobody to show it: no bus, no service, or none that answers within a minute. */
    void undeliverable(const DesktopNotification& notification);

  private slots:
    void activationTokenCame(uint id, const QString& token);
    void actionInvoked(uint id, const QString& action);
    void notificationClosed(uint id, uint reason);

  private:
    struct Shown {
        std::uint32_t id;
        QVariant context;
        QString activationToken;
    };

    bool connectToBus();
    void serviceOwnerChanged(const QString& oldOwner);
    void sendNext();
    void askForCapabilities();
    void capabilitiesCame(const QDBusPendingCallWatcher& answer);
    void send(const DesktopNotification& notification);
    void notificationSent(const QDBusPendingCallWatcher& answer, const DesktopNotification& notification);
    std::uint32_t makeRoom();
    QString bodyOf(const DesktopNotification& notification) const;
    std::optional<Shown> take(std::uint32_t id);

    std::optional<QDBusConnection> m_Bus;
    std::optional<QStringList> m_Capabilities;  ///< of the service that runs; none before it has answered
    std::deque<DesktopNotification> m_Waiting;
    std::deque<Shown> m_Shown;  ///< the oldest first
    bool m_IsCalling = false;   ///< one call at a time
};
