// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <linux/io_uring.h>
#include <sys/types.h>

#include <cstddef>
#include <string>

namespace traffic {

/** An io_uring with one request at a time, by the bare system calls. */
class Ring {
  public:
    /**
     * @param method "uring": the caller's own thread makes the calls; "uring-async": one of the kernel's workers;
     * "uring-polled": a thread that looks for requests by itself
     */
    explicit Ring(const std::string& method);
    ~Ring();

    Ring(const Ring&) = delete;
    Ring& operator=(const Ring&) = delete;

    /** As send(2) and recv(2). */
    ssize_t send(int socket, const void* data, std::size_t size);
    ssize_t receive(int socket, void* data, std::size_t size);

  private:
    ssize_t run(unsigned char operation, int socket, const void* data, std::size_t size);

    const bool m_ByWorkers;
    const bool m_IsPolled;
    int m_Descriptor;
    io_uring_params m_Layout{};
    char* m_Rings;  ///< both queues' heads and tails, and the completions
    std::size_t m_RingsSize;
    io_uring_sqe* m_Request;  ///< the only one
};

}  // namespace traffic
