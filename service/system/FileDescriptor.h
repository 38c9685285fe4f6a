// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <unistd.h>

#include <utility>

namespace service {

/** Owns one descriptor and closes it. -1 means none. */
class FileDescriptor {
  public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor) : m_Descriptor(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept : m_Descriptor(std::exchange(other.m_Descriptor, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(m_Descriptor, other.m_Descriptor);
        return *this;
    }
    ~FileDescriptor() {
        if (m_Descriptor >= 0) {
            ::close(m_Descriptor);
        }
    }

    int get() const { return m_Descriptor; }
    bool isValid() const { return m_Descriptor >= 0; }

  private:
    int m_Descriptor = -1;
};

}  // namespace service
