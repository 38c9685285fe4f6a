// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace service {

/** The part of a desktop entry (a *.desktop file) that tells what a program is called. */
struct DesktopEntry {
    std::string name;                  ///< in the language asked for, where the entry has it
    std::vector<std::string> command;  ///< the program, then its arguments; without "env" and what it sets
    std::string tryProgram;            ///< the program without which the entry is to be ignored; mostly empty
    std::string flatpak;               ///< id of the Flatpak application; mostly empty
    std::string snap;                  ///< name of the Snap; mostly empty

    /**
     * Nothing when the file cannot be read, or is no application with a name that a menu shows: names that
     * nobody ever reads name nothing.
     *
     * @param languages as `languagesOf` tells them
     */
    static std::optional<DesktopEntry> read(const std::filesystem::path& file,
                                            const std::vector<std::string>& languages);
};

/** What to look for in "Name[...]", best first, for a locale such as "de_DE.UTF-8@euro"; nothing for "C". */
std::vector<std::string> languagesOf(const std::string& locale);

}  // namespace service
