// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/capture/generator/Ring.h"

#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>

#include "tests/capture/generator/Generator.h"

namespace traffic {

namespace {

std::atomic_ref<unsigned> counter(char* rings, unsigned offset) {
    return std::atomic_ref(*reinterpret_cast<unsigned*>(rings + offset));
}

}  // namespace

Ring::Ring(const std::string& method)
    : m_ByWorkers(method == "uring-async"), m_IsPolled(method == "uring-polled") {
    m_Layout.flags = m_IsPolled ? IORING_SETUP_SQPOLL : 0;
    m_Descriptor = static_cast<int>(check(::syscall(SYS_io_uring_setup, 1, &m_Layout), "io_uring_setup"));
    m_RingsSize = std::max(m_Layout.sq_off.array + m_Layout.sq_entries * sizeof(unsigned),
                           m_Layout.cq_off.cqes + m_Layout.cq_entries * sizeof(io_uring_cqe));
    const auto map = [this](std::size_t size, off_t offset) {
        void* const memory =
            ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_POPULATE, m_Descriptor, offset);
        return memory == MAP_FAILED ? (die("mmap of io_uring"), nullptr) : memory;
    };
    m_Rings = static_cast<char*>(map(m_RingsSize, IORING_OFF_SQ_RING));
    m_Request = static_cast<io_uring_sqe*>(map(m_Layout.sq_entries * sizeof(io_uring_sqe), IORING_OFF_SQES));
}

Ring::~Ring() {
    ::munmap(m_Request, m_Layout.sq_entries * sizeof(io_uring_sqe));
    ::munmap(m_Rings, m_RingsSize);
    ::close(m_Descriptor);
}

ssize_t Ring::send(int socket, const void* data, std::size_t size) {
    return run(IORING_OP_SEND, socket, data, size);
}

ssize_t Ring::receive(int socket, void* data, std::size_t size) {
    return run(IORING_OP_RECV, socket, data, size);
}

ssize_t Ring::run(unsigned char operation, int socket, const void* data, std::size_t size) {
    *m_Request = {};
    m_Request->opcode = operation;
    m_Request->flags = m_ByWorkers ? IOSQE_ASYNC : 0;
    m_Request->fd = socket;
    m_Request->addr = reinterpret_cast<std::uintptr_t>(data);
    m_Request->len = static_cast<std::uint32_t>(size);
    counter(m_Rings, m_Layout.sq_off.array) = 0;
    counter(m_Rings, m_Layout.sq_off.tail).fetch_add(1, std::memory_order_release);
    const unsigned flags = IORING_ENTER_GETEVENTS | (m_IsPolled ? IORING_ENTER_SQ_WAKEUP : 0);
    check(::syscall(SYS_io_uring_enter, m_Descriptor, 1, 1, flags, nullptr, 0), "io_uring_enter");
    const unsigned head = counter(m_Rings, m_Layout.cq_off.head).load(std::memory_order_acquire);
    const unsigned mask = counter(m_Rings, m_Layout.cq_off.ring_mask);
    const int result = reinterpret_cast<const io_uring_cqe*>(m_Rings + m_Layout.cq_off.cqes)[head & mask].res;
    counter(m_Rings, m_Layout.cq_off.head).store(head + 1, std::memory_order_release);
    errno = result < 0 ? -result : 0;
    return result < 0 ? -1 : result;
}

}  // namespace traffic
