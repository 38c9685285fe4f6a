// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "service/system/FileDescriptor.h"

namespace service {

/**
 * Opens the root of the control groups (version 2), which every process on the machine belongs to. Invalid
 * with the reason in `error` when it is not to be seen, as inside of most containers: a group below it has
 * only its own.
 */
FileDescriptor openRootControlGroup(std::string& error);

}  // namespace service
