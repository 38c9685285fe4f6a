// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>

namespace service {

/** A new folder among the temporary files that is removed with all its content by the destructor. */
class TemporaryFolder {
  public:
    /** Null with the reason in `error`. */
    static std::unique_ptr<TemporaryFolder> make(std::string& error);
    ~TemporaryFolder();

    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& path() const { return m_Path; }

  private:
    explicit TemporaryFolder(std::string path);

    const std::string m_Path;
};

}  // namespace service
