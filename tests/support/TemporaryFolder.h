// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

/** A folder that goes with its contents. */
class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string pattern = std::filesystem::temp_directory_path() / "settings-test.XXXXXX";
        m_Path = mkdtemp(pattern.data());
    }
    ~TemporaryFolder() { std::filesystem::remove_all(m_Path); }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string path() const { return m_Path; }
    std::string file(const std::string& name) const { return m_Path / name; }

    /** The new file's path. */
    std::string write(const std::string& name, const std::string& contents) const {
        std::ofstream(file(name), std::ios::binary) << contents;
        return file(name);
    }
    std::string read(const std::string& name) const {
        std::ifstream in(file(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    std::size_t count() const {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(m_Path), {}));
    }

  private:
    std::filesystem::path m_Path;
};
