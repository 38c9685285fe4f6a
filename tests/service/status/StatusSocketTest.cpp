// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/status/StatusSocket.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <thread>

#include "service/status/StatusQuery.h"
#include "service/status/StatusText.h"

namespace service {
namespace {

/** Longer than a local socket's name may be. */
std::string makeLongFolder() {
    std::string folder = ::testing::TempDir() + "status_socket_test_" + std::to_string(::getpid()) + "/";
    folder += std::string(150, 'd');
    std::filesystem::create_directories(folder);
    return folder;
}

TEST(StatusSocket, AnswersAsLongAsTheDaemonLives) {
    const std::string folder = makeLongFolder();
    const std::string database = folder + "/history.sqlite";
    std::string error;
    EXPECT_EQ(queryStatus(database, error), std::nullopt);
    EXPECT_NE(error.find(database), std::string::npos) << error;

    EXPECT_EQ(queryStatus(folder + "/" + std::string(100, 'f'), error), std::nullopt);
    EXPECT_TRUE(error.ends_with(std::strerror(ENAMETOOLONG))) << error;

    const std::string text = statusText({{"source", "bpf"}, {"lost", "0 bytes"}});
    EXPECT_EQ(text, "source: bpf\nlost:   0 bytes\n");
    EventLoop loop;
    auto socket = StatusSocket::open(
        loop, database, [&text] { return text; }, error);
    ASSERT_NE(socket, nullptr) << error;
    std::thread asker([&] {
        std::string ignored;
        EXPECT_EQ(queryStatus(database, ignored), text);
        EXPECT_EQ(queryStatus(database, ignored), text);
        loop.post([&loop] { loop.stop(); });
    });
    loop.run();
    asker.join();

    // What a daemon that was killed left behind is in nobody's way.
    auto next = StatusSocket::open(
        loop, database, [&text] { return text; }, error);
    EXPECT_NE(next, nullptr) << error;
    next.reset();
    socket.reset();
    EXPECT_EQ(queryStatus(database, error), std::nullopt);
    std::filesystem::remove_all(std::filesystem::path(folder).parent_path());
}

}  // namespace
}  // namespace service
