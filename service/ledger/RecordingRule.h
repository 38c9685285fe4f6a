// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <unordered_set>

namespace service {

/** Which applications are recorded. A value without a tie to the file system. */
class RecordingRule {
  public:
    /** In the settings file: never renumber. */
    enum class Mode { All = 0, OnlyListed = 1, AllButListed = 2 };

    explicit RecordingRule(Mode mode = Mode::All) : m_Mode(mode) {}

    /**
     * Lists an application: that with this executable, each with its executable inside of this bundle, or the
     * kernel by its bundle path. `resolvedPath` is where the symbolic links in `path` lead, `path` where none is.
     */
    void list(const std::string& path, const std::string& resolvedPath);

    /** @param executablePath empty for the kernel */
    bool records(const std::string& executablePath) const;

  private:
    bool isListed(const std::string& executablePath) const;

    Mode m_Mode;
    std::unordered_set<std::string> m_Paths;    ///< as listed and as resolved
    std::unordered_set<std::string> m_Bundles;  ///< those among them that are, or were listed as, bundles
};

}  // namespace service
