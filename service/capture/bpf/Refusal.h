// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace service {

/**
 * Why the kernel refused something about programs of ours, for a person, in one line: the privileges that this
 * process lacks, if that may be it.
 *
 * @param failure an errno
 * @param detail what more is known; mostly empty
 */
std::string whyRefused(int failure, const std::string& detail);

}  // namespace service
