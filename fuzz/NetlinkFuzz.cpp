// SPDX-License-Identifier: GPL-3.0-or-later
// The capture reads whatever the kernel answers, also what a later kernel may.

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "service/capture/InetDiag.h"
#include "service/capture/NetlinkMessage.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::span<const std::byte> rest(reinterpret_cast<const std::byte*>(data), size);
    while (const auto message = service::takeNetlinkMessage(rest)) {
        service::netlinkErrorOf(*message);
        if (const auto report = service::inetdiag::decode(message->payload)) {
            if (report->socketDomain == 0) {
                std::abort();
            }
        }
    }
    return 0;
}
