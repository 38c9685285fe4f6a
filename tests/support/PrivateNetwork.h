// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/**
 * Moves the process, which must have one thread only, into a network of its own in which nothing but the
 * loopback interface is up: the link's port is fixed, and tests run side by side and beside a daemon. False
 * when the system does not allow it.
 */
bool enterPrivateNetwork();
