// SPDX-License-Identifier: GPL-3.0-or-later
// generator MODE [KEY=VALUE]...: moves bytes in one of many ways, and tells how many.

#include <arpa/inet.h>
#include <limits.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "tests/capture/generator/Generator.h"

namespace traffic {

namespace {

std::string program;

}  // namespace

Arguments::Arguments(int count, char** words) {
    for (int i = 0; i < count; ++i) {
        const std::string word = words[i];
        const std::size_t equals = word.find('=');
        set(word.substr(0, equals), equals == std::string::npos ? "1" : word.substr(equals + 1));
    }
}

std::string Arguments::text(const std::string& key, const std::string& otherwise) const {
    const auto found = m_Values.find(key);
    return found == m_Values.end() ? otherwise : found->second;
}

std::uint64_t Arguments::number(const std::string& key, std::uint64_t otherwise) const {
    const auto found = m_Values.find(key);
    return found == m_Values.end() ? otherwise : std::strtoull(found->second.c_str(), nullptr, 10);
}

std::vector<std::string> Arguments::words() const {
    std::vector<std::string> words;
    for (const auto& [key, value] : m_Values) {
        words.push_back(key + "=" + value);
    }
    return words;
}

void rememberProgram() {
    std::array<char, PATH_MAX> path;
    const ssize_t length = check(::readlink("/proc/self/exe", path.data(), path.size()), "readlink");
    program.assign(path.data(), static_cast<std::size_t>(length));
}

const std::string& programPath() {
    return program;
}

void report(const Tally& tally) {
    const std::string line = "{\"program\": \"" + program +
                             "\", \"received\": " + std::to_string(tally.received) +
                             ", \"sent\": " + std::to_string(tally.sent) + "}\n";
    check(::write(STDOUT_FILENO, line.data(), line.size()), "write");
}

void announceReady() {
    check(::write(STDOUT_FILENO, "ready\n", 6), "write");
}

void waitForInput() {
    char c = 0;
    while (::read(STDIN_FILENO, &c, 1) == 1 && c != '\n') {
    }
}

void die(const std::string& what) {
    std::fprintf(stderr, "%s: %s: %s\n", program.c_str(), what.c_str(), std::strerror(errno));
    std::_Exit(1);
}

Endpoint Endpoint::of(const std::string& address, std::uint64_t port) {
    Endpoint endpoint;
    auto* const v4 = reinterpret_cast<sockaddr_in*>(&endpoint.storage);
    auto* const v6 = reinterpret_cast<sockaddr_in6*>(&endpoint.storage);
    if (::inet_pton(AF_INET, address.c_str(), &v4->sin_addr) == 1) {
        v4->sin_family = AF_INET;
        v4->sin_port = htons(static_cast<std::uint16_t>(port));
        endpoint.size = sizeof *v4;
    } else if (::inet_pton(AF_INET6, address.c_str(), &v6->sin6_addr) == 1) {
        v6->sin6_family = AF_INET6;
        v6->sin6_port = htons(static_cast<std::uint16_t>(port));
        endpoint.size = sizeof *v6;
    } else {
        die("no address: '" + address + "'");
    }
    return endpoint;
}

Endpoint Endpoint::of(const Arguments& arguments) {
    return of(arguments.text("address"), arguments.number("port"));
}

void setOption(int socket, int level, int name, int value, const char* what) {
    check(::setsockopt(socket, level, name, &value, sizeof value), what);
}

void become(const std::string& path, const std::vector<std::string>& words) {
    std::vector<char*> pointers{const_cast<char*>(path.c_str())};
    for (const std::string& word : words) {
        pointers.push_back(const_cast<char*>(word.c_str()));
    }
    pointers.push_back(nullptr);
    ::execv(path.c_str(), pointers.data());
    die("exec " + path);
}

}  // namespace traffic

int main(int count, char** words) {
    using namespace traffic;
    rememberProgram();
    ::signal(SIGPIPE, SIG_IGN);
    const std::map<std::string_view, void (*)(const Arguments&)> modes{
        {"tcp-server", tcpServer},
        {"tcp-client", tcpClient},
        {"tcp-handler", tcpHandler},
        {"tcp-receiver", tcpReceiver},
        {"tcp-passer", tcpPasser},
        {"udp-server", udpServer},
        {"udp-client", udpClient},
        {"storm", storm},
        {"container", container},
        {"ping", ping},
        {"packet-sender", packetSender},
        {"syn-flood", synFlood},
        {"tcp-bystander", tcpBystander},
        {"port-scan", portScan},
        {"tunnel", tunnel},
    };
    const auto mode = modes.find(count < 2 ? "" : words[1]);
    if (mode == modes.end()) {
        die("no such mode");
    }
    mode->second(Arguments(count - 2, words + 2));
}
