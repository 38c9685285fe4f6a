// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/store/file/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace service {

FileLock::FileLock(const std::string& path)
    : m_Path(path),
      m_IsNew(::access(path.c_str(), F_OK) != 0),
      m_Descriptor(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
    if (m_Descriptor < 0) {
        m_Error = "cannot open " + path + ": " + std::generic_category().message(errno);
    } else if (::flock(m_Descriptor, LOCK_EX | LOCK_NB) != 0) {
        m_Error = errno == EWOULDBLOCK
                      ? path + " is held by another process"
                      : "cannot lock " + path + ": " + std::generic_category().message(errno);
    }
}

void FileLock::removeIfNew() const {
    if (m_IsNew && isHeld()) {
        ::unlink(m_Path.c_str());
    }
}

FileLock::~FileLock() {
    if (m_Descriptor >= 0) {
        ::close(m_Descriptor);
    }
}

}  // namespace service
