// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

#include "service/capture/bpf/BpfPrograms.h"
#include "service/naming/ApplicationNames.h"
#include "service/traffic/ApplicationIdentity.h"

namespace service {

/** Tells which application an executable is that the programs in the kernel know by a number. One thread. */
class ExecutableNames {
  public:
    /** `programs` must outlive this. */
    explicit ExecutableNames(BpfPrograms& programs);

    /** Never null: what has no name in the kernel's table is the unknown application. */
    std::shared_ptr<const ApplicationIdentity> applicationOf(std::uint64_t number);

  private:
    /** Takes all names over before the kernel has no room for more; they are some 200 bytes each here. */
    void makeRoomInKernel();

    /** Where an executable lies; "" when the kernel has no such name. */
    std::string find(std::uint64_t number);
    const std::string& keep(std::uint64_t number, const executable& entry);

    BpfPrograms& m_Programs;
    ApplicationNames m_Names;
    std::unordered_map<std::uint64_t, std::string> m_Known;  ///< where they lie
};

}  // namespace service
