// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

class ApplicationInfo;

/** Receiver of the daemon's events, on the main thread. A subclass implements what it wants. */
class DaemonConnectionDelegate {
  public:
    virtual ~DaemonConnectionDelegate() = default;

    /** The daemon saw an application for the first time; null when it no longer knows it. */
    virtual void newApplicationAdded(const std::shared_ptr<const ApplicationInfo>& /*application*/) {}

    virtual void daemonStartCleanDataBase() {}
    virtual void daemonEndCleanDataBase() {}
};
