#include "link/server/service_thread.h"

#include "link/clock.h"
#include "link/link_log.h"
#include "link/result_codes.h"

#include <algorithm>
#include <utility>

namespace orvelle {

namespace {

constexpr int64_t kTickMs = 250;
constexpr int64_t kSilenceMs = 3000;
constexpr int64_t kProofMs = 3000;
constexpr int kMaxWaitMs = 100;
constexpr int kClosingWaitMs = 10;
constexpr int kMaxEvents = 128;
constexpr int kMaxUnproved = 64;
constexpr int kMaxMessagesInARow = 64;  // then the other sockets get their turn

}  // namespace

ServiceThread::ServiceThread(const LinkServerConfig& config, LinkServerListener* listener,
                             ClientTable& clients, PeerPorts& ports, ServerCounters& counters)
    : KvThread(QStringLiteral("link-server")),
      m_nominalBitsPerSecond(config.nominalBitsPerSecond),
      m_listener(listener),
      m_clients(clients),
      m_ports(ports),
      m_counters(counters) {}

void ServiceThread::watch(SRTSOCKET listener) {
    m_epoll.watch(listener, SRT_EPOLL_IN | SRT_EPOLL_ERR);
}

void ServiceThread::run() {
    while (!isStopped()) {
        waitAndServe();
        const int64_t nowMs = steadyMilliseconds();
        m_closing.collect(nowMs);
        if (nowMs >= m_nextTickMs) {
            tick(nowMs);
            m_nextTickMs = nowMs + kTickMs;
        }
    }
    sayGoodbyeToAll();
}

void ServiceThread::waitAndServe() {
    SRT_EPOLL_EVENT events[kMaxEvents];
    const int waitMs = m_closing.isEmpty() ? kMaxWaitMs : kClosingWaitMs;
    const int count = srt_epoll_uwait(m_epoll.id(), events, kMaxEvents, waitMs);
    for (int i = 0; i < std::min(count, kMaxEvents); ++i) {
        if (m_ports.isListener(events[i].fd))
            acceptAll(events[i].fd);
        else
            readAll(events[i].fd);
    }
}

void ServiceThread::acceptAll(SRTSOCKET listener) {
    for (;;) {
        SrtSocket socket(srt_accept(listener, nullptr, nullptr));
        if (!socket.isOpen())
            return;
        if (!m_ports.noteAccepted(listener, steadyMilliseconds())) {
            qCWarning(lcLink, "somebody opens sockets in a client's name, its port is closed");
            return;
        }
        dropOldestUnproved();
        const SRTSOCKET id = socket.id();
        m_epoll.watch(id, SRT_EPOLL_IN | SRT_EPOLL_ERR);
        Peer& peer = m_peers[id];
        peer.acceptedMs = steadyMilliseconds();
        peer.plain = std::move(socket);
    }
}

void ServiceThread::dropOldestUnproved() {
    int unproved = 0;
    auto oldest = m_peers.end();
    for (auto it = m_peers.begin(); it != m_peers.end(); ++it) {
        if (it->second.client)
            continue;
        ++unproved;
        if (oldest == m_peers.end() || it->second.acceptedMs < oldest->second.acceptedMs)
            oldest = it;
    }
    if (unproved >= kMaxUnproved)
        forget(oldest->first);
}

void ServiceThread::readAll(SRTSOCKET socket) {
    for (int i = 0; i < kMaxMessagesInARow; ++i) {
        if (!readOne(socket))
            return;
    }
}

// Whether there may be more to read.
bool ServiceThread::readOne(SRTSOCKET socket) {
    const auto found = m_peers.find(socket);
    if (found == m_peers.end()) {
        m_epoll.forget(socket);
        return false;
    }
    if (!found->second.sealed)
        return readOpen(socket, found->second);
    EncodedMessage bytes;
    switch (found->second.sealed->receive(&bytes)) {
        case SealedSocket::Received::Opened:
            break;
        case SealedSocket::Received::Nothing:
            return false;
        case SealedSocket::Received::Broken:
            socketBroke(socket);
            return false;
        case SealedSocket::Received::Forged:
            qCWarning(lcLink, "a message was changed on its way, its socket is closed");
            socketBroke(socket);
            return false;
    }
    const auto message = decodeMessage(bytes.bytes.data(), bytes.size);
    if (message)
        handle(socket, *message);
    else
        breakOff(socket, "malformed message");
    return true;
}

bool ServiceThread::readOpen(SRTSOCKET socket, Peer& peer) {
    uint8_t buffer[kMaxDatagramBytes];
    const int size = receiveBytes(socket, buffer, sizeof buffer);
    if (size == kNothingReceived)
        return false;
    const auto open = size < 0 ? std::nullopt : decodeOpen(buffer, static_cast<size_t>(size));
    if (open && answerOpen(peer, *open))
        return true;
    forget(socket);
    return false;
}

bool ServiceThread::answerOpen(Peer& peer, const OpenMessage& open) {
    const auto session = m_clients.sessionOf(open.token);
    if (!session || open.version != kProtocolVersion || !isAuthentic(open, session->secret))
        return false;
    const auto client = m_clients.findByToken(open.token);
    const bool isTaken = client && (open.purpose == SocketPurpose::Control ||
                                    client->channel(open.channel) != nullptr);
    const OpenedMessage opened =
        makeOpened(open, isTaken ? int{LINK_ER_CHANNEL_IN_USE} : 0, session->secret);
    const Bytes bytes = encodeOpened(opened);
    if (sendBytes(peer.plain.id(), bytes.data(), bytes.size()) != SendResult::Sent)
        return false;
    const SocketKeys keys = socketKeys(session->secret, open, opened);
    peer.open = open;
    peer.sealed =
        std::make_shared<SealedSocket>(std::move(peer.plain), keys.toClient, keys.toCamera);
    return true;
}

void ServiceThread::handle(SRTSOCKET socket, const Message& message) {
    const Peer& peer = m_peers[socket];
    const std::shared_ptr<ServerClient> client = peer.client;
    if (!client) {
        handleUnwelcomed(socket, message);
        return;
    }
    client->noteHeard(steadyMilliseconds());
    const bool isGoodbye = std::holds_alternative<ByeMessage>(message);
    if (peer.open.purpose == SocketPurpose::Media) {
        if (isGoodbye)
            closeMedia(socket);
        else
            breakOff(socket, "unexpected message on a media socket");
        return;
    }
    if (isGoodbye)
        dropClient(client, true);
    else if (std::holds_alternative<PingMessage>(message) ||
             std::holds_alternative<ControlMessage>(message))
        handleControl(*client, message);
    else
        breakOff(socket, "unexpected message");
}

void ServiceThread::handleControl(ServerClient& client, const Message& message) {
    if (const auto* ping = std::get_if<PingMessage>(&message)) {
        client.send(PongMessage{ping->token});
        return;
    }
    const auto& control = std::get<ControlMessage>(message);
    m_listener->controlReceived(client.id(), control.type, control.data, control.size);
}

void ServiceThread::handleUnwelcomed(SRTSOCKET socket, const Message& message) {
    if (std::holds_alternative<HelloMessage>(message))
        hello(socket);
    else
        breakOff(socket, "no HELLO");
}

// It was sealed, so the client holds the keys of this socket.
void ServiceThread::hello(SRTSOCKET socket) {
    Peer& peer = m_peers[socket];
    peer.saidHello = true;
    if (peer.open.purpose == SocketPurpose::Control)
        welcomeControl(socket);
    else
        welcomeMedia(socket);
}

// A session's sockets connect side by side, so its media may have said HELLO first.
void ServiceThread::welcomeControl(SRTSOCKET socket) {
    Peer& peer = m_peers[socket];
    const uint64_t token = peer.open.token;
    const auto client = m_clients.add(token, peer.sealed);
    if (!client) {
        refuse(socket, LINK_ER_CHANNEL_IN_USE);
        return;
    }
    peer.client = client;
    client->send(WelcomeMessage{});
    m_listener->clientConnected(client->id());
    std::vector<SRTSOCKET> waiting;
    for (const auto& [id, other] : m_peers) {
        if (!other.client && other.saidHello && other.open.token == token)
            waiting.push_back(id);
    }
    for (const SRTSOCKET id : waiting)
        welcomeMedia(id);
}

void ServiceThread::welcomeMedia(SRTSOCKET socket) {
    Peer& peer = m_peers[socket];
    const auto client = m_clients.findByToken(peer.open.token);
    if (!client)
        return;
    if (client->openChannel(peer.open.channel, peer.sealed, m_nominalBitsPerSecond, m_counters))
        peer.client = client;
    else
        refuse(socket, LINK_ER_CHANNEL_IN_USE);
}

void ServiceThread::refuse(SRTSOCKET socket, int reason) {
    const auto refused = m_peers[socket].sealed;
    m_epoll.forget(socket);
    m_peers.erase(socket);
    m_closing.sayGoodbye(refused, reason);
}

void ServiceThread::breakOff(SRTSOCKET socket, const char* why) {
    qCWarning(lcLink, "%s from a client, cut off", why);
    if (const std::shared_ptr<ServerClient> client = m_peers[socket].client)
        dropClient(client, false);
    else
        forget(socket);
}

void ServiceThread::socketBroke(SRTSOCKET socket) {
    const Peer& peer = m_peers[socket];
    if (!peer.client)
        forget(socket);
    else if (peer.open.purpose == SocketPurpose::Media)
        closeMedia(socket);
    else
        dropClient(std::shared_ptr<ServerClient>(peer.client), false);
}

void ServiceThread::closeMedia(SRTSOCKET socket) {
    const Peer& peer = m_peers[socket];
    const std::shared_ptr<ServerClient> client = peer.client;
    const int channel = peer.open.channel;
    forget(socket);
    client->closeChannel(channel);
}

void ServiceThread::forget(SRTSOCKET socket) {
    m_epoll.forget(socket);
    const auto found = m_peers.find(socket);
    if (found == m_peers.end())
        return;
    if (found->second.sealed)
        found->second.sealed->close();
    m_peers.erase(found);
}

void ServiceThread::dropClient(const std::shared_ptr<ServerClient>& client, bool orderly) {
    for (auto it = m_peers.begin(); it != m_peers.end();) {
        if (it->second.client == client) {
            m_epoll.forget(it->first);
            it = m_peers.erase(it);
        } else {
            ++it;
        }
    }
    m_clients.remove(client->id());
    for (const auto& socket : client->takeSockets())
        socket->close();
    m_listener->clientDisconnected(client->id(), orderly);
}

void ServiceThread::tick(int64_t nowMs) {
    for (const auto& client : m_clients.all()) {
        if (nowMs - client->lastHeardMs() >= kSilenceMs)
            dropClient(client, false);
    }
    std::vector<SRTSOCKET> silent;
    for (const auto& [socket, peer] : m_peers) {
        if (!peer.client && nowMs - peer.acceptedMs >= kProofMs)
            silent.push_back(socket);
    }
    for (const SRTSOCKET socket : silent)
        forget(socket);
    m_clients.expireReservations(nowMs);
    m_ports.closeUnused([this](const sockaddr_in& peer) { return m_clients.isPeerInUse(peer); });
}

void ServiceThread::sayGoodbyeToAll() {
    m_peers.clear();
    const auto clients = m_clients.all();
    for (const auto& client : clients) {
        m_clients.remove(client->id());
        for (auto& socket : client->takeSockets())
            m_closing.sayGoodbye(std::move(socket), 0);
    }
    m_closing.finish();
    m_ports.closeAll();
    for (const auto& client : clients)
        m_listener->clientDisconnected(client->id(), true);
}

}  // namespace orvelle
