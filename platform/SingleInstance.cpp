// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/SingleInstance.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <QDeadlineTimer>
#include <QFile>
#include <QLocalSocket>
#include <QStandardPaths>
#include <QTimer>
#include <QUrl>
#include <algorithm>
#include <chrono>
#include <thread>

#include "platform/ActivationToken.h"

namespace {

using namespace std::chrono_literals;

constexpr auto patience = 2s;      // for a first start to answer, and for a caller to say its line
constexpr auto retryPause = 10ms;  // between two tries to reach a first start that does not listen yet

// The whole conversation: one line, a token or nothing after the word, answered with one byte.
constexpr char request[] = "activate ";
constexpr qint64 maxLineBytes = 1024;
constexpr char answer = '\n';

QString pathFor(const QString& name) {
    const QString directory = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    const QString display = qEnvironmentVariable("WAYLAND_DISPLAY", qEnvironmentVariable("DISPLAY"));
    const QString id = QString::fromLatin1(QUrl::toPercentEncoding(display));
    return directory.isEmpty() ? QString() : directory + '/' + name + id;
}

bool isPrintable(const QByteArray& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

QByteArray requestLine() {
    const QByteArray token = ActivationToken::take().toUtf8();
    const bool fits = isPrintable(token) && qsizetype(sizeof request) + token.size() <= maxLineBytes;
    return request + (fits ? token : QByteArray()) + '\n';
}

/** Whether the first start has answered; false as soon as it is clear that this one never will. */
bool ask(const QString& path, const QByteArray& line, const QDeadlineTimer& deadline) {
    QLocalSocket first;
    first.connectToServer(path);
    if (!first.waitForConnected(static_cast<int>(deadline.remainingTime()))) {
        return false;
    }
    first.write(line);
    return first.waitForReadyRead(static_cast<int>(deadline.remainingTime()));
}

}  // namespace

SingleInstance::SingleInstance(const QString& name, QObject* parent)
    : QObject(parent), m_Path(pathFor(name)) {
    m_IsFirst = takeLock();
    if (m_IsFirst) {
        listen();
    } else {
        askFirst();
    }
}

SingleInstance::~SingleInstance() {
    m_Server.close();  // while the lock is held: the socket's file may be the next start's afterwards
    if (m_Lock != -1) {
        close(m_Lock);
    }
}

/** The file is never removed: whoever opened it before would lock another one than those who come after. */
bool SingleInstance::takeLock() {
    if (m_Lock == -1 && !m_Path.isEmpty()) {
        m_Lock = open(QFile::encodeName(m_Path + ".lock"), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    }
    return m_Lock == -1 || flock(m_Lock, LOCK_EX | LOCK_NB) == 0;
}

void SingleInstance::listen() {
    if (m_Path.isEmpty()) {
        return;
    }
    const QString path = m_Path + ".socket";
    QLocalServer::removeServer(path);  // what a crash has left
    m_Server.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&m_Server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* caller = m_Server.nextPendingConnection()) {
            greet(caller);
        }
    });
    m_Server.listen(path);
}

/** The first start may not listen yet, or be just about to end: then this one becomes the first. */
void SingleInstance::askFirst() {
    const QByteArray line = requestLine();
    const QDeadlineTimer deadline(patience);
    while (!deadline.hasExpired() && !ask(m_Path + ".socket", line, deadline)) {
        std::this_thread::sleep_for(retryPause);
        if (takeLock()) {
            m_IsFirst = true;
            listen();
            return;
        }
    }
}

void SingleInstance::greet(QLocalSocket* caller) {
    caller->setReadBufferSize(maxLineBytes);
    connect(caller, &QLocalSocket::readyRead, this, [this, caller] { hear(caller); });
    connect(caller, &QLocalSocket::disconnected, caller, &QObject::deleteLater);
    QTimer::singleShot(patience, caller, &QObject::deleteLater);
    hear(caller);
}

void SingleInstance::hear(QLocalSocket* caller) {
    if (!caller->canReadLine()) {
        if (caller->bytesAvailable() >= maxLineBytes) {
            caller->abort();
        }
        return;
    }
    const QByteArray line = caller->readLine(maxLineBytes).chopped(1);
    if (!line.startsWith(request) || !isPrintable(line)) {
        caller->abort();
        return;
    }
    ActivationToken::put(QString::fromLatin1(line.mid(sizeof request - 1)));
    caller->write(&answer, 1);
    caller->flush();  // before the signal, after which the program may be busy or at its end
    caller->disconnectFromServer();
    emit activationRequested();
}
