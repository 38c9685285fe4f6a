// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLocalServer>
#include <QObject>
#include <QString>

class QLocalSocket;

/**
 * Lets a program run once in a user's session. The first start holds a file lock and listens on a local socket; a
 * later one asks it to come forward, which is all that goes over the socket, and should then end. Both files lie
 * in the user's runtime directory, readable by that user only, and are named for the display, so that two users or
 * two displays do not meet. The kernel drops the lock with its process, whichever way that ends.
 *
 * A first start that does not answer within two seconds is still the first: better no second window than two over
 * one history. The request stays in its socket and is obeyed when it wakes. Where the runtime directory cannot be
 * written to, every start is the first. Main thread, while there is an application object.
 */
class SingleInstance : public QObject {
    Q_OBJECT

  public:
    /** `name` is that of the program, fit for a file name. Takes two seconds at most, most often none. */
    explicit SingleInstance(const QString& name, QObject* parent = nullptr);
    ~SingleInstance() override;

    bool isFirst() const { return m_IsFirst; }

  signals:
    /**
     * Another start has been made: bring the window to the front. Whatever lets it come forward has been put into
     * the environment, where the platform looks for it. Never emitted before the event loop runs.
     */
    void activationRequested();

  private:
    bool takeLock();
    void listen();
    void askFirst();
    void greet(QLocalSocket* caller);
    void hear(QLocalSocket* caller);

    const QString m_Path;  // without its suffix; empty where there is no runtime directory
    QLocalServer m_Server;
    int m_Lock = -1;
    bool m_IsFirst = false;
};
