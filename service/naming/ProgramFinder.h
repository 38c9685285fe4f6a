// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <unordered_map>

#include "service/naming/Containers.h"
#include "service/naming/Program.h"

namespace service {

/**
 * Finds where on the machine the file of a program lies. One thread at a time.
 *
 * What a program with another root says of its path proves nothing: anybody may make a root in which anything is
 * called /usr/bin/firefox. So its file has to be the one that lies there on the machine too, or to be the file of
 * its Flatpak; the others are told apart by their containers, and what is in none is a sandbox's.
 */
class ProgramFinder {
  public:
    /** The parameters are those of `Containers`. */
    ProgramFinder(std::filesystem::path processes, std::filesystem::path root);

    /**
     * The path of a program's file on the machine, "CONTAINER:PATH" for one in a container, "(sandbox)PATH" for
     * one in another place apart: the last two are paths as seen from there. The packages that carry a version in
     * their paths lose it ("/snap/mail/current/...", ".../stable/active/..."), lest an update make another
     * application of a program.
     */
    std::string find(const Program& program);

  private:
    pid_t witnessFor(const Program& program);
    std::string mountNamespaceOf(pid_t process) const;
    bool isFileOf(const Program& program, const std::filesystem::path& path, pid_t witness) const;
    std::string flatpakFile(const Program& program, pid_t witness) const;
    void lookForWitnesses();

    const std::filesystem::path m_Processes;
    const Containers m_Containers;
    std::unordered_map<std::string, pid_t> m_Witnesses;    ///< a process for each mount namespace
    std::chrono::steady_clock::time_point m_WitnessesAge;  ///< when they were looked for
};

}  // namespace service
