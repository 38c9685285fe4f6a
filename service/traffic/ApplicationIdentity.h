// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace service {

/** Who moved bytes. Two identities are the same application exactly when their paths are equal. */
struct ApplicationIdentity {
    std::string path;  ///< full path of the executable, UTF-8; empty for the kernel itself
    std::string name;  ///< what a person calls it
};

/** Path of the application that stands for traffic whose owner could not be found out. It is never guessed.
 */
inline constexpr char unknownApplicationPath[] = "(unknown)";

}  // namespace service
