// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/NotificationService.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QGuiApplication>
#include <algorithm>
#include <chrono>
#include <utility>

#include "platform/ActivationToken.h"
#include "platform/SessionBus.h"

namespace {

using namespace std::chrono_literals;

const QString service = QStringLiteral("org.freedesktop.Notifications");
const QString path = QStringLiteral("/org/freedesktop/Notifications");
const QString clickAction = QStringLiteral("default");  // what a click on the notification itself invokes

constexpr std::size_t atOnce = 3;
constexpr std::chrono::milliseconds patience = 60s;  // a desktop that starts may need half of it
constexpr int untilSeenTo = 0;                       // as a time to stay, milliseconds
constexpr int asUsual = -1;

/** Rows of eight-bit red, green, blue and alpha, as the service takes them. */
struct Picture {
    int width = 0;
    int height = 0;
    int bytesPerRow = 0;
    bool hasAlpha = true;
    int bitsPerSample = 8;
    int samplesPerPixel = 4;
    QByteArray rows;
};

QDBusArgument& operator<<(QDBusArgument& argument, const Picture& picture) {
    argument.beginStructure();
    argument << picture.width << picture.height << picture.bytesPerRow << picture.hasAlpha
             << picture.bitsPerSample << picture.samplesPerPixel << picture.rows;
    argument.endStructure();
    return argument;
}

/** Demanded with the other one; nobody sends us pictures. */
const QDBusArgument& operator>>(const QDBusArgument& argument, Picture& /*picture*/) {
    return argument;
}

Picture pictureOf(const QImage& image) {
    const QImage pixels = image.convertToFormat(QImage::Format_RGBA8888);
    return {.width = pixels.width(),
            .height = pixels.height(),
            .bytesPerRow = static_cast<int>(pixels.bytesPerLine()),
            .rows = QByteArray(reinterpret_cast<const char*>(pixels.constBits()), pixels.sizeInBytes())};
}

QDBusMessage callOf(const QString& method) {
    return QDBusMessage::createMethodCall(service, path, service, method);
}

QVariantMap hintsOf(const DesktopNotification& notification) {
    QVariantMap hints{{"urgency", QVariant::fromValue(static_cast<uchar>(notification.urgency))},
                      {"desktop-entry", QGuiApplication::desktopFileName()}};
    if (!notification.icon.isNull()) {
        hints.insert("image-data", QVariant::fromValue(pictureOf(notification.icon)));
    }
    return hints;
}

}  // namespace

Q_DECLARE_METATYPE(Picture)

NotificationService::NotificationService(QObject* parent) : QObject(parent) {
    qDBusRegisterMetaType<Picture>();
}

bool NotificationService::connectToBus() {
    if (!m_Bus && SessionBus::isThere()) {
        m_Bus = QDBusConnection::sessionBus();
        m_Bus->connect(service, path, service, "ActivationToken", this,
                       SLOT(activationTokenCame(uint, QString)));
        m_Bus->connect(service, path, service, "ActionInvoked", this, SLOT(actionInvoked(uint, QString)));
        m_Bus->connect(service, path, service, "NotificationClosed", this,
                       SLOT(notificationClosed(uint, uint)));
        auto* watcher =
            new QDBusServiceWatcher(service, *m_Bus, QDBusServiceWatcher::WatchForOwnerChange, this);
        connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
                [this](const QString& /*name*/, const QString& oldOwner) { serviceOwnerChanged(oldOwner); });
    }
    return m_Bus && m_Bus->isConnected();
}

/** A service takes with it what it showed, and the next one may be able to do other things. */
void NotificationService::serviceOwnerChanged(const QString& oldOwner) {
    if (oldOwner.isEmpty()) {
        return;
    }
    m_Capabilities.reset();
    for (const Shown& shown : std::exchange(m_Shown, {})) {
        emit closed(shown.context);
    }
}

void NotificationService::post(const DesktopNotification& notification) {
    if (!connectToBus()) {
        emit undeliverable(notification);
        return;
    }
    m_Waiting.push_back(notification);
    if (m_Waiting.size() > atOnce) {  // it would be replaced before anybody could read it
        const QVariant oldest = m_Waiting.front().context;
        m_Waiting.pop_front();
        emit closed(oldest);
    }
    sendNext();
}

void NotificationService::sendNext() {
    if (m_IsCalling || m_Waiting.empty()) {
        return;
    }
    m_IsCalling = true;
    if (!m_Capabilities) {
        askForCapabilities();
        return;
    }
    const DesktopNotification next = m_Waiting.front();
    m_Waiting.pop_front();
    send(next);
}

void NotificationService::askForCapabilities() {
    auto* answer = new QDBusPendingCallWatcher(
        m_Bus->asyncCall(callOf("GetCapabilities"), static_cast<int>(patience.count())), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] { capabilitiesCame(*answer); });
    connect(answer, &QDBusPendingCallWatcher::finished, answer, &QObject::deleteLater);
}

void NotificationService::capabilitiesCame(const QDBusPendingCallWatcher& answer) {
    m_IsCalling = false;
    const QDBusPendingReply<QStringList> capabilities = answer;
    if (capabilities.isError()) {
        for (const DesktopNotification& notification : std::exchange(m_Waiting, {})) {
            emit undeliverable(notification);
        }
        return;
    }
    m_Capabilities = capabilities.value();
    emit ready();
    sendNext();
}

void NotificationService::send(const DesktopNotification& notification) {
    const bool canBeClicked = m_Capabilities->contains("actions");  // others may ask with a dialog instead
    QDBusMessage call = callOf("Notify");
    call << notification.applicationName << makeRoom() << QGuiApplication::desktopFileName()
         << notification.title << bodyOf(notification)
         << (canBeClicked ? QStringList{clickAction, "Show"} : QStringList()) << hintsOf(notification)
         << (notification.isSticky ? untilSeenTo : asUsual);
    auto* answer =
        new QDBusPendingCallWatcher(m_Bus->asyncCall(call, static_cast<int>(patience.count())), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this,
            [this, answer, notification] { notificationSent(*answer, notification); });
    connect(answer, &QDBusPendingCallWatcher::finished, answer, &QObject::deleteLater);
}

/** The id to replace; 0 when there is room for one more. */
std::uint32_t NotificationService::makeRoom() {
    if (m_Shown.size() < atOnce) {
        return 0;
    }
    const Shown oldest = m_Shown.front();
    m_Shown.pop_front();
    emit closed(oldest.context);
    return oldest.id;
}

QString NotificationService::bodyOf(const DesktopNotification& notification) const {
    return m_Capabilities->contains("body-markup") ? notification.text.toHtmlEscaped() : notification.text;
}

void NotificationService::notificationSent(const QDBusPendingCallWatcher& answer,
                                           const DesktopNotification& notification) {
    m_IsCalling = false;
    const QDBusPendingReply<uint> id = answer;
    if (id.isError()) {
        m_Capabilities.reset();
        emit undeliverable(notification);
    } else {
        m_Shown.push_back({id.value(), notification.context, {}});
    }
    sendNext();
}

std::optional<NotificationService::Shown> NotificationService::take(std::uint32_t id) {
    const auto found =
        std::find_if(m_Shown.begin(), m_Shown.end(), [id](const Shown& shown) { return shown.id == id; });
    if (found == m_Shown.end()) {
        return {};  // another program's
    }
    const Shown shown = *found;
    m_Shown.erase(found);
    return shown;
}

void NotificationService::activationTokenCame(uint id, const QString& token) {
    for (Shown& shown : m_Shown) {
        if (shown.id == id) {
            shown.activationToken = token;
        }
    }
}

void NotificationService::actionInvoked(uint id, const QString& action) {
    if (action != clickAction) {
        return;
    }
    if (const auto shown = take(id)) {
        if (!shown->activationToken.isEmpty()) {
            ActivationToken::put(shown->activationToken);
        }
        emit clicked(shown->context);
    }
}

void NotificationService::notificationClosed(uint id, uint /*reason*/) {
    if (const auto shown = take(id)) {
        emit closed(shown->context);
    }
}
