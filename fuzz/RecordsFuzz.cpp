// SPDX-License-Identifier: GPL-3.0-or-later
// The front end reads whatever a daemon sends: every record from any bytes.

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "protocol/DaemonApplicationInfo.h"
#include "protocol/DaemonConnectionInfo.h"
#include "protocol/DaemonTotalStatisticInfo.h"

namespace {

/** What was read must come back when it is written and read again. */
template <class Record>
void roundTrip(BinarySerializer& in) {
    Record record;
    if (!record.UnserializeFrom(in)) {
        return;
    }
    BinarySerializer again;
    Record copy;
    if (!record.SerializeTo(again) || !copy.UnserializeFrom(again) || again.GetCurrentDataSize() != 0 ||
        Record::Fields(record) != Record::Fields(copy)) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) {
        return 0;
    }
    BinarySerializer in;
    in.WriteData(data + 1, static_cast<int>(size - 1));
    switch (data[0] % 3) {
        case 0:
            roundTrip<DaemonApplicationInfo>(in);
            break;
        case 1:
            roundTrip<DaemonConnectionInfo>(in);
            break;
        default:
            roundTrip<DaemonTotalStatisticInfo>(in);
            break;
    }
    return 0;
}
