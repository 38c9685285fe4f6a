// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <sstream>
#include <string>

namespace service {

/** Writes one line to standard error in one piece; any thread. The system's journal adds the time. */
void writeLogLine(const std::string& text);

/** Joins its arguments to one log line: `logLine("store: ", path, " opened")`. */
template <class... Parts>
void logLine(const Parts&... parts) {
    std::ostringstream text;
    (text << ... << parts);
    writeLogLine(text.str());
}

}  // namespace service
