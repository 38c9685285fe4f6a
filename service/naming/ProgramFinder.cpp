// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/naming/ProgramFinder.h"

#include <sys/stat.h>

#include <charconv>
#include <fstream>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

namespace service {

namespace {

namespace fs = std::filesystem;

/** How long processes are taken for alive: looking at all of them takes some 2 us each. */
constexpr std::chrono::seconds witnessesLast{1};

/** "/snap/NAME/REVISION/..." with "current", the link to the revision in use; any other path as it is. */
std::string withoutSnapRevision(const std::string& path) {
    constexpr std::string_view snaps = "/snap/";
    if (!path.starts_with(snaps)) {
        return path;
    }
    const std::size_t nameEnd = path.find('/', snaps.size());
    const std::size_t revisionEnd = nameEnd == std::string::npos ? nameEnd : path.find('/', nameEnd + 1);
    if (revisionEnd == std::string::npos) {
        return path;
    }
    return path.substr(0, nameEnd) + "/current" + path.substr(revisionEnd);
}

/** ".../app/ID/ARCHITECTURE/BRANCH/COMMIT/files" with "active", the link to the commit in use. */
fs::path withoutCommit(const fs::path& files) {
    return files.parent_path().parent_path() / "active" / files.filename();
}

}  // namespace

ProgramFinder::ProgramFinder(fs::path processes, fs::path root)
    : m_Processes(processes), m_Containers(std::move(processes), std::move(root)) {}

std::string ProgramFinder::find(const Program& program) {
    if (!program.isApart) {
        return withoutSnapRevision(program.path);
    }
    const pid_t witness = witnessFor(program);
    if (const std::optional<std::string> container = m_Containers.nameFor(witness)) {
        return *container + ":" + program.path;
    }
    if (isFileOf(program, program.path, witness)) {
        return withoutSnapRevision(program.path);
    }
    const std::string ofFlatpak = flatpakFile(program, witness);
    return ofFlatpak.empty() ? "(sandbox)" + program.path : ofFlatpak;
}

/** A process that is where the program runs; 0 when there is none any more. */
pid_t ProgramFinder::witnessFor(const Program& program) {
    const std::string wanted = "mnt:[" + std::to_string(program.mountNamespace) + "]";
    if (mountNamespaceOf(program.process) == wanted) {
        return program.process;
    }
    if (std::chrono::steady_clock::now() - m_WitnessesAge > witnessesLast) {
        lookForWitnesses();
    }
    const auto found = m_Witnesses.find(wanted);
    return found == m_Witnesses.end() ? 0 : found->second;
}

void ProgramFinder::lookForWitnesses() {
    m_Witnesses.clear();
    m_WitnessesAge = std::chrono::steady_clock::now();
    std::error_code failure;
    for (fs::directory_iterator entry(m_Processes, failure), end; !failure && entry != end;
         entry.increment(failure)) {
        const std::string name = entry->path().filename();
        pid_t process = 0;
        if (std::from_chars(name.data(), name.data() + name.size(), process).ec == std::errc()) {
            m_Witnesses.try_emplace(mountNamespaceOf(process), process);
        }
    }
}

/** "" when it has ended. */
std::string ProgramFinder::mountNamespaceOf(pid_t process) const {
    std::error_code none;
    return fs::read_symlink(m_Processes / std::to_string(process) / "ns/mnt", none);
}

/** Whether the file at a path on the machine is the one that the program runs. */
bool ProgramFinder::isFileOf(const Program& program, const fs::path& path, pid_t witness) const {
    struct stat there {};
    struct stat running {};
    if (::stat(path.c_str(), &there) != 0) {
        return false;
    }
    if (there.st_dev == program.device && there.st_ino == program.inode) {
        return true;
    }
    // File systems of several parts (Btrfs, overlays) tell users of other devices than the kernel itself.
    const fs::path executable = m_Processes / std::to_string(program.process) / "exe";
    return witness == program.process && ::stat(executable.c_str(), &running) == 0 &&
           there.st_dev == running.st_dev && there.st_ino == running.st_ino;
}

/** Where a file lies that a Flatpak sees below /app or, of its runtime, below /usr; "" for any other. */
std::string ProgramFinder::flatpakFile(const Program& program, pid_t witness) const {
    constexpr std::pair<std::string_view, std::string_view> places[] = {{"/app/", "app-path="},
                                                                        {"/usr/", "runtime-path="}};
    std::ifstream info(m_Processes / std::to_string(witness) / "root/.flatpak-info");
    for (std::string line; std::getline(info, line);) {
        for (const auto& [inside, key] : places) {
            if (!program.path.starts_with(inside) || !line.starts_with(key)) {
                continue;
            }
            const fs::path files = line.substr(key.size());
            const std::string rest = program.path.substr(inside.size());
            return isFileOf(program, files / rest, witness) ? (withoutCommit(files) / rest).string() : "";
        }
    }
    return "";
}

}  // namespace service
