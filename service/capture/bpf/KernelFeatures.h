// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace service {

/** What a kernel tells of, by the tracepoints that it has; without either the capture works, and misses something. */
struct KernelFeatures {
    bool tellsTransfers = true;  ///< who reads and writes; since Linux 6.3
    bool tellsReceiver = true;   ///< for which socket a packet was that is dropped; since Linux 6.11

    /** Looks at the types of the kernel that runs. Where it does not tell them nothing loads anyway. */
    static KernelFeatures ofThisKernel();
};

}  // namespace service
