// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/status/StatusAddress.h"

#include <fcntl.h>
#include <sys/socket.h>

#include <cerrno>
#include <filesystem>

namespace service {

StatusAddress::StatusAddress(const std::string& databasePath) {
    const std::filesystem::path file(databasePath);
    const std::filesystem::path folder = file.has_parent_path() ? file.parent_path() : ".";
    FileDescriptor opened(::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    const std::string path =
        "/proc/self/fd/" + std::to_string(opened.get()) + "/" + file.filename().string() + ".status";
    if (!opened.isValid()) {
        return;
    }
    if (path.size() >= sizeof(m_Address.sun_path)) {
        errno = ENAMETOOLONG;
        return;
    }
    m_Address.sun_family = AF_UNIX;
    path.copy(m_Address.sun_path, path.size());
    m_Folder = std::move(opened);
}

void StatusAddress::unlink() const {
    ::unlink(m_Address.sun_path);
}

}  // namespace service
