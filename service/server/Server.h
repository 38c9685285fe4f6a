// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>

#include "service/server/ClientConnection.h"
#include "service/server/EventLoop.h"
#include "service/server/Listener.h"
#include "service/server/SessionContext.h"
#include "service/server/Timer.h"

namespace service {

/** How much a server puts up with. */
struct ServerLimits {
    std::size_t clients = 256;                  ///< further ones are turned away
    std::chrono::milliseconds patience{30000};  ///< for a client that does not read what waits for it
    std::chrono::milliseconds drainTime{1000};  ///< for the last answers when the server is told to stop
};

/** Serves many clients on one event loop. Everything runs on the loop's thread. */
class Server {
  public:
    /** `loop` and what `context` refers to must outlive the server, which must exist while the loop runs. */
    Server(EventLoop& loop, Listener listener, SessionContext context, ServerLimits limits = {});
    ~Server();

    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    std::size_t clientCount() const { return m_Clients.size(); }

    /** Sends an event to every client, behind the answers that wait for it already. */
    void broadcast(DaemonEvent event, std::int32_t param = 0);

    /**
     * Takes no more clients, answers what has arrived and calls `onDrained` once all answers have reached the
     * clients' systems, or when the time for that is over. The destructor then resets the connections.
     */
    void drain(std::function<void()> onDrained);

  private:
    struct Client {
        std::unique_ptr<ClientConnection> connection;
        EventLoop::WatchId watch = EventLoop::noWatch;
        bool turnIsPosted = false;
    };
    using Clients = std::map<std::uint64_t, Client>;

    void acceptClients();
    void addClient(FileDescriptor socket);
    void clientIsReady(std::uint64_t number, std::uint32_t events);
    void serveAgain(std::uint64_t number);
    void serveAll();
    void update(Clients::iterator client);
    void pauseAccepting();
    void tick();
    void checkDrained();

    EventLoop& m_Loop;
    std::optional<Listener> m_Listener;  ///< nothing once the server drains
    EventLoop::WatchId m_ListenerWatch;
    SessionContext m_Context;
    ServerLimits m_Limits;
    Clients m_Clients;  ///< by number, in the order of arrival
    std::uint64_t m_LastNumber = 0;
    bool m_IsTurningAway = false;  ///< said in the log already
    bool m_IsExhausted = false;    ///< no descriptors: accepting rests until the next tick
    std::function<void()> m_OnDrained;
    std::chrono::steady_clock::time_point m_DrainEnd;
    Timer m_Timer;
};

}  // namespace service
