// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace Net {

/** Address families by their BSD numbers, as `socket` takes them. */
enum AddressFamily : int { Local = 1, IPv4 = 2 };

}  // namespace Net
