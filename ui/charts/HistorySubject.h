// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <cstdint>

class ApplicationInfo;

/** Says in words whose traffic a window of the past shows. */
class HistorySubject {
  public:
    /** Null: all applications together. `socketProtocol`: 6 TCP, 17 UDP, others all. The application outlives this. */
    HistorySubject(const ApplicationInfo* application, std::int32_t socketProtocol)
        : m_Application(application), m_SocketProtocol(socketProtocol) {}

    /** "TCP Traffic", over the chart. */
    QString graphicTitle() const;

    /** Protocol and application. */
    QString text() const;

    /** Without the protocol. */
    QString windowTitle() const;

    /** What the window stands for among the files. */
    QString filePath() const;

  private:
    const ApplicationInfo* m_Application;
    std::int32_t m_SocketProtocol;
};
