// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string>

namespace service {

/**
 * Tells which container a process is in, by its control group, whose name the engine chose. What is inside of a
 * container is not asked: it could claim any name.
 */
class Containers {
  public:
    /**
     * @param processes "/proc"
     * @param root the folder in which the engines' "var/lib/..." lie, "/"
     */
    Containers(std::filesystem::path processes, std::filesystem::path root);

    /**
     * What the user calls the container (Docker, Podman, LXC, LXD, systemd-nspawn), "POD_NAMESPACE_CONTAINER" in
     * Kubernetes, the first twelve digits of the id where no engine's file tells a name. Nothing for a process
     * that has ended or is in none.
     */
    std::optional<std::string> nameFor(pid_t process) const;

  private:
    /** @param group the path of the control group, which tells whose engine made it */
    std::string nameOfId(const std::string& id, const std::string& group) const;

    const std::filesystem::path m_Processes;
    const std::filesystem::path m_Root;
};

}  // namespace service
