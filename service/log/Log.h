// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <sstream>
#include <string>
#include <string_view>

namespace service {

/**
 * Writes one line to standard error in one piece, cut at 4 KiB; any thread. Never waits: a line for which
 * there is no room is lost, and the next one that is written says so. The system's journal adds the time.
 */
void writeLogLine(std::string_view text);

/** As `writeLogLine`, but only the first five lines of a second; the others are counted. */
void writePeerLogLine(std::string_view text);

/** Says how many of the peers' lines were left out once their second is over; to be called now and then. */
void logLeftOutLines();

/** Its arguments as one text. */
template <class... Parts>
std::string joined(const Parts&... parts) {
    std::ostringstream text;
    (text << ... << parts);
    return text.str();
}

/** Joins its arguments to one log line: `logLine("store: ", path, " opened")`. */
template <class... Parts>
void logLine(const Parts&... parts) {
    writeLogLine(joined(parts...));
}

/** A line that a peer can cause as often as it likes: such lines are few a second. */
template <class... Parts>
void logPeerLine(const Parts&... parts) {
    writePeerLogLine(joined(parts...));
}

}  // namespace service
