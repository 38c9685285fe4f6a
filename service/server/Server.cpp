// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/server/Server.h"

#include <sys/epoll.h>

#include <algorithm>
#include <utility>

#include "service/log/Log.h"

namespace service {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds tickInterval{1000};
constexpr milliseconds drainCheckInterval{5};
constexpr int maxArrivalsPerTurn = 64;

}  // namespace

Server::Server(EventLoop& loop, Listener listener, SessionContext context, ServerLimits limits)
    : m_Loop(loop),
      m_Listener(std::move(listener)),
      m_Context(std::move(context)),
      m_Limits(limits),
      m_Timer(loop, [this] { tick(); }) {
    m_ListenerWatch =
        loop.watch(m_Listener->descriptor(), EPOLLIN, [this](std::uint32_t) { acceptClients(); });
    m_Timer.start(std::min(tickInterval, limits.patience));
}

Server::~Server() {
    m_Loop.unwatch(m_ListenerWatch);
    for (const auto& [number, client] : m_Clients) {
        m_Loop.unwatch(client.watch);
    }
}

void Server::acceptClients() {
    FileDescriptor socket;
    for (int i = 0; m_Listener && i < maxArrivalsPerTurn; ++i) {
        switch (m_Listener->accept(socket)) {
            case Listener::Arrival::Client:
                addClient(std::move(socket));
                break;
            case Listener::Arrival::NoDescriptor:
                pauseAccepting();
                return;
            case Listener::Arrival::None:
                return;
        }
    }
}

/** Without descriptors the listener stays ready for ever: look away until the next tick instead of spinning.
 */
void Server::pauseAccepting() {
    if (!m_IsExhausted) {
        logPeerLine("out of file descriptors: new clients have to wait");
    }
    m_IsExhausted = true;
    m_Loop.setEvents(m_ListenerWatch, 0);
}

void Server::addClient(FileDescriptor socket) {
    if (m_Clients.size() >= m_Limits.clients) {
        if (!m_IsTurningAway) {
            logPeerLine(m_Clients.size(), " clients are connected: further ones are turned away");
        }
        m_IsTurningAway = true;
        return;
    }
    const std::uint64_t number = ++m_LastNumber;
    const auto wake = [this, &loop = m_Loop, number] { loop.post([this, number] { serveAgain(number); }); };
    Client client{.connection =
                      std::make_unique<ClientConnection>(std::move(socket), m_Context, number, wake)};
    client.watch = m_Loop.watch(client.connection->descriptor(), EPOLLIN,
                                [this, number](std::uint32_t events) { clientIsReady(number, events); });
    if (client.watch == EventLoop::noWatch) {
        return;
    }
    m_Clients.emplace(number, std::move(client));
    m_IsTurningAway = false;
    m_IsExhausted = false;
}

void Server::clientIsReady(std::uint64_t number, std::uint32_t events) {
    const auto client = m_Clients.find(number);
    ClientConnection& connection = *client->second.connection;
    if ((events & (EPOLLERR | EPOLLHUP)) != 0) {
        connection.fail();
    } else if ((events & EPOLLIN) != 0) {
        connection.readAndServe();
    } else {
        connection.serve();
    }
    update(client);
}

/** Takes the client's leave, or makes sure that it is called again when there is something to do. */
void Server::update(Clients::iterator client) {
    const ClientConnection& connection = *client->second.connection;
    if (connection.isOver()) {
        m_Loop.unwatch(client->second.watch);
        m_Clients.erase(client);
        return;
    }
    m_Loop.setEvents(client->second.watch, (connection.wantsToRead() ? std::uint32_t{EPOLLIN} : 0) |
                                               (connection.wantsToWrite() ? std::uint32_t{EPOLLOUT} : 0));
    if (connection.wantsAnotherTurn() && !client->second.turnIsPosted) {
        client->second.turnIsPosted = true;
        m_Loop.post([this, number = client->first] { serveAgain(number); });
    }
}

void Server::serveAgain(std::uint64_t number) {
    const auto client = m_Clients.find(number);
    if (client == m_Clients.end()) {
        return;
    }
    client->second.turnIsPosted = false;
    client->second.connection->serve();
    update(client);
}

void Server::broadcast(DaemonEvent event, std::int32_t param) {
    acceptClients();  // who has connected by now is told, too
    for (const auto& [number, client] : m_Clients) {
        client.connection->putEvent(event, param);
    }
    m_Loop.post(
        [this] { serveAll(); });  // not now: the caller may be one of the clients, in the middle of a request
}

void Server::serveAll() {
    for (auto next = m_Clients.begin(); next != m_Clients.end();) {
        const auto client = next++;
        client->second.connection->serve();
        update(client);
    }
}

void Server::tick() {
    if (m_OnDrained) {
        checkDrained();
        return;
    }
    logLeftOutLines();
    m_Loop.setEvents(m_ListenerWatch, EPOLLIN);
    for (auto next = m_Clients.begin(); next != m_Clients.end();) {
        const auto client = next++;
        client->second.connection->checkProgress(m_Limits.patience);
        update(client);
    }
}

void Server::drain(std::function<void()> onDrained) {
    if (m_OnDrained) {
        return;
    }
    acceptClients();  // who has connected by now is answered, too
    m_Loop.unwatch(m_ListenerWatch);
    m_Listener.reset();
    m_OnDrained = std::move(onDrained);
    m_DrainEnd = steady_clock::now() + m_Limits.drainTime;
    m_Timer.start(drainCheckInterval);
}

void Server::checkDrained() {
    const bool settled = std::all_of(m_Clients.begin(), m_Clients.end(),
                                     [](const auto& entry) { return entry.second.connection->isSettled(); });
    if (settled || steady_clock::now() >= m_DrainEnd) {
        m_Timer.stop();
        m_OnDrained();
    }
}

}  // namespace service
