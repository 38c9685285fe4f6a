// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/log/Log.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <climits>
#include <cstddef>
#include <mutex>
#include <utility>

namespace service {

namespace {

using std::chrono::steady_clock;

constexpr int maxPeerLines = 5;  // per second
constexpr std::string_view prefix = "nevtora-daemon: ";

/** The one log of the process. */
class Log {
  public:
    void write(std::string_view text) {
        const std::lock_guard lock(m_Mutex);
        put(text);
    }

    void writePeerLine(std::string_view text) {
        const std::lock_guard lock(m_Mutex);
        tellOfLeftOut();
        if (m_PeerLines < maxPeerLines) {
            ++m_PeerLines;
            put(text);
        } else {
            ++m_LeftOut;
        }
    }

    void writeLeftOut() {
        const std::lock_guard lock(m_Mutex);
        tellOfLeftOut();
    }

  private:
    /** Once a second is over: says what it left out, and begins the next. */
    void tellOfLeftOut() {
        const steady_clock::time_point now = steady_clock::now();
        if (now - m_SecondBegin < std::chrono::seconds{1}) {
            return;
        }
        m_SecondBegin = now;
        m_PeerLines = 0;
        if (m_LeftOut > 0) {
            put("so many more lines about clients were left out: " + std::to_string(m_LeftOut));
        }
        m_LeftOut = 0;
    }

    void put(std::string_view text) {
        if (wouldBlock()) {
            ++m_Lost;
            return;
        }
        std::string lines;
        if (m_Lost > 0) {
            lines.append(prefix).append("so many lines before this one found no room: ");
            lines.append(std::to_string(std::exchange(m_Lost, 0))).append("\n");
        }
        lines.append(prefix).append(text);
        lines.resize(std::min<std::size_t>(lines.size(), PIPE_BUF - 1));  // a pipe takes no more in one piece
        lines += '\n';
        [[maybe_unused]] const auto written = ::write(STDERR_FILENO, lines.data(), lines.size());
    }

    /** Whether nobody has read standard error for so long that it is full; waiting would stop the daemon. */
    static bool wouldBlock() {
        pollfd standardError{.fd = STDERR_FILENO, .events = POLLOUT, .revents = 0};
        return ::poll(&standardError, 1, 0) == 0;
    }

    // All guarded by m_Mutex.
    std::mutex m_Mutex;
    std::size_t m_Lost = 0;  ///< lines for which there was no room
    steady_clock::time_point m_SecondBegin;
    int m_PeerLines = 0;        ///< in this second
    std::size_t m_LeftOut = 0;  ///< peer lines beyond those
};

Log& theLog() {
    static Log log;
    return log;
}

}  // namespace

void writeLogLine(std::string_view text) {
    theLog().write(text);
}

void writePeerLogLine(std::string_view text) {
    theLog().writePeerLine(text);
}

void logLeftOutLines() {
    theLog().writeLeftOut();
}

}  // namespace service
