// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/capture/bpf/KernelFeatures.h"

#include <bpf/btf.h>

#include <memory>
#include <string>

namespace service {

namespace {

/** How many arguments a tracepoint passes; -1 when there is none of that name. */
int tracepointArguments(const btf* types, const std::string& name) {
    const int id = btf__find_by_name_kind(types, ("btf_trace_" + name).c_str(), BTF_KIND_TYPEDEF);
    if (id < 0) {
        return -1;
    }
    const btf_type* const pointer = btf__type_by_id(types, btf__type_by_id(types, id)->type);
    return btf_vlen(btf__type_by_id(types, pointer->type)) - 1;  // the first one is not the tracepoint's own
}

}  // namespace

KernelFeatures KernelFeatures::ofThisKernel() {
    const std::unique_ptr<btf, decltype(&btf__free)> types(btf__load_vmlinux_btf(), btf__free);
    if (!types) {
        return {};
    }
    constexpr int withReceiver = 4;
    return {.tellsTransfers = tracepointArguments(types.get(), "sock_send_length") >= 0,
            .tellsReceiver = tracepointArguments(types.get(), "kfree_skb") == withReceiver};
}

}  // namespace service
