// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
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

/** Never null. */
inline const std::shared_ptr<const ApplicationIdentity>& unknownApplication() {
    static const auto unknown = std::make_shared<const ApplicationIdentity>(
        ApplicationIdentity{unknownApplicationPath, "Unknown application"});
    return unknown;
}

}  // namespace service
