// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace config {

constexpr std::size_t maxFileBytes = std::size_t{4} << 20U;

/**
 * A regular file's bytes; nothing when it cannot be read. Of a file above `maxFileBytes` one byte more than that,
 * so that nobody takes it for whole.
 */
std::optional<std::string> readFile(const std::string& path);

/**
 * Gives a file new contents, so that whoever looks, also after a crash, finds the old ones or the new ones whole:
 * a new file beside the old one, written and flushed, takes its name. It takes its mode as well, and its owner and
 * group where the system lets us; a file that was not there gets what the umask leaves of rw-rw-rw-.
 *
 * A symbolic link stays, and the file that it names is replaced; but only a link of this process's user or of root
 * is followed, for in a folder that others may write to, a link of theirs could name any file of ours.
 *
 * False, with the old file as it was, when any of this fails.
 */
bool replaceFile(const std::string& path, std::string_view contents);

/** Whether `replaceFile` would get as far as the disk's space lets it. The answer can be out of date at once. */
bool canReplaceFile(const std::string& path);

}  // namespace config
