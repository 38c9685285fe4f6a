// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace Net {

/** Socket types by their BSD numbers, as `socket` takes them. */
enum SocketType : int { Stream = 1 };

}  // namespace Net
