// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <netinet/in.h>
#include <sys/socket.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

/** What the traffic generators share. A failure of the system ends the program with a message and status 1. */
namespace traffic {

/** The "key=value" words of the command line. */
class Arguments {
  public:
    Arguments(int count, char** words);

    std::string text(const std::string& key, const std::string& otherwise = "") const;
    std::uint64_t number(const std::string& key, std::uint64_t otherwise = 0) const;

    /** As words again, for a program that is started with the same ones. */
    std::vector<std::string> words() const;
    void set(const std::string& key, const std::string& value) { m_Values[key] = value; }

  private:
    std::map<std::string, std::string> m_Values;
};

/** The bytes that a program gave to its sockets and got from them, headers of every kind excluded. */
struct Tally {
    std::uint64_t received = 0;
    std::uint64_t sent = 0;

    Tally& operator+=(const Tally& other) {
        received += other.received;
        sent += other.sent;
        return *this;
    }
};

/** Remembers the executable's path, which may be gone when it is told. Called first. */
void rememberProgram();
const std::string& programPath();

/** One line to standard output, in one piece: the program and what it moved. */
void report(const Tally& tally);

/** Tells whoever started this program that it may go on. */
void announceReady();

/** Until a line or the end of standard input. */
void waitForInput();

[[noreturn]] void die(const std::string& what);

/** `result`, unless it is negative: then the errno's text is the end. */
template <class Result>
Result check(Result result, const char* what) {
    if (result < 0) {
        die(what);
    }
    return result;
}

/** An address and port, of IPv4 or IPv6. */
struct Endpoint {
    sockaddr_storage storage{};
    socklen_t size = sizeof storage;

    static Endpoint of(const std::string& address, std::uint64_t port);
    static Endpoint of(const Arguments& arguments);  ///< "address" and "port"

    int family() const { return storage.ss_family; }
    sockaddr* get() { return reinterpret_cast<sockaddr*>(&storage); }
    const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&storage); }
};

void setOption(int socket, int level, int name, int value, const char* what);

/** Starts `program` with `words`, the first of which is the mode; does not return. */
[[noreturn]] void become(const std::string& program, const std::vector<std::string>& words);

// The modes.
void tcpServer(const Arguments& arguments);
void tcpClient(const Arguments& arguments);
void tcpHandler(const Arguments& arguments);
void tcpReceiver(const Arguments& arguments);
void tcpBystander(const Arguments& arguments);
void tcpPasser(const Arguments& arguments);
void udpServer(const Arguments& arguments);
void udpClient(const Arguments& arguments);
void container(const Arguments& arguments);
void storm(const Arguments& arguments);
void ping(const Arguments& arguments);
void packetSender(const Arguments& arguments);
void synFlood(const Arguments& arguments);
void portScan(const Arguments& arguments);
void tunnel(const Arguments& arguments);

}  // namespace traffic
